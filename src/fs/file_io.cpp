#include "fs/file_io.h"

#include "fs/sys_calls.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <dirent.h>
#include <map>
#include <mutex>
#include <signal.h>
#include <string>
#include <vector>

FileContent fileReadWhole(const std::string& path)
{
    // Non-blocking, so a FIFO opens at once instead of waiting for a writer; no
    // controlling terminal from a tty device either.
    int fd = sysOpen(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        return {std::nullopt, errno};
    struct stat st;
    if (sysCalls().fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        sysClose(fd);
        return {std::nullopt, EINVAL};
    }
    if (uint64_t(st.st_size) > kFileReadCap) {
        sysClose(fd);
        return {std::nullopt, EFBIG};
    }
    std::string text;
    char buf[65536];
    for (;;) {
        ssize_t n = sysReadAll(fd, buf, sizeof buf);
        if (n < 0) {
            int error = errno;
            sysClose(fd);
            return {std::nullopt, error};
        }
        text.append(buf, size_t(n));
        // Files whose size says nothing (/proc) are capped while they are read.
        if (text.size() > kFileReadCap) {
            sysClose(fd);
            return {std::nullopt, EFBIG};
        }
        if (size_t(n) < sizeof buf)
            break;
    }
    sysClose(fd);
    return {std::move(text), 0};
}

std::optional<std::string> fileReadAll(const std::string& path)
{
    return fileReadWhole(path).bytes;
}

std::string pathParent(const std::string& path)
{
    size_t end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    size_t slash = path.rfind('/', end - 1);
    if (slash == std::string::npos)
        return "";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string pathLastComponent(const std::string& path)
{
    size_t end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    if (end == 1 && path[0] == '/')
        return "/";
    size_t slash = path.rfind('/', end - 1);
    size_t start = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(start, end - start);
}

bool fileMakeDirs(const std::string& dir)
{
    if (dir.empty())
        return false;
    struct stat st;
    if (sysCalls().stat(dir.c_str(), &st) == 0)
        return S_ISDIR(st.st_mode);
    std::string parent = pathParent(dir);
    if (!parent.empty() && parent != dir)
        fileMakeDirs(parent);
    if (sysCalls().mkdir(dir.c_str(), 0777) == 0 || errno == EEXIST)
        return sysCalls().stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    return false;
}

std::string fileTempName(const std::string& path)
{
    // A unique temporary name in the same directory, so the rename stays on one device.
    // The pid in the name tells a later writer whether this one is still at work.
    static std::atomic<unsigned> counter{0};
    auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    std::string suffix = ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-"
        + std::to_string(stamp & 0xffffff);
    // A long name is shortened so that the temporary's still fits in one component; only
    // the suffix identifies it, so the cut may fall anywhere.
    const size_t slash = path.rfind('/');
    const size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const size_t keep = NAME_MAX - suffix.size();
    if (path.size() - nameStart > keep)
        return path.substr(0, nameStart + keep) + suffix;
    return path + suffix;
}

std::optional<std::string> fileWriteTemp(const std::string& path, std::string_view text, mode_t mode, TempMode how)
{
    std::string temp;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temp = fileTempName(path);
        fd = sysOpen(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL, mode & 0666);
        if (fd < 0 && errno != EEXIST)
            return std::nullopt;
    }
    if (fd < 0)
        return std::nullopt;
    bool ok = sysWriteAll(fd, text.data(), text.size());
    // The umask may have taken bits away from a mode being kept. A file system without
    // permissions (FAT) refuses, which does not matter there.
    if (ok && how == TempMode::Exact)
        sysCalls().fchmod(fd, mode & 07777);
    ok = ok && sysCalls().fsync(fd) == 0;
    ok = sysClose(fd) == 0 && ok;
    if (ok)
        return temp;
    int error = errno;
    sysCalls().unlink(temp.c_str());
    errno = error;
    return std::nullopt;
}

int filePlaceNew(const std::string& temp, const std::string& target, bool& linkable, bool& tempUsed)
{
    auto retry = [](auto call) {
        int rc;
        do
            rc = call();
        while (rc != 0 && errno == EINTR);
        return rc;
    };
    if (linkable) {
        if (retry([&] { return sysCalls().link(temp.c_str(), target.c_str()); }) == 0)
            return 0;
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
            return errno;
        linkable = false;
    }
    int fd = sysOpen(target.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (fd < 0)
        return errno;
    sysClose(fd);
    if (retry([&] { return sysCalls().rename(temp.c_str(), target.c_str()); }) != 0) {
        int error = errno;
        sysCalls().unlink(target.c_str()); // the empty reservation made just above
        return error;
    }
    tempUsed = true;
    return 0;
}

std::string fileWriteTarget(const std::string& path)
{
    std::string current = path;
    for (int hop = 0; hop < 40; ++hop) { // the kernel's own limit on a chain of links
        struct stat st;
        if (sysCalls().lstat(current.c_str(), &st) != 0 || !S_ISLNK(st.st_mode))
            return current;
        char buf[PATH_MAX];
        ssize_t n = sysCalls().readlink(current.c_str(), buf, sizeof buf);
        if (n <= 0 || size_t(n) >= sizeof buf)
            return current;
        std::string target(buf, size_t(n));
        if (target[0] != '/') {
            std::string dir = pathParent(current);
            target = dir.empty() ? target : (dir == "/" ? "/" : dir + "/") + target;
        }
        current = target;
    }
    return current;
}

std::optional<pid_t> fileTempWriter(std::string_view name)
{
    size_t at = name.rfind(".tmp-");
    if (at == std::string_view::npos)
        return std::nullopt;
    std::string_view rest = name.substr(at + 5);
    uint64_t fields[3];
    for (int i = 0; i < 3; ++i) {
        size_t end = i < 2 ? rest.find('-') : rest.size();
        if (end == 0 || end == std::string_view::npos || end > 18)
            return std::nullopt;
        uint64_t value = 0;
        for (char c : rest.substr(0, end)) {
            if (c < '0' || c > '9')
                return std::nullopt;
            value = value * 10 + uint64_t(c - '0');
        }
        fields[i] = value;
        rest.remove_prefix(i < 2 ? end + 1 : end);
    }
    if (fields[0] == 0 || fields[0] > uint64_t(INT32_MAX))
        return std::nullopt;
    return pid_t(fields[0]);
}

bool fileTempIsStale(pid_t writer, std::time_t modified, std::time_t now)
{
    constexpr std::time_t kAbandonedAfter = 5 * 60;
    if (now - modified > kAbandonedAfter)
        return true;
    return ::kill(writer, 0) != 0 && errno == ESRCH;
}

size_t fileRemoveStaleTemps(const std::string& dir)
{
    DIR* d = ::opendir(dir.empty() ? "." : dir.c_str());
    if (!d)
        return 0;
    const std::time_t now = std::time(nullptr);
    std::vector<std::string> stale;
    while (const dirent* entry = ::readdir(d)) {
        std::optional<pid_t> writer = fileTempWriter(entry->d_name);
        if (!writer)
            continue;
        std::string path = (dir.empty() ? std::string() : dir + "/") + entry->d_name;
        struct stat st;
        if (sysCalls().lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)
            && fileTempIsStale(*writer, st.st_mtime, now))
            stale.push_back(std::move(path));
    }
    ::closedir(d);
    size_t removed = 0;
    for (const std::string& path : stale)
        removed += sysCalls().unlink(path.c_str()) == 0;
    return removed;
}

bool fileSweepDue(const std::string& dir)
{
    // Never destroyed: an edit let go of at exit may still write.
    static std::mutex& mutex = *new std::mutex;
    static std::map<std::string, std::time_t>& lastSweep = *new std::map<std::string, std::time_t>;
    const std::time_t now = std::time(nullptr);
    std::lock_guard lock(mutex);
    auto [it, fresh] = lastSweep.try_emplace(dir, now);
    if (!fresh && now - it->second < 60 && now >= it->second)
        return false;
    it->second = now;
    return true;
}

bool fileWriteAtomic(const std::string& path, std::string_view text, ParentDirs parents)
{
    if (path.empty())
        return false;
    const std::string target = fileWriteTarget(path);
    std::string dir = pathParent(target);
    if (parents == ParentDirs::Create && !dir.empty())
        fileMakeDirs(dir);
    mode_t mode = 0666;
    TempMode how = TempMode::Create;
    struct stat st;
    if (sysCalls().lstat(target.c_str(), &st) == 0) {
        if (!S_ISREG(st.st_mode)) {
            errno = EINVAL; // a folder, a FIFO or a device is never replaced by a file
            return false;
        }
        mode = st.st_mode & 07777;
        how = TempMode::Exact;
    }
    if (fileSweepDue(dir))
        fileRemoveStaleTemps(dir);
    std::optional<std::string> temp = fileWriteTemp(target, text, mode, how);
    if (!temp)
        return false;
    if (sysCalls().rename(temp->c_str(), target.c_str()) == 0)
        return true;
    int error = errno;
    sysCalls().unlink(temp->c_str());
    errno = error;
    return false;
}
