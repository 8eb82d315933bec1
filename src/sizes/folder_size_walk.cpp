#include "sizes/folder_size_walk.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/mount_watchdog.h"
#include "fs/sys_calls.h"
#include "fs/walk_gate.h"
#include "fs/work_stack.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <sched.h>
#include <system_error>
#include <thread>

namespace {

// A folder still to be read: its name inside `parent` (for a root: the path itself,
// opened from the working directory and followed if it is a link).
struct DirJob {
    std::shared_ptr<DirFd> parent;
    std::string name;
    std::string path; // only kept while mount points lie below the roots
    // The folders on the way down from the root: a folder that is its own ancestor (a
    // bind mount of a parent on the same device) would make the walk endless; it is skipped.
    std::shared_ptr<const WalkAncestor> self;
    size_t root = 0;
    bool follow = false;
};

int openDirAt(int dirfd, const char* name, bool follow)
{
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
    int fd;
    do
        fd = sysCalls().openat(dirfd, name, flags, 0);
    while (fd < 0 && errno == EINTR);
    return fd;
}

int lstatAt(int dirfd, const char* name, struct stat* st)
{
    int rc;
    do
        rc = sysCalls().fstatat(dirfd, name, st, AT_SYMLINK_NOFOLLOW);
    while (rc != 0 && errno == EINTR);
    return rc;
}

int statFollow(const char* path, struct stat* st)
{
    int rc;
    do
        rc = sysCalls().stat(path, st);
    while (rc != 0 && errno == EINTR);
    return rc;
}

constexpr size_t kDirentBuffer = 64 * 1024;

// Whether a second thread would find a core: at most one other task is runnable now
// (the kernel's instantaneous count in /proc/loadavg includes the caller).
bool coreToSpare()
{
    cpu_set_t set;
    const int cores = ::sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
    if (cores < 2)
        return false;
    const auto text = fileReadAll("/proc/loadavg"); // "0.52 0.58 0.59 2/467 12345"
    if (!text)
        return true;
    size_t field = 0;
    for (int spaces = 0; field < text->size() && spaces < 3; ++field)
        spaces += (*text)[field] == ' ';
    return std::atoi(text->c_str() + field) <= cores;
}

// One measurement: a stack of folders shared by up to `threads` threads, depth first
// so that few descriptors are open at a time.
class SizeWalk {
public:
    SizeWalk(const std::vector<std::string>& paths, int threads)
        : m_paths(paths)
        , m_threads(threads == kFolderSizeWalkAuto ? 2 : std::max(threads, 1))
        , m_askForCore(threads == kFolderSizeWalkAuto)
        , m_totals(std::make_unique<std::atomic<int64_t>[]>(paths.size()))
        , m_devs(paths.size())
    {
        // Mount points are never entered (they are other devices), and never even
        // looked at: the stat of a dead drive's root would hang the walk. So the walk
        // knows them by name from the mount table, before any system call.
        for (const MountRecord& mount : mountWatchdogTable()) {
            const std::string& point = mount.mountPoint;
            const size_t slash = point.rfind('/');
            if (point.size() > 1 && slash != std::string::npos)
                m_mountsIn[slash == 0 ? "/" : point.substr(0, slash)].emplace(point.substr(slash + 1), mount.device);
        }
    }

    std::vector<int64_t> run()
    {
        auto cwd = std::make_shared<DirFd>(AT_FDCWD);
        std::vector<DirJob> roots;
        for (size_t i = 0; i < m_paths.size(); ++i) {
            m_totals[i] = 0;
            // Resolved through the watchdog: a root on a drive that does not answer is
            // not walked at all (it counts 0), and the resolved form names the folders
            // that hold mount points.
            const MountAnswer<std::string> real = mountWatchdogRealpath(m_paths[i]);
            if (!real.responding() || !real.value || mountWatchdogCheck(*real.value) != MountState::Responding)
                continue;
            struct stat st;
            if (statFollow(m_paths[i].c_str(), &st) != 0)
                continue;
            if (!S_ISDIR(st.st_mode)) {
                m_totals[i] = int64_t(st.st_size);
                continue;
            }
            m_devs[i] = st.st_dev;
            auto self = std::make_shared<const WalkAncestor>(WalkAncestor{st.st_dev, st.st_ino, nullptr});
            roots.push_back({cwd, m_paths[i], *real.value, std::move(self), i, true});
        }
        cwd.reset();
        WorkStack<DirJob>::run(
            std::move(roots), m_threads,
            [this](DirJob& job, std::vector<DirJob>& subs) {
                thread_local std::vector<char> buffer(kDirentBuffer);
                readDir(job, subs, buffer);
            },
            m_askForCore ? WorkStack<DirJob>::MayAddThread(coreToSpare) : nullptr);
        std::vector<int64_t> totals(m_paths.size());
        for (size_t i = 0; i < totals.size(); ++i)
            totals[i] = m_totals[i].load();
        return totals;
    }

private:
    // Adds the folder's non-folder entries to its root's total; collects the subfolders
    // that stay on the root's device.
    void readDir(DirJob& job, std::vector<DirJob>& subs, std::vector<char>& buffer)
    {
        const int fd = openDirAt(job.parent->fd(), job.name.c_str(), job.follow);
        job.parent.reset(); // the parent closes as soon as its last child is open
        if (fd < 0)
            return;
        auto dir = std::make_shared<DirFd>(fd);
        const dev_t dev = m_devs[job.root];
        // Mount points in this folder, skipped unless they are the same device (a bind
        // mount, which the device check below handles as before).
        const MountsHere* mountsHere = nullptr;
        if (!m_mountsIn.empty() && !job.path.empty())
            if (auto it = m_mountsIn.find(job.path); it != m_mountsIn.end())
                mountsHere = &it->second;
        int64_t sum = 0;
        dirForEachEntry(fd, buffer, [&](const char* name, unsigned char) {
            if (mountsHere)
                if (auto m = mountsHere->find(name); m != mountsHere->end() && m->second != dev)
                    return;
            struct stat st;
            if (lstatAt(fd, name, &st) != 0)
                return;
            if (!S_ISDIR(st.st_mode)) {
                sum += int64_t(st.st_size);
                return;
            }
            if (st.st_dev != dev || walkGateOnPath(job.self.get(), st.st_dev, st.st_ino))
                return;
            auto self = std::make_shared<const WalkAncestor>(WalkAncestor{st.st_dev, st.st_ino, job.self});
            subs.push_back({dir, name, m_mountsIn.empty() ? std::string() : childPath(job.path, name), std::move(self),
                            job.root, false});
        });
        m_totals[job.root].fetch_add(sum, std::memory_order_relaxed);
    }

    static std::string childPath(const std::string& parent, const char* name)
    {
        return parent == "/" ? "/" + std::string(name) : parent + "/" + name;
    }

    using MountsHere = std::unordered_map<std::string, dev_t>; // name -> device
    std::unordered_map<std::string, MountsHere> m_mountsIn;    // folder -> its mount points
    const std::vector<std::string>& m_paths;
    const int m_threads;
    const bool m_askForCore; // whether to check for an idle core before starting the helper
    std::unique_ptr<std::atomic<int64_t>[]> m_totals;
    std::vector<dev_t> m_devs; // written before any thread starts
};

} // namespace

std::vector<int64_t> folderSizeWalkAll(const std::vector<std::string>& paths, int threads)
{
    return SizeWalk(paths, threads).run();
}

int64_t folderSizeWalk(const std::string& path, int threads)
{
    return folderSizeWalkAll({path}, threads).front();
}
