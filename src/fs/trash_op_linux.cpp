#include "fs/trash_op_linux.h"

#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
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

// Puts the fully written record `temp` in place as `info`, failing with EEXIST when that
// name is taken. A hard link does both in one step, so no reader ever sees a partial
// record; on a file system without hard links the name is reserved empty and the record
// renamed over it. 0 or an errno; `tempUsed` is set once `temp` has become `info`.
int infoPlace(const std::string& temp, const std::string& info, bool& linkable, bool& tempUsed)
{
    if (linkable) {
        if (retryEintr([&] { return sysCalls().link(temp.c_str(), info.c_str()); }) == 0)
            return 0;
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
            return errno;
        linkable = false;
    }
    int fd = sysOpen(info.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd < 0)
        return errno;
    sysClose(fd);
    if (retryEintr([&] { return sysCalls().rename(temp.c_str(), info.c_str()); }) != 0) {
        int error = errno;
        sysCalls().unlink(info.c_str()); // the empty reservation made just above
        return error;
    }
    tempUsed = true;
    return 0;
}

TrashMove trashMoveInto(const std::string& trash, const Item& item, const std::string& infoText)
{
    const std::string filesDir = trash + "/files", infoDir = trash + "/info";
    std::optional<std::string> temp = fileWriteTemp(infoDir + "/.brondel", infoText);
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
        error = infoPlace(*temp, record, linkable, tempUsed);
        if (error == EEXIST)
            continue;
        if (error == 0) {
            files = candidate;
            info = record;
        }
        break;
    }
    if (!tempUsed)
        sysCalls().unlink(temp->c_str());
    if (files.empty())
        return {{}, error};

    if (retryEintr([&] { return sysCalls().rename(item.path.c_str(), files.c_str()); }) != 0) {
        error = errno;
        sysCalls().unlink(info.c_str()); // our own record of a move that did not happen
        return {{}, error};
    }
    return {files, 0};
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

TrashMove trashMoveLinux(const std::string& path, std::time_t now)
{
    Item item;
    if (int error = itemLocate(path, item))
        return {{}, error};

    const std::string home = trashHomeDir();
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
