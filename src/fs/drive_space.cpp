#include "fs/volume.h"

#include "fs/file_io.h"
#include "fs/mount_table.h"
#include "fs/mount_watchdog.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>

namespace {

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
    // Never destroyed: a read let go of at exit may still be filling it.
    static DriveSpaceCache* c = new DriveSpaceCache;
    return *c;
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
    std::string_view lexical = path;
    while (lexical.size() > 1 && lexical.back() == '/')
        lexical.remove_suffix(1);
    const Volume stuck{pathLastComponent(path), path, 0, 0, false};
    // Resolved first: only a mount's root folder is a drive, and the mount table says
    // which folders are, so the other folders cost no file-system statistics.
    const MountAnswer<std::string> resolved = mountWatchdogRealpath(path);
    if (!resolved.responding()) {
        const std::optional<MountRecord> mount = mountWatchdogMountOf(lexical);
        return mount && mount->mountPoint == lexical ? std::optional<Volume>(stuck) : std::nullopt;
    }
    if (!resolved.value)
        return std::nullopt;
    const std::optional<MountRecord> mount = mountWatchdogMountOf(*resolved.value);
    if (!mount || mount->mountPoint != *resolved.value)
        return std::nullopt;
    const MountAnswer<MountCapacity> capacity = mountWatchdogCapacity(*resolved.value);
    if (!capacity.responding())
        return stuck;
    if (!capacity.value)
        return std::nullopt;
    Volume v;
    v.name = pathLastComponent(path);
    v.path = path;
    v.totalBytes = capacity.value->totalBytes;
    v.freeBytes = capacity.value->freeBytes;
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
    if (result && !result->responding)
        return result; // not kept: the drive shows again as soon as it answers
    std::lock_guard guard(c.lock);
    pruneStale(c, now);
    c.entries[path] = {now, result};
    return result;
}
