#include "fs/volume.h"

#include "fs/file_io.h"
#include "fs/mount_table.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/stat.h>

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
    size_t pruneAbove = 512; // grows with the live entries, so pruning stays amortised
};

DriveSpaceCache& cache()
{
    static DriveSpaceCache c;
    return c;
}

constexpr auto kFresh = std::chrono::seconds(5);

// Every folder a view shows may be asked about; past a threshold the stale entries are
// dropped so a long session does not keep one entry per folder ever visited. The
// threshold then becomes twice what is left: a burst of fresh entries (a long listing)
// is swept once per doubling, not once per new entry.
constexpr size_t kPruneFloor = 512;

void pruneStale(DriveSpaceCache& c, std::chrono::steady_clock::time_point now)
{
    if (c.entries.size() <= c.pruneAbove)
        return;
    std::erase_if(c.entries, [now](const auto& item) { return now - item.second.readAt >= kFresh; });
    c.pruneAbove = std::max(kPruneFloor, 2 * c.entries.size());
}

} // namespace

std::optional<Volume> driveSpaceRead(const std::string& path)
{
    const std::optional<MountCapacity> capacity = mountCapacityRead(path);
    if (!capacity)
        return std::nullopt;
    char resolved[PATH_MAX];
    if (!::realpath(path.c_str(), resolved) || !isMountRoot(resolved))
        return std::nullopt;
    Volume v;
    v.name = pathLastComponent(path);
    v.path = path;
    v.totalBytes = capacity->totalBytes;
    v.freeBytes = capacity->freeBytes;
    return v;
}

std::optional<Volume> driveSpace(const std::string& path)
{
    auto& c = cache();
    {
        std::lock_guard guard(c.lock);
        auto it = c.entries.find(path);
        if (it != c.entries.end() && std::chrono::steady_clock::now() - it->second.readAt < kFresh)
            return it->second.result;
    }
    auto result = driveSpaceRead(path); // the system calls run outside the lock
    // Stamped after the reading: a slow file system must not leave an entry that is
    // already old when it lands.
    const auto now = std::chrono::steady_clock::now();
    std::lock_guard guard(c.lock);
    pruneStale(c, now);
    c.entries[path] = {now, result};
    return result;
}
