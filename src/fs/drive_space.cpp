#include "fs/volume.h"

#include "fs/file_io.h"

#include <chrono>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

// Whether `resolved` is the root of a mount: the kernel says so (statx), or, where it
// cannot, the folder sits on another device than its parent.
bool isMountRoot(const std::string& resolved)
{
    struct statx stx;
    if (::statx(AT_FDCWD, resolved.c_str(), 0, STATX_BASIC_STATS, &stx) == 0
        && (stx.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT))
        return (stx.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    if (resolved == "/")
        return true;
    struct stat self, parent;
    if (::stat(resolved.c_str(), &self) != 0 || ::stat(pathParent(resolved).c_str(), &parent) != 0)
        return false;
    return self.st_dev != parent.st_dev || self.st_ino == parent.st_ino;
}

struct DriveSpaceCache {
    struct Entry {
        std::chrono::steady_clock::time_point readAt;
        std::optional<Volume> result;
    };
    std::mutex lock;
    std::map<std::string, Entry> entries;
};

DriveSpaceCache& cache()
{
    static DriveSpaceCache c;
    return c;
}

constexpr auto kFresh = std::chrono::seconds(5);

} // namespace

std::optional<Volume> driveSpaceRead(const std::string& path)
{
    struct statvfs vfs;
    if (::statvfs(path.c_str(), &vfs) != 0)
        return std::nullopt;
    char resolved[PATH_MAX];
    if (!::realpath(path.c_str(), resolved) || !isMountRoot(resolved))
        return std::nullopt;
    Volume v;
    v.name = pathLastComponent(path);
    v.path = path;
    v.totalBytes = int64_t(vfs.f_blocks) * int64_t(vfs.f_frsize);
    v.freeBytes = int64_t(vfs.f_bavail) * int64_t(vfs.f_frsize);
    return v;
}

std::optional<Volume> driveSpace(const std::string& path)
{
    auto& c = cache();
    const auto now = std::chrono::steady_clock::now();
    {
        std::lock_guard guard(c.lock);
        auto it = c.entries.find(path);
        if (it != c.entries.end() && now - it->second.readAt < kFresh)
            return it->second.result;
    }
    auto result = driveSpaceRead(path); // the system calls run outside the lock
    std::lock_guard guard(c.lock);
    c.entries[path] = {now, result};
    return result;
}
