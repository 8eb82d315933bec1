#include "fs/trash_op_linux.h"

#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <map>
#include <memory>

namespace {

constexpr std::string_view kInfoSuffix = ".trashinfo";
constexpr int kMaxNames = 100000;

template <class Call>
int retryEintr(Call call)
{
    int rc;
    do
        rc = call();
    while (rc != 0 && errno == EINTR);
    return rc;
}

std::string joinPath(const std::string& dir, const std::string& name)
{
    return dir == "/" ? "/" + name : dir + "/" + name;
}

int lstatRetry(const std::string& path, struct stat& st)
{
    return retryEintr([&] { return sysCalls().lstat(path.c_str(), &st); });
}

std::optional<dev_t> deviceOf(const std::string& path)
{
    struct stat st;
    if (retryEintr([&] { return sysCalls().stat(path.c_str(), &st); }) != 0)
        return std::nullopt;
    return st.st_dev;
}

// The device of `path`, or of its nearest existing ancestor (the home trash may not
// exist yet).
std::optional<dev_t> nearestDevice(std::string path)
{
    for (;;) {
        if (std::optional<dev_t> dev = deviceOf(path))
            return dev;
        std::string up = pathParent(path);
        if (up.empty() || up == path)
            return std::nullopt;
        path = up;
    }
}

std::optional<std::string> realPath(const std::string& path)
{
    std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    if (!real)
        return std::nullopt;
    return std::string(real.get());
}

struct Item {
    std::string path; // absolute, its folder's symbolic links resolved
    std::string name;
    dev_t dev = 0;
};

// Finds the item a path names without following a final symbolic link: the link itself
// is what goes to the Trash. 0 or an errno.
int itemLocate(const std::string& given, Item& item)
{
    if (given.empty())
        return ENOENT;
    std::string parent = pathParent(given);
    std::string name = pathLastComponent(given);
    if (name == "." || name == "..") {
        std::optional<std::string> resolved = realPath(given);
        if (!resolved)
            return errno;
        parent = pathParent(*resolved);
        name = pathLastComponent(*resolved);
    }
    if (name == "/")
        return EBUSY; // the root of the file system cannot move anywhere
    std::optional<std::string> folder = realPath(parent.empty() ? "." : parent);
    if (!folder)
        return errno;
    item.path = joinPath(*folder, name);
    item.name = name;
    struct stat st;
    if (lstatRetry(item.path, st) != 0)
        return errno;
    item.dev = st.st_dev;
    return 0;
}

// The user's own home trash may be a symbolic link to a folder elsewhere; on a volume,
// whose top folder others can write to, a link is never followed.
enum class TrashLinks { Follow, Refuse };

// Makes `dir` with files/ and info/, each a private folder (0700) when created here.
// 0 or an errno.
int trashPrepare(const std::string& dir, TrashLinks links)
{
    for (const std::string& sub : {dir, dir + "/files", dir + "/info"}) {
        if (retryEintr([&] { return sysCalls().mkdir(sub.c_str(), 0700); }) != 0 && errno != EEXIST)
            return errno;
        struct stat st;
        int rc = links == TrashLinks::Follow ? retryEintr([&] { return sysCalls().stat(sub.c_str(), &st); })
                                             : lstatRetry(sub, st);
        if (rc != 0)
            return errno;
        if (!S_ISDIR(st.st_mode))
            return ENOTDIR;
    }
    return 0;
}

// The prefix of our record temporaries in info/. The temporary stays, a second link to
// the record, until the item itself has moved: a leftover one thus marks the record of
// a move that a killed process never finished, and nothing else.
constexpr std::string_view kTempStem = ".brondel";

TrashMove trashMoveInto(const std::string& trash, const Item& item, const std::string& infoText)
{
    const std::string filesDir = trash + "/files", infoDir = trash + "/info";
    if (fileSweepDue(infoDir))
        trashRemoveOrphans(trash, std::time(nullptr));
    std::optional<std::string> temp = fileWriteTemp(infoDir + "/" + std::string(kTempStem), infoText, 0600);
    if (!temp)
        return {{}, errno};

    int error = EEXIST;
    bool linkable = true, tempUsed = false;
    std::string files, info;
    for (int n = 1; n <= kMaxNames; ++n) {
        std::string name = trashCandidateName(item.name, n);
        std::string candidate = filesDir + "/" + name;
        // An item under files/ without its record must not be replaced by the rename.
        struct stat st;
        if (lstatRetry(candidate, st) == 0)
            continue;
        if (errno != ENOENT) {
            error = errno;
            break;
        }
        std::string record = infoDir + "/" + name + std::string(kInfoSuffix);
        error = filePlaceNew(*temp, record, linkable, tempUsed);
        if (error == EEXIST)
            continue;
        if (error == 0) {
            files = candidate;
            info = record;
        }
        break;
    }
    // Last of all, once the move is settled either way.
    auto dropTemp = [&] {
        if (!tempUsed)
            sysCalls().unlink(temp->c_str());
    };
    if (files.empty()) {
        dropTemp();
        return {{}, error};
    }
    if (retryEintr([&] { return sysCalls().rename(item.path.c_str(), files.c_str()); }) != 0) {
        error = errno;
        sysCalls().unlink(info.c_str()); // our own record of a move that did not happen
        dropTemp();
        return {{}, error};
    }
    dropTemp();
    return {files, 0};
}

// Whether `path` (absolute, its folders resolved) is a trash folder of user `uid` or lies
// inside one: the home trash, or a volume's .Trash-<uid> or .Trash/<uid>.
bool insideTrash(const std::string& path, const std::string& homeTrash, uid_t uid)
{
    auto within = [&](const std::string& dir) {
        return !dir.empty() && (path == dir || path.starts_with(dir == "/" ? dir : dir + "/"));
    };
    if (within(homeTrash))
        return true;
    if (std::optional<std::string> real = realPath(homeTrash); real && within(*real))
        return true;
    const std::string id = std::to_string(uid);
    std::string previous;
    size_t start = 0;
    while (start < path.size()) {
        size_t slash = path.find('/', start);
        std::string part = path.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        if (part == ".Trash-" + id || (previous == ".Trash" && part == id))
            return true;
        if (!part.empty())
            previous = part;
        if (slash == std::string::npos)
            break;
        start = slash + 1;
    }
    return false;
}

} // namespace

std::string trashHomeDir()
{
    const char* data = std::getenv("XDG_DATA_HOME");
    std::string base = data && data[0] == '/' ? std::string(data) : homeDir() + "/.local/share";
    while (base.size() > 1 && base.back() == '/')
        base.pop_back();
    return joinPath(base, "Trash");
}

std::vector<std::string> trashVolumeDirs(const std::string& topdir, uid_t uid, const struct stat* sharedTrash)
{
    const std::string id = std::to_string(uid);
    std::vector<std::string> dirs;
    if (sharedTrash && S_ISDIR(sharedTrash->st_mode) && (sharedTrash->st_mode & S_ISVTX))
        dirs.push_back(joinPath(topdir, ".Trash") + "/" + id);
    dirs.push_back(joinPath(topdir, ".Trash-" + id));
    return dirs;
}

std::string trashTopDir(const std::string& path, dev_t dev,
                        const std::function<std::optional<dev_t>(const std::string&)>& deviceOf)
{
    std::string current = path;
    for (;;) {
        std::string up = pathParent(current);
        if (up.empty() || up == current)
            return current;
        std::optional<dev_t> upDev = deviceOf(up);
        if (!upDev || *upDev != dev)
            return current;
        current = up;
    }
}

std::string trashInfoPath(const std::string& path, const std::string& topdir)
{
    if (topdir.empty() || path.size() <= topdir.size())
        return path;
    return path.substr(topdir == "/" ? 1 : topdir.size() + 1);
}

std::string trashPercentEncode(std::string_view bytes)
{
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes) {
        bool keep = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'
            || c == '.' || c == '_' || c == '~' || c == '/';
        if (keep) {
            out += char(c);
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return out;
}

std::string trashInfoText(std::string_view encodedPath, std::time_t deletionTime)
{
    struct tm local;
    char date[32] = "";
    if (::localtime_r(&deletionTime, &local))
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    std::string text = "[Trash Info]\nPath=";
    text.append(encodedPath);
    text += "\nDeletionDate=";
    text += date;
    text += "\n";
    return text;
}

std::string trashCandidateName(const std::string& base, int n)
{
    std::string suffix = n > 1 ? "." + std::to_string(n) : std::string();
    size_t limit = NAME_MAX - kInfoSuffix.size() - suffix.size();
    std::string stem = base;
    if (stem.size() > limit) {
        size_t cut = limit;
        while (cut > 0 && (static_cast<unsigned char>(stem[cut]) & 0xC0) == 0x80)
            --cut; // the first byte dropped continues a sequence: drop its lead byte too
        stem.resize(cut);
    }
    return stem + suffix;
}

size_t trashRemoveOrphans(const std::string& trash, std::time_t now)
{
    const std::string infoDir = trash + "/info", filesDir = trash + "/files";
    DIR* d = ::opendir(infoDir.c_str());
    if (!d)
        return 0;
    // Our leftover temporaries, and the records by inode to find the ones they mark.
    std::vector<std::pair<std::string, struct stat>> leftovers;
    std::vector<std::string> recordNames;
    bool linked = false;
    while (const dirent* entry = ::readdir(d)) {
        std::string_view name = entry->d_name;
        if (name.ends_with(kInfoSuffix)) {
            recordNames.emplace_back(name);
            continue;
        }
        std::optional<pid_t> writer = fileTempWriter(name);
        if (!writer || !name.starts_with(kTempStem))
            continue;
        struct stat st;
        const std::string path = infoDir + "/" + entry->d_name;
        if (lstatRetry(path, st) == 0 && S_ISREG(st.st_mode) && fileTempIsStale(*writer, st.st_mtime, now)) {
            linked |= st.st_nlink > 1;
            leftovers.emplace_back(path, st);
        }
    }
    ::closedir(d);
    // The records by inode, only when a leftover still marks one (rare). The inode comes
    // from lstat: readdir's d_ino differs from it on some file systems (overlayfs).
    std::map<ino_t, std::string> records;
    for (const std::string& name : linked ? recordNames : std::vector<std::string>{}) {
        struct stat st;
        if (lstatRetry(infoDir + "/" + name, st) == 0 && S_ISREG(st.st_mode) && st.st_nlink > 1)
            records.emplace(st.st_ino, name);
    }

    constexpr std::time_t kSettled = 60;
    size_t removed = 0;
    for (const auto& [temp, st] : leftovers) {
        if (st.st_nlink > 1) {
            auto record = records.find(st.st_ino);
            if (record == records.end())
                continue; // the other link is somewhere we do not look: leave both
            const std::string stem = record->second.substr(0, record->second.size() - kInfoSuffix.size());
            struct stat item;
            const bool moved = lstatRetry(filesDir + "/" + stem, item) == 0 || errno != ENOENT;
            if (!moved) {
                if (now - st.st_mtime < kSettled)
                    continue; // look again at a later write
                if (sysCalls().unlink((infoDir + "/" + record->second).c_str()) != 0)
                    continue;
                ++removed;
            }
        }
        sysCalls().unlink(temp.c_str());
    }
    return removed;
}

TrashMove trashMoveLinux(const std::string& path, std::time_t now)
{
    Item item;
    if (int error = itemLocate(path, item))
        return {{}, error};

    const std::string home = trashHomeDir();
    if (insideTrash(item.path, home, ::getuid()))
        return {{}, kTrashErrorInTrash};
    std::string topdir; // empty: the home trash
    std::vector<std::string> dirs;
    TrashLinks links = TrashLinks::Refuse;
    if (std::optional<dev_t> homeDev = nearestDevice(home); homeDev && *homeDev == item.dev) {
        fileMakeDirs(pathParent(home));
        dirs.push_back(home);
        links = TrashLinks::Follow;
    } else {
        topdir = trashTopDir(item.path, item.dev, deviceOf);
        struct stat shared;
        bool hasShared = lstatRetry(joinPath(topdir, ".Trash"), shared) == 0;
        dirs = trashVolumeDirs(topdir, ::getuid(), hasShared ? &shared : nullptr);
    }

    int error = ENOENT;
    for (const std::string& dir : dirs) {
        error = trashPrepare(dir, links);
        if (error == 0) {
            std::string text = trashInfoText(trashPercentEncode(trashInfoPath(item.path, topdir)), now);
            return trashMoveInto(dir, item, text);
        }
    }
    return {{}, error};
}
