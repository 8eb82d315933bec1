#include "fs/trash_list.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/mount_watchdog.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"
#include "fs/trash_op_linux.h"
#include "fs/volume_list.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <unistd.h>

namespace {

constexpr std::string_view kInfoSuffix = ".trashinfo";
constexpr std::string_view kSizesFile = "/directorysizes";

std::string_view trimmed(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.remove_suffix(1);
    return s;
}

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

// The names in folder `dir`, or nothing when it cannot be read.
std::optional<std::vector<std::string>> folderNames(const std::string& dir)
{
    const int fd = sysOpen(dir.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (fd < 0)
        return std::nullopt;
    DirFd owner(fd);
    std::vector<char> buffer(64 * 1024);
    std::vector<std::string> names;
    if (dirForEachEntry(fd, buffer, [&](const char* name, unsigned char) { names.emplace_back(name); }) != 0)
        return std::nullopt;
    return names;
}

// Removes `path` and, for a folder, everything below it; links are removed, never
// followed. A folder we may not write to is made writable first (it is ours to erase).
int removeTree(const std::string& path)
{
    struct stat st;
    if (sysCalls().lstat(path.c_str(), &st) != 0)
        return errno == ENOENT ? 0 : errno;
    if (!S_ISDIR(st.st_mode))
        return sysCalls().unlink(path.c_str()) == 0 || errno == ENOENT ? 0 : errno;
    const int fd = sysOpen(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (fd >= 0 && (st.st_mode & 0700) != 0700)
        sysCalls().fchmod(fd, (st.st_mode & 07777) | 0700);
    std::vector<std::string> names;
    int error = 0;
    if (fd >= 0) {
        DirFd owner(fd);
        std::vector<char> buffer(64 * 1024);
        error = dirForEachEntry(fd, buffer, [&](const char* name, unsigned char) { names.emplace_back(name); });
    } else {
        error = errno;
    }
    for (const std::string& name : names)
        if (int e = removeTree(path + "/" + name); e && !error)
            error = e;
    if (sysCalls().rmdir(path.c_str()) != 0 && errno != ENOENT && !error)
        error = errno;
    return error;
}

// Drops the directorysizes lines of `names` in `trashDir`, when that file exists.
void sizesForget(const std::string& trashDir, const std::vector<std::string>& names)
{
    const std::string file = trashDir + std::string(kSizesFile);
    std::optional<std::string> text = fileReadAll(file);
    if (!text)
        return;
    std::string kept = trashDirectorySizesWithout(*text, names);
    if (kept != *text)
        fileWriteAtomic(file, kept, ParentDirs::Keep);
}

// The folder a trash folder's relative Path= values start from.
std::string topdirOfTrash(const std::string& trashDir)
{
    std::string up = pathParent(trashDir);
    if (pathLastComponent(up) == ".Trash")
        up = pathParent(up); // $topdir/.Trash/<uid>
    return up;
}

} // namespace

namespace {

enum class BadEscape { Keep, Refuse };

std::optional<std::string> percentDecode(std::string_view text, BadEscape bad)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            out += char(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else if (text[i] == '%' && bad == BadEscape::Refuse) {
            return std::nullopt;
        } else {
            out += text[i];
        }
    }
    return out;
}

} // namespace

std::string trashPercentDecode(std::string_view text)
{
    return *percentDecode(text, BadEscape::Keep);
}

std::optional<std::string> trashPercentDecodeStrict(std::string_view text)
{
    return percentDecode(text, BadEscape::Refuse);
}

std::optional<TrashInfoRecord> trashInfoParse(std::string_view text)
{
    bool inGroup = false, sawGroup = false;
    std::optional<std::string> path;
    std::string date, pathValue;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = trimmed(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            inGroup = line == "[Trash Info]";
            sawGroup |= inGroup;
            continue;
        }
        if (!inGroup)
            continue;
        const size_t eq = line.find('=');
        if (eq == std::string_view::npos)
            continue;
        std::string_view key = trimmed(line.substr(0, eq)), value = trimmed(line.substr(eq + 1));
        if (key == "Path" && !path) {
            path = trashPercentDecode(value);
            pathValue = std::string(value);
        }
        else if (key == "DeletionDate" && date.empty())
            date = std::string(value);
    }
    if (!sawGroup || !path || path->empty())
        return std::nullopt;
    return TrashInfoRecord{*path, date, pathValue};
}

std::optional<std::time_t> trashDateParse(std::string_view text)
{
    int year, month, day, hour, minute, second;
    char tail;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%c", &year, &month, &day, &hour, &minute, &second, &tail)
        != 6)
        return std::nullopt;
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 60 || hour < 0
        || minute < 0 || second < 0)
        return std::nullopt;
    struct tm local = {};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    const std::time_t t = std::mktime(&local);
    if (t == std::time_t(-1))
        return std::nullopt;
    return t;
}

std::vector<std::string> trashDirsExisting(const std::vector<std::string>& topdirs)
{
    std::vector<std::string> dirs;
    const std::string home = trashHomeDir();
    if (pathIsFolder(home))
        dirs.push_back(home);
    for (const std::string& topdir : topdirs) {
        struct stat shared;
        const std::string sharedPath = (topdir == "/" ? "" : topdir) + "/.Trash";
        const bool hasShared = sysCalls().lstat(sharedPath.c_str(), &shared) == 0;
        for (const std::string& dir : trashVolumeDirs(topdir, ::getuid(), hasShared ? &shared : nullptr)) {
            struct stat st;
            if (sysCalls().lstat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode)
                && std::find(dirs.begin(), dirs.end(), dir) == dirs.end())
                dirs.push_back(dir);
        }
    }
    return dirs;
}

std::vector<std::string> trashVolumeTopdirs()
{
    std::vector<std::string> topdirs;
    const auto& pseudo = VolumeList::pseudoFsTypes();
    for (const MountRecord& mount : mountTableRead()) {
        if (mount.mountPoint == "/" || pseudo.count(mount.fsType) || mount.fsType.starts_with("cgroup"))
            continue;
        if (mountWatchdogIsStuckAt(mount.mountPoint) || mountWatchdogCheck(mount.mountPoint) == MountState::NotResponding)
            continue;
        if (std::find(topdirs.begin(), topdirs.end(), mount.mountPoint) == topdirs.end())
            topdirs.push_back(mount.mountPoint);
    }
    return topdirs;
}

std::vector<TrashItem> trashListDir(const std::string& trashDir, const std::string& topdir)
{
    std::vector<TrashItem> items;
    std::optional<std::vector<std::string>> names = folderNames(trashDir + "/info");
    if (!names)
        return items;
    std::sort(names->begin(), names->end());
    for (const std::string& infoName : *names) {
        if (!std::string_view(infoName).ends_with(kInfoSuffix) || infoName.size() == kInfoSuffix.size())
            continue;
        std::optional<std::string> text = fileReadAll(trashDir + "/info/" + infoName);
        if (!text)
            continue;
        std::optional<TrashInfoRecord> record = trashInfoParse(*text);
        if (!record)
            continue;
        TrashItem item;
        item.trashDir = trashDir;
        item.name = infoName.substr(0, infoName.size() - kInfoSuffix.size());
        struct stat st;
        if (sysCalls().lstat(item.filesPath().c_str(), &st) != 0)
            continue; // a record whose item is gone
        item.folder = S_ISDIR(st.st_mode);
        item.size = item.folder ? -1 : int64_t(st.st_size);
        item.originalPath = record->path.front() == '/' ? record->path
                                                        : (topdir == "/" ? "" : topdir) + "/" + record->path;
        item.deletionDate = record->deletionDate;
        item.deleted = trashDateParse(record->deletionDate);
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<TrashItem> trashListAll(const std::vector<std::string>& topdirs)
{
    std::vector<TrashItem> all;
    for (const std::string& dir : trashDirsExisting(topdirs)) {
        std::vector<TrashItem> items = trashListDir(dir, topdirOfTrash(dir));
        all.insert(all.end(), std::make_move_iterator(items.begin()), std::make_move_iterator(items.end()));
    }
    return all;
}

bool trashHasItems(const std::vector<std::string>& topdirs)
{
    for (const std::string& dir : trashDirsExisting(topdirs)) {
        std::optional<std::vector<std::string>> names = folderNames(dir + "/files");
        if (names && !names->empty())
            return true;
    }
    return false;
}

int trashRestore(const TrashItem& item, const std::string& target)
{
    if (target.empty() || target.front() != '/')
        return EINVAL;
    if (pathTaken(target))
        return EEXIST;
    fileMakeDirs(pathParent(target));
    if (sysCalls().rename(item.filesPath().c_str(), target.c_str()) != 0)
        return errno;
    sysCalls().unlink(item.infoPath().c_str());
    sizesForget(item.trashDir, {item.name});
    return 0;
}

std::string trashRestoreFreeName(const std::string& target, const std::function<bool(const std::string&)>& exists)
{
    const std::string folder = pathParent(target);
    const std::string name = pathLastComponent(target);
    // The extension stays last: "report 2.pdf"; a leading dot is part of the stem.
    const size_t dot = name.rfind('.');
    const bool hasExt = dot != std::string::npos && dot > 0;
    const std::string stem = hasExt ? name.substr(0, dot) : name, ext = hasExt ? name.substr(dot) : "";
    for (int n = 2;; ++n) {
        std::string candidate = (folder == "/" ? "" : folder) + "/" + stem + " " + std::to_string(n) + ext;
        if (!exists(candidate))
            return candidate;
    }
}

int trashErase(const TrashItem& item)
{
    if (int error = removeTree(item.filesPath()))
        return error;
    if (sysCalls().unlink(item.infoPath().c_str()) != 0 && errno != ENOENT)
        return errno;
    sizesForget(item.trashDir, {item.name});
    return 0;
}

size_t trashEraseAll(const std::vector<TrashItem>& items, const std::function<void(size_t, size_t)>& progress,
    const std::atomic<bool>* stop)
{
    size_t erased = 0, done = 0;
    std::map<std::string, std::vector<std::string>> gone; // per trash folder
    for (const TrashItem& item : items) {
        if (stop && stop->load())
            break;
        if (removeTree(item.filesPath()) == 0
            && (sysCalls().unlink(item.infoPath().c_str()) == 0 || errno == ENOENT)) {
            ++erased;
            gone[item.trashDir].push_back(item.name);
        }
        if (progress)
            progress(++done, items.size());
    }
    for (const auto& [dir, names] : gone)
        sizesForget(dir, names);
    return erased;
}

std::string trashDirectorySizesWithout(std::string_view text, const std::vector<std::string>& names)
{
    std::string out;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        const size_t first = line.find(' ');
        const size_t second = first == std::string_view::npos ? first : line.find(' ', first + 1);
        if (second == std::string_view::npos || second + 1 >= line.size())
            continue;
        const std::string name = trashPercentDecode(line.substr(second + 1));
        if (std::find(names.begin(), names.end(), name) != names.end())
            continue;
        out.append(line);
        out += '\n';
    }
    return out;
}
