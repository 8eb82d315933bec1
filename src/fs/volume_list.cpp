#include "fs/volume_list.h"

#include "fs/file_io.h"
#include "fs/paths.h"

#include <algorithm>
#include <climits>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <pwd.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

// Strictly below `dir` ("/mnt/x" is below "/mnt", "/mnt" and "/mntx" are not).
bool isBelow(std::string_view path, std::string_view dir)
{
    return path.size() > dir.size() + 1 && path.starts_with(dir) && path[dir.size()] == '/';
}

bool hasHiddenComponent(std::string_view path)
{
    for (size_t i = 0; i + 1 < path.size(); ++i)
        if (path[i] == '/' && path[i + 1] == '.')
            return true;
    return false;
}

std::string resolvedOr(const std::string& path)
{
    return mountWatchdogRealpath(path).value.value_or(path);
}

} // namespace

VolumeViewer VolumeViewer::current()
{
    VolumeViewer viewer;
    viewer.home = resolvedOr(homeDir());
    while (viewer.home.size() > 1 && viewer.home.back() == '/')
        viewer.home.pop_back();
    viewer.user = loginName();
    return viewer;
}

const std::set<std::string, std::less<>>& VolumeList::skipNames()
{
    // Never destroyed, like every table here: a read let go of at exit may still ask.
    static const auto& names = *new std::set<std::string, std::less<>>{
        "Macintosh HD", "Macintosh HD - Data", "Recovery", "Preboot", "VM", "Update",
    };
    return names;
}

const std::set<std::string, std::less<>>& VolumeList::pseudoFsTypes()
{
    static const auto& types = *new std::set<std::string, std::less<>>{
        // kernel interfaces
        "binfmt_misc", "bpf", "cgroup", "cgroup2", "configfs", "debugfs", "devpts", "efivarfs",
        "fusectl", "hugetlbfs", "mqueue", "nfsd", "nsfs", "proc", "pstore", "rpc_pipefs",
        "securityfs", "selinuxfs", "sysfs", "tracefs",
        // memory file systems
        "devtmpfs", "ramfs", "tmpfs",
        // container layers, package images, automount triggers
        "autofs", "fuse.lxcfs", "fuse.snapfuse", "overlay", "squashfs",
        // desktop plumbing: the document portal and the GIO bridge
        "fuse.gvfsd-fuse", "fuse.portal",
    };
    return types;
}

bool VolumeList::userVisible(const MountRecord& mount, const VolumeViewer& viewer)
{
    const std::string& point = mount.mountPoint;
    if (point == "/" || pseudoFsTypes().contains(mount.fsType) || hasHiddenComponent(point))
        return false;
    const bool usersPlace = isBelow(point, "/media") || isBelow(point, "/mnt")
        || (!viewer.user.empty() && isBelow(point, "/run/media/" + viewer.user))
        || (viewer.home.size() > 1 && isBelow(point, viewer.home));
    return usersPlace && !skipNames().contains(pathLastComponent(point));
}

std::vector<MountRecord> VolumeList::visible(const std::vector<MountRecord>& table, const VolumeViewer& viewer)
{
    std::map<std::string_view, size_t> topmost; // mount point -> index of its last mount
    for (size_t i = 0; i < table.size(); ++i)
        topmost[table[i].mountPoint] = i;
    std::vector<MountRecord> result;
    for (size_t i = 0; i < table.size(); ++i)
        if (topmost[table[i].mountPoint] == i && userVisible(table[i], viewer))
            result.push_back(table[i]);
    return result;
}

std::optional<Volume> VolumeList::probe(const std::string& mountPoint, const MountCapacityFn& capacity)
{
    std::string name = pathLastComponent(mountPoint);
    if (name.empty() || name == "/")
        return std::nullopt;
    const MountAnswer<MountCapacity> figures = capacity(mountPoint);
    if (!figures.responding())
        return Volume{std::move(name), mountPoint, 0, 0, false};
    if (!figures.value)
        return std::nullopt;
    return Volume{std::move(name), mountPoint, figures.value->totalBytes, figures.value->freeBytes};
}

std::vector<Volume> VolumeList::mounted()
{
    // The watchdog's deadline falls well before the wait's, so a drive that hangs is
    // reported as not responding by its own probe and a command still prints in time.
    const auto deadline = std::chrono::steady_clock::now() + std::min<std::chrono::milliseconds>(kProbeWait, kMountProbeDeadline);
    return mounted(mountWatchdogTable(), VolumeViewer::current(),
                   [deadline](const std::string& point) { return mountWatchdogCapacity(point, deadline); });
}

std::vector<Volume> VolumeList::mounted(const std::vector<MountRecord>& table, const VolumeViewer& viewer,
                                        const MountCapacityFn& capacity)
{
    // Owned jointly by the caller and every probe: a probe that outlives the wait still
    // finds live memory to drop its late answer into.
    struct Shared {
        std::mutex lock;
        std::condition_variable finished;
        std::vector<Volume> found;
        std::set<std::string> answered; // mount points whose probe has ended
        size_t pending = 0;
    };
    auto shared = std::make_shared<Shared>();
    const auto deadline = std::chrono::steady_clock::now() + kProbeWait;

    const std::vector<MountRecord> mounts = visible(table, viewer);
    for (const MountRecord& mount : mounts) {
        {
            std::lock_guard guard(shared->lock);
            ++shared->pending;
        }
        try {
            std::thread([shared, capacity, mountPoint = mount.mountPoint] {
                std::optional<Volume> volume = probe(mountPoint, capacity);
                std::lock_guard guard(shared->lock);
                if (volume)
                    shared->found.push_back(std::move(*volume));
                shared->answered.insert(mountPoint);
                --shared->pending;
                shared->finished.notify_all();
            }).detach(); // never joined: a hung file system must not hold the caller
        } catch (const std::system_error&) {
            std::lock_guard guard(shared->lock); // no thread to be had: that volume is missing
            --shared->pending;
        }
    }

    std::vector<Volume> volumes;
    {
        std::unique_lock guard(shared->lock);
        shared->finished.wait_until(guard, deadline, [&] { return shared->pending == 0; });
        volumes = shared->found;
        for (const MountRecord& mount : mounts)
            if (!shared->answered.contains(mount.mountPoint))
                if (auto late = probe(mount.mountPoint, [](const std::string&) {
                        return MountAnswer<MountCapacity>{std::nullopt, MountState::NotResponding};
                    }))
                    volumes.push_back(std::move(*late));
    }
    std::sort(volumes.begin(), volumes.end(), [](const Volume& a, const Volume& b) {
        return a.name != b.name ? a.name < b.name : a.path < b.path;
    });
    return volumes;
}

std::optional<std::string> volumeContainingIn(std::string_view resolvedPath, const std::vector<std::string>& mountPoints)
{
    while (resolvedPath.size() > 1 && resolvedPath.back() == '/')
        resolvedPath.remove_suffix(1);
    const std::string* best = nullptr;
    for (const std::string& point : mountPoints) {
        const bool contains = resolvedPath == point || isBelow(resolvedPath, point);
        if (contains && (!best || point.size() > best->size()))
            best = &point;
    }
    return best ? std::optional<std::string>(*best) : std::nullopt;
}

std::optional<std::string> volumeContaining(const std::string& path)
{
    // Asked once per folder walk and per navigation step: the table is cheap to read
    // but not free, and a drive plugged in a second ago may wait a second to count.
    // Never destroyed: a walk let go of at exit may still ask.
    static std::mutex& lock = *new std::mutex;
    static std::chrono::steady_clock::time_point readAt;
    static std::vector<std::string>& points = *new std::vector<std::string>;
    static bool haveTable = false;

    const std::string resolved = resolvedOr(path); // outside the lock: it touches the disk
    std::lock_guard guard(lock);
    const auto now = std::chrono::steady_clock::now();
    if (!haveTable || now - readAt >= std::chrono::seconds(1)) {
        points.clear();
        for (const MountRecord& mount : VolumeList::visible(mountTableRead(), VolumeViewer::current()))
            points.push_back(mount.mountPoint);
        readAt = now;
        haveTable = true;
    }
    return volumeContainingIn(resolved, points);
}
