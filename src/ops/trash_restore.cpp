#include "ops/trash_restore.h"

#include "fs/file_io.h"

#include <cerrno>

namespace {

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::optional<std::string> percentDecode(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        int high = i + 1 < text.size() ? hexValue(text[i + 1]) : -1;
        int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        out += char(high * 16 + low);
        i += 2;
    }
    return out;
}

} // namespace

std::optional<std::string> trashInfoOriginal(std::string_view text)
{
    bool inGroup = false;
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (!line.empty() && line.front() == '[') {
            inGroup = line == "[Trash Info]";
            continue;
        }
        if (inGroup && line.substr(0, 5) == "Path=") {
            std::optional<std::string> path = percentDecode(line.substr(5));
            if (!path || path->empty() || path->find('\0') != std::string::npos)
                return std::nullopt;
            return path;
        }
    }
    return std::nullopt;
}

int trashEntryOf(const std::string& trashedPath, TrashEntry& entry)
{
    const std::string name = pathLastComponent(trashedPath);
    const std::string filesDir = pathParent(trashedPath);
    if (name.empty() || pathLastComponent(filesDir) != "files")
        return EINVAL;
    const std::string trash = pathParent(filesDir);
    entry.infoPath = trash + "/info/" + name + ".trashinfo";
    FileContent content = fileReadWhole(entry.infoPath);
    if (!content.bytes)
        return content.error == ENOENT ? ENOENT : EINVAL;
    std::optional<std::string> original = trashInfoOriginal(*content.bytes);
    if (!original)
        return EINVAL;
    if ((*original)[0] == '/') {
        entry.original = *original;
        return 0;
    }
    // A volume's trash: $topdir/.Trash-$uid, or $topdir/.Trash/$uid.
    std::string topdir = pathParent(trash);
    if (pathLastComponent(trash).rfind(".Trash-", 0) != 0 && pathLastComponent(topdir) == ".Trash")
        topdir = pathParent(topdir);
    entry.original = topdir == "/" ? "/" + *original : topdir + "/" + *original;
    return 0;
}
