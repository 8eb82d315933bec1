#include "fs/preview_load.h"

#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <sys/stat.h>

namespace {

std::atomic<size_t> g_bytesRead{0};

ssize_t countingRead(int fd, void* buf, size_t count)
{
    const ssize_t n = sysCallsReal().read(fd, buf, count);
    if (n > 0)
        g_bytesRead += size_t(n);
    return n;
}

} // namespace

TEST(PreviewLoad, TextDecodesByMarkOrValidityElseLatin1)
{
    const QChar bad(0xFFFD);
    struct Case {
        std::string bytes;
        PreviewEncoding encoding;
        QString text;
    } cases[] = {
        {"plain ascii\n", PreviewEncoding::Utf8, "plain ascii\n"},
        {"\xEF\xBB\xBF" "caf\xC3\xA9", PreviewEncoding::Utf8, QString::fromUtf8("café")},
        // A character cut in two by the read cap is dropped, not shown as Latin-1.
        {"ok \xE2\x82", PreviewEncoding::Utf8, "ok "},
        {"smile \xF0\x9F\x98", PreviewEncoding::Utf8, "smile "},
        {std::string("\xFF\xFE" "h\0i\0\xAC\x20", 8), PreviewEncoding::Utf16LE, QString::fromUtf8("hi€")},
        {std::string("\xFE\xFF\0h\0i\x20", 7), PreviewEncoding::Utf16BE, "hi"}, // odd trailing byte dropped
        // Not UTF-8: Latin-1, controls replaced, tabs and line ends kept.
        {"caf\xE9\tna\xEFve\x01\x9B\n", PreviewEncoding::Latin1,
         QString::fromUtf8("café\tnaïve") + bad + bad + "\n"},
        {std::string("nul\0byte\xC3\x28", 10), PreviewEncoding::Latin1, "nul" + QString(bad) + QString::fromUtf8("byteÃ(")},
        {"", PreviewEncoding::Utf8, ""},
    };
    for (const Case& c : cases) {
        PreviewText decoded = previewTextDecode(c.bytes);
        EXPECT_EQ(decoded.encoding, c.encoding) << c.bytes;
        EXPECT_EQ(decoded.text, c.text) << c.bytes;
    }
}

TEST(PreviewLoad, KindsByNameAndContent)
{
    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    struct Case {
        std::string name, head;
        PreviewKind kind;
    } cases[] = {
        {"photo.png", png, PreviewKind::Image},
        {"no-extension", png, PreviewKind::Image},
        {"anim.gif", "GIF89a", PreviewKind::Image},
        {"paper.pdf", "%PDF-1.4\n", PreviewKind::Pdf},
        {"notes.txt", "hello", PreviewKind::Text},
        {"main.cpp", "int main() {}", PreviewKind::Text},
        {"run.sh", "#!/bin/sh\necho hi\n", PreviewKind::Text},
        {"README", "Plain words in a file without extension.\n", PreviewKind::Text},
        {"song.mp3", "ID3", PreviewKind::Audio},
        {"clip.mp4", "", PreviewKind::Video},
        {"blob.bin", std::string("\0\1\2\3\xff\xfe\x80", 7), PreviewKind::Other},
    };
    for (const Case& c : cases)
        EXPECT_EQ(previewKindFor(c.name, c.head), c.kind) << c.name;
    EXPECT_EQ(previewKindOfType("inode/directory", {}), PreviewKind::Folder);
    EXPECT_EQ(previewKindOfType("application/x-zerosize", {}), PreviewKind::Other);
}

TEST(PreviewLoad, HeadReadsOnlyWhatItMayAndNeverWaitsOnAFifo)
{
    TempTree tree;
    const std::string huge = tree.sized("huge.log", int64_t(50) << 20);
    const std::string small = tree.file("small.txt", "twelve bytes");
    SysCalls calls = sysCallsReal();
    calls.read = countingRead;
    {
        SysCallsOverride counting(calls);
        g_bytesRead = 0;
        PreviewHead head = previewReadHead(huge, kPreviewTextCap);
        EXPECT_EQ(head.error, 0);
        EXPECT_EQ(head.bytes.size(), kPreviewTextCap);
        EXPECT_TRUE(head.truncated);
        EXPECT_EQ(g_bytesRead.load(), kPreviewTextCap); // never the whole 50 MB

        g_bytesRead = 0;
        head = previewReadHead(small, kPreviewTextCap);
        EXPECT_EQ(head.bytes, "twelve bytes");
        EXPECT_FALSE(head.truncated);
        EXPECT_EQ(g_bytesRead.load(), 12u);
    }

    const std::string fifo = tree.path("pipe");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string folder = tree.dir("folder");
    struct {
        std::string path;
        int error;
    } refused[] = {{fifo, EINVAL}, {folder, EINVAL}, {tree.path("missing"), ENOENT}};
    for (const auto& r : refused) {
        PreviewHead head = previewReadHead(r.path, kPreviewTextCap);
        EXPECT_EQ(head.error, r.error) << r.path;
        EXPECT_TRUE(head.bytes.empty()) << r.path;
    }
}
