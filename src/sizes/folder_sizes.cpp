#include "sizes/folder_sizes.h"

#include "fs/mount_watchdog.h"
#include "fs/volume_list.h"
#include "sizes/folder_size_walk.h"
#include "sizes/info_notifier.h"

namespace {

// The lane of a path in production: the user-visible volume holding it, or else any
// other drive the watchdog guards (a network share outside the user's folders), so a
// dead share never shares a lane with the system disk.
std::optional<std::string> laneVolume(const std::string& path)
{
    if (auto volume = volumeContaining(path))
        return volume;
    const std::optional<MountRecord> mount = mountWatchdogMountOf(path);
    if (mount && mountWatchdogGuards(*mount))
        return mount->mountPoint;
    return std::nullopt;
}

// Whether a walk may touch `path`: not when its drive does not answer.
bool walkable(const std::string& path)
{
    return mountWatchdogCheck(path) == MountState::Responding;
}

} // namespace

FolderSizes::FolderSizes()
    : FolderSizes([](const std::vector<std::string>& paths) { return folderSizeWalkAll(paths, kFolderSizeWalkAuto); },
                  laneVolume)
{
}

FolderSizes::FolderSizes(Walker walker, VolumeOf volumeOf)
    : m_walker(std::move(walker))
    , m_volumeOf(std::move(volumeOf))
{
}

FolderSizes::~FolderSizes()
{
    std::map<std::string, std::unique_ptr<WorkPool>> pools;
    {
        std::lock_guard guard(m_lock);
        m_stopping = true;
        pools.swap(m_pools);
    }
    pools.clear(); // joins each lane's threads; their last pump() starts nothing
}

FolderSizes& FolderSizes::shared()
{
    static FolderSizes* sizes = new FolderSizes;
    return *sizes;
}

std::optional<int64_t> FolderSizes::size(const std::string& path)
{
    if (m_mode == SizeMode::Synchronous)
        return cachedOrWalk(path);
    {
        std::lock_guard guard(m_lock);
        if (auto it = m_cache.find(path); it != m_cache.end())
            return it->second;
        if (m_pending.count(path))
            return std::nullopt;
    }
    const std::string pathLane = lane(path); // touches the disk: outside the lock
    {
        std::lock_guard guard(m_lock);
        if (auto it = m_cache.find(path); it != m_cache.end())
            return it->second;
        if (!m_pending.insert(path).second)
            return std::nullopt; // another thread queued it meanwhile
        m_queue[pathLane].push_back({path, m_nextOrder++});
    }
    pump();
    return std::nullopt;
}

int64_t FolderSizes::cachedOrWalk(const std::string& path)
{
    {
        std::lock_guard guard(m_lock);
        if (auto it = m_cache.find(path); it != m_cache.end())
            return it->second;
    }
    if (!walkable(path))
        return 0; // not kept: measured once the drive answers again
    const auto sizes = m_walker({path});
    const int64_t total = sizes.empty() ? 0 : sizes.front();
    std::lock_guard guard(m_lock);
    m_cache[path] = total;
    return total;
}

void FolderSizes::measure(const std::vector<std::string>& paths)
{
    if (m_mode != SizeMode::Synchronous)
        return;
    std::vector<std::string> todo;
    {
        std::lock_guard guard(m_lock);
        std::unordered_set<std::string> seen;
        for (const auto& path : paths)
            if (!m_cache.count(path) && seen.insert(path).second)
                todo.push_back(path);
    }
    std::erase_if(todo, [](const std::string& path) { return !walkable(path); });
    if (todo.empty())
        return;
    const auto sizes = m_walker(todo);
    std::lock_guard guard(m_lock);
    for (size_t i = 0; i < todo.size(); ++i)
        m_cache[todo[i]] = i < sizes.size() ? sizes[i] : 0;
}

std::string FolderSizes::lane(const std::string& path) const
{
    return m_volumeOf(path).value_or("/");
}

void FolderSizes::forget(const std::string& under)
{
    const std::string prefix = under == "/" ? "/" : under + "/";
    std::lock_guard guard(m_lock);
    std::erase_if(m_cache, [&](const auto& entry) {
        return entry.first == under || entry.first.starts_with(prefix);
    });
}

// Starts the newest queued request of every lane with a free slot, newest first. The
// queue is kept per lane: the newest request whose lane has room is the newest of the
// lane backs that have room, so no scan of the whole queue is needed.
void FolderSizes::pump()
{
    for (;;) {
        std::string path, pathLane;
        WorkPool* lanePool = nullptr; // lives until the destructor, which starts no walk
        {
            std::lock_guard guard(m_lock);
            if (m_stopping)
                return;
            auto best = m_queue.end();
            for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
                auto active = m_active.find(it->first);
                if (active != m_active.end() && active->second >= kWalksPerLane)
                    continue;
                if (best == m_queue.end() || it->second.back().order > best->second.back().order)
                    best = it;
            }
            if (best == m_queue.end())
                return;
            pathLane = best->first;
            path = std::move(best->second.back().path);
            best->second.pop_back();
            if (best->second.empty())
                m_queue.erase(best);
            ++m_active[pathLane];
            std::unique_ptr<WorkPool>& pool = m_pools[pathLane];
            if (!pool) // walks yield to everything else
                pool = std::make_unique<WorkPool>(int(kWalksPerLane), WorkClass::Background);
            lanePool = pool.get();
        }
        lanePool->start([this, path = std::move(path), pathLane = std::move(pathLane)] { walkJob(path, pathLane); });
    }
}

void FolderSizes::walkJob(const std::string& path, const std::string& pathLane)
{
    // A drive that does not answer is not walked, and its folders are not cached: the
    // next request after it answers again measures them.
    const bool measurable = walkable(path);
    const auto sizes = measurable ? m_walker({path}) : std::vector<int64_t>();
    {
        std::lock_guard guard(m_lock);
        if (measurable)
            m_cache[path] = sizes.empty() ? 0 : sizes.front();
        m_pending.erase(path);
        if (auto it = m_active.find(pathLane); it != m_active.end() && --it->second <= 0)
            m_active.erase(it);
    }
    if (measurable)
        infoChangedPost();
    pump(); // a slot of this lane is free now
}
