#include "fs/preview_load.h"

#include "fs/dir_fd.h"
#include "fs/sys_calls.h"
#include "fs/utf8.h"

#include <QMimeDatabase>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

constexpr size_t kChunk = 64 * 1024;

bool inherits(std::string_view mime, const QStringList& parents, const char* type)
{
    return mime == type || parents.contains(QLatin1String(type));
}

// The length of `bytes` without a UTF-8 sequence cut off at its end.
size_t utf8WholeLength(std::string_view bytes)
{
    // A lead byte within the last three bytes whose sequence runs past the end.
    for (size_t back = 1; back <= 3 && back <= bytes.size(); ++back) {
        const unsigned char c = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if ((c & 0xC0) == 0x80)
            continue; // a continuation byte: look further back
        const size_t need = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
        return need > back ? bytes.size() - back : bytes.size();
    }
    return bytes.size();
}

} // namespace

PreviewHead previewReadHead(const std::string& path, size_t cap)
{
    PreviewHead head;
    const int fd = sysOpen(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        head.error = errno;
        return head;
    }
    struct stat st;
    const int statRc = sysCalls().fstat(fd, &st);
    if (statRc != 0 || !S_ISREG(st.st_mode)) {
        head.error = statRc != 0 ? errno : EINVAL;
        sysClose(fd);
        return head;
    }
    const size_t want = std::min<size_t>(cap, size_t(std::max<off_t>(st.st_size, 0)));
    head.bytes.resize(want);
    size_t done = 0;
    while (done < want) {
        const ssize_t n = sysCalls().read(fd, head.bytes.data() + done, std::min(kChunk, want - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            head.error = errno;
            break;
        }
        if (n == 0)
            break;
        done += size_t(n);
    }
    head.bytes.resize(done);
    head.truncated = size_t(st.st_size) > done;
    sysClose(fd);
    return head;
}

PreviewKind previewKindOfType(std::string_view mime, const QStringList& parents)
{
    if (mime == "inode/directory")
        return PreviewKind::Folder;
    if (inherits(mime, parents, "application/pdf"))
        return PreviewKind::Pdf;
    if (mime.starts_with("image/"))
        return PreviewKind::Image;
    if (mime.starts_with("audio/"))
        return PreviewKind::Audio;
    if (mime.starts_with("video/"))
        return PreviewKind::Video;
    if (inherits(mime, parents, "text/plain"))
        return PreviewKind::Text;
    return PreviewKind::Other;
}

PreviewKind previewKindFor(const std::string& name, std::string_view head)
{
    static QMimeDatabase* const db = new QMimeDatabase; // shared, never destroyed: pool threads use it at exit
    const QMimeType type = db->mimeTypeForFileNameAndData(QString::fromUtf8(name.data(), qsizetype(name.size())),
        QByteArray::fromRawData(head.data(), qsizetype(std::min(head.size(), kPreviewSniffBytes))));
    const std::string mime = type.name().toStdString();
    PreviewKind kind = previewKindOfType(mime, type.allAncestors());
    // A name that tells nothing and content the database does not know: text when
    // its start is valid UTF-8.
    if (kind == PreviewKind::Other && mime == "application/octet-stream" && !head.empty()
        && utf8Valid(head.substr(0, utf8WholeLength(head.substr(0, kPreviewSniffBytes)))))
        kind = PreviewKind::Text; // a text file without a telling name
    return kind;
}

PreviewText previewTextDecode(std::string_view bytes)
{
    PreviewText out;
    if (bytes.size() >= 2 && (uint8_t(bytes[0]) == 0xFF && uint8_t(bytes[1]) == 0xFE)) {
        bytes.remove_prefix(2);
        out.encoding = PreviewEncoding::Utf16LE;
    } else if (bytes.size() >= 2 && (uint8_t(bytes[0]) == 0xFE && uint8_t(bytes[1]) == 0xFF)) {
        bytes.remove_prefix(2);
        out.encoding = PreviewEncoding::Utf16BE;
    }
    if (out.encoding != PreviewEncoding::Utf8) {
        const size_t units = bytes.size() / 2;
        out.text.reserve(qsizetype(units));
        for (size_t i = 0; i < units; ++i) {
            const uint8_t a = uint8_t(bytes[2 * i]), b = uint8_t(bytes[2 * i + 1]);
            out.text.append(QChar(out.encoding == PreviewEncoding::Utf16LE ? char16_t(a | b << 8) : char16_t(b | a << 8)));
        }
        // A surrogate pair cut by the read cap leaves a lone high surrogate.
        if (!out.text.isEmpty() && out.text.back().isHighSurrogate())
            out.text.chop(1);
        return out;
    }
    if (bytes.size() >= 3 && uint8_t(bytes[0]) == 0xEF && uint8_t(bytes[1]) == 0xBB && uint8_t(bytes[2]) == 0xBF)
        bytes.remove_prefix(3);
    const std::string_view whole = bytes.substr(0, utf8WholeLength(bytes));
    if (utf8Valid(whole)) {
        out.text = QString::fromUtf8(whole.data(), qsizetype(whole.size()));
        return out;
    }
    out.encoding = PreviewEncoding::Latin1;
    out.text.reserve(qsizetype(bytes.size()));
    for (unsigned char c : bytes) {
        const bool control = (c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f') || c == 0x7F
            || (c >= 0x80 && c < 0xA0);
        out.text.append(control ? QChar(0xFFFD) : QChar(c));
    }
    return out;
}

PreviewNode previewNodeOf(const std::string& path)
{
    struct stat st;
    if (sysCalls().stat(path.c_str(), &st) != 0)
        return {errno, 0, 0};
    return {0, st.st_mode, int64_t(st.st_size)};
}

int64_t previewFolderCount(const std::string& path)
{
    const int fd = sysOpen(path.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0)
        return -1;
    DirFd owner(fd);
    std::vector<char> buffer(64 * 1024);
    int64_t count = 0;
    if (dirForEachEntry(fd, buffer, [&](const char*, unsigned char) { ++count; }) != 0)
        return -1;
    return count;
}
