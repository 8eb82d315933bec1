#include "ops/trash_restore.h"

#include "fs/file_io.h"
#include "fs/trash_list.h"

#include <cerrno>

std::optional<std::string> trashInfoOriginal(std::string_view text)
{
    // The listing's reader, with a stricter decoding: a record this would put back where
    // it guessed is refused instead.
    const std::optional<TrashInfoRecord> record = trashInfoParse(text);
    if (!record)
        return std::nullopt;
    std::optional<std::string> path = trashPercentDecodeStrict(record->pathValue);
    if (!path || path->empty() || path->find('\0') != std::string::npos)
        return std::nullopt;
    return path;
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
