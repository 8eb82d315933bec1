#pragma once
// The process-wide cache of folder sizes. A caller asks for a folder's size and gets the
// cached number at once, or nothing while a background walk (queued on that first
// request) computes it; when walks finish, infoChangedPost() tells the views to ask
// again. Requests are served newest first, since the folders asked for last are the
// ones on screen, with at most two walks per lane (storage device) at a time. The
// command line switches to synchronous mode, where the caller waits for the walk.
//
// Keys are the paths exactly as asked (no normalisation); sizes stay cached until
// forget() drops them.
//
// Each lane has its own two threads, so a walk stuck on a dead drive holds only its
// own lane: walks on other drives and on "/" go on. A drive the mount watchdog knows to
// hang is not walked at all (its folders get no size until it answers again), and no
// walk ever looks at a mount point below its folder.

#include "fs/work_pool.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

enum class SizeMode { Background, Synchronous };

class FolderSizes {
public:
    // Measures folders, one total per path in order (folderSizeWalkAll in production).
    using Walker = std::function<std::vector<int64_t>(const std::vector<std::string>& paths)>;
    // The mount point of the volume holding a path, if any (volumeContaining in
    // production); everything else shares the lane "/".
    using VolumeOf = std::function<std::optional<std::string>(const std::string& path)>;

    static constexpr int64_t kWalksPerLane = 2;

    FolderSizes();
    FolderSizes(Walker walker, VolumeOf volumeOf);
    ~FolderSizes(); // lets running walks finish; queued requests are dropped

    FolderSizes(const FolderSizes&) = delete;
    FolderSizes& operator=(const FolderSizes&) = delete;

    // The one cache of the process (never destroyed: exiting does not wait for walks).
    static FolderSizes& shared();

    // Cheap enough for cell drawing: a lock and two look-ups on the hit path. Nothing
    // (and a walk queued, once) while the size is unknown; always a number in
    // synchronous mode.
    std::optional<int64_t> size(const std::string& path);

    // The cached size, or a walk on the calling thread whose result is stored.
    int64_t cachedOrWalk(const std::string& path);

    // Synchronous mode only: measures every uncached path of `paths` in one walk that
    // shares its threads, so later size() calls find them cached. Does nothing in
    // background mode.
    void measure(const std::vector<std::string>& paths);

    // The lane of `path`: the mount point of the volume holding it (links resolved).
    std::string lane(const std::string& path) const;

    // Drops the cached sizes of `path` and of everything below it. Walks queued or
    // running still store their results.
    void forget(const std::string& under);

    void setMode(SizeMode mode) { m_mode = mode; }
    SizeMode mode() const { return m_mode; }

private:
    struct Request {
        std::string path;
        uint64_t order; // larger is newer
    };

    void pump();
    void walkJob(const std::string& path, const std::string& lane);

    const Walker m_walker;
    const VolumeOf m_volumeOf;
    std::atomic<SizeMode> m_mode{SizeMode::Background};

    std::mutex m_lock; // guards everything below but the pool
    std::unordered_map<std::string, int64_t> m_cache;
    std::unordered_set<std::string> m_pending; // queued or walking
    std::map<std::string, std::vector<Request>> m_queue; // per lane, oldest first; no empty lanes
    uint64_t m_nextOrder = 0;
    std::map<std::string, int64_t> m_active; // running walks per lane; no zero entries
    bool m_stopping = false;                   // no walk starts once the cache is going

    std::map<std::string, std::unique_ptr<WorkPool>> m_pools; // per lane; under m_lock
};
