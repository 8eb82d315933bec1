#include "fs/mount_watchdog.h"

#include "fs/mount_probe_helper.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <csignal>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// A mount that answered this recently is not asked again before a drive is read.
constexpr auto kTrustAnswer = std::chrono::seconds(2);
// How often the background watcher looks for late answers of stuck mounts, and how
// often it looks at the mount table when nothing is stuck.
constexpr auto kWatchTick = std::chrono::milliseconds(250);
constexpr auto kIdleTick = std::chrono::seconds(1);
constexpr auto kChangesPollEvery = std::chrono::milliseconds(2);

MountDeadline effective(MountDeadline deadline)
{
    return deadline == MountDeadline{} ? Clock::now() + kMountProbeDeadline : deadline;
}

bool isBelowOrAt(std::string_view path, std::string_view dir)
{
    if (dir == "/")
        return !path.empty() && path[0] == '/';
    return path.starts_with(dir) && (path.size() == dir.size() || path[dir.size()] == '/');
}

std::string_view trimmed(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string keyOf(const MountRecord& mount)
{
    return mount.mountPoint + '\n' + std::to_string(uint64_t(mount.device));
}

// One helper process serving one mount, one call at a time.
struct Worker {
    pid_t pid = -1;
    int fd = -1;
    std::mutex lock;
    std::condition_variable freed;
    bool busy = false;      // a call is out (possibly abandoned and watched in the background)
    bool abandoned = false; // the call out missed its deadline: nobody waits for this helper
};

struct Guard {
    MountRecord mount;
    std::shared_ptr<Worker> worker;
    bool stuck = false;
    Clock::time_point answeredAt{};
};

struct State {
    std::mutex lock;
    std::map<std::string, Guard> guards; // by keyOf(mount)
    std::vector<MountRecord> table;
    Clock::time_point tableReadAt{};
    bool haveTable = false;
    std::optional<std::vector<MountRecord>> testTable;
    int changesFd = -2; // /proc/self/mountinfo held open to hear of changes; -1 if it cannot be
    Clock::time_point changesPolledAt{};
    std::vector<pid_t> toReap; // abandoned helpers, reaped once they end
    bool watcherRunning = false;
};

// Never destroyed: the background watcher may still run while the process exits.
State& state()
{
    static State* s = new State;
    return *s;
}

// Whether the mount table changed since the last look: the kernel flags an open
// mountinfo file as readable-with-priority once after each mount or unmount.
bool tableChanged(State& s)
{
    if (s.changesFd == -2)
        s.changesFd = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (s.changesFd < 0)
        return false;
    // One look per few milliseconds: a path resolution asks once per component, and a
    // mount made that recently is not yet anything a user could have navigated to.
    const auto now = Clock::now();
    if (now - s.changesPolledAt < kChangesPollEvery)
        return false;
    s.changesPolledAt = now;
    pollfd pfd{s.changesFd, POLLPRI, 0};
    return ::poll(&pfd, 1, 0) > 0 && (pfd.revents & (POLLPRI | POLLERR));
}

const std::vector<MountRecord>& tableLocked(State& s)
{
    if (s.testTable)
        return *s.testTable;
    const auto now = Clock::now();
    if (tableChanged(s) || !s.haveTable || now - s.tableReadAt >= std::chrono::seconds(1)) {
        s.table = mountTableRead(); // procfs: never waits on a drive
        s.tableReadAt = now;
        s.haveTable = true;
    }
    return s.table;
}

// The deepest mount point that is a prefix of `path`; the last mount of a point wins.
const MountRecord* mountOfLocked(State& s, std::string_view path)
{
    path = trimmed(path);
    const MountRecord* best = nullptr;
    for (const MountRecord& m : tableLocked(s))
        if (isBelowOrAt(path, m.mountPoint) && (!best || m.mountPoint.size() >= best->mountPoint.size()))
            best = &m;
    return best;
}

void retire(State& s, Guard& guard)
{
    if (!guard.worker)
        return;
    if (guard.worker->pid > 0) {
        ::kill(guard.worker->pid, SIGKILL); // takes effect once its call returns
        s.toReap.push_back(guard.worker->pid);
    }
    if (guard.worker->fd >= 0)
        ::close(guard.worker->fd);
    guard.worker->fd = -1;
    guard.worker.reset();
}

// Background, from the first helper on: hears the late answers of stuck mounts,
// retires the helpers of unmounted drives, reaps abandoned helpers. It only waits in
// poll() and sleeps, never on a file system.
void watch()
{
    State& s = state();
    for (;;) {
        std::vector<std::pair<std::string, std::shared_ptr<Worker>>> stuck;
        {
            std::lock_guard guard(s.lock);
            const auto& table = tableLocked(s);
            std::set<std::string> present;
            for (const MountRecord& m : table)
                present.insert(keyOf(m));
            for (auto it = s.guards.begin(); it != s.guards.end();) {
                if (!present.contains(it->first)) {
                    retire(s, it->second);
                    it = s.guards.erase(it);
                    continue;
                }
                if (it->second.stuck && it->second.worker)
                    stuck.emplace_back(it->first, it->second.worker);
                ++it;
            }
            std::erase_if(s.toReap, [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
        }
        std::vector<pollfd> fds;
        for (auto& [key, worker] : stuck)
            fds.push_back({worker->fd, POLLIN, 0});
        if (fds.empty()) {
            std::this_thread::sleep_for(kIdleTick);
            continue;
        }
        if (::poll(fds.data(), fds.size(), int(kWatchTick.count())) <= 0)
            continue;
        for (size_t i = 0; i < fds.size(); ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            auto& [key, worker] = stuck[i];
            MountProbeReply late;
            const bool alive = (fds[i].revents & POLLIN) && mountProbeReceive(worker->fd, late);
            std::lock_guard guard(s.lock);
            auto it = s.guards.find(key);
            if (it == s.guards.end() || it->second.worker != worker)
                continue;
            if (!alive)
                retire(s, it->second); // the helper died: the next call forks a new one
            it->second.stuck = false;
            it->second.answeredAt = Clock::now();
            std::lock_guard workerGuard(worker->lock);
            worker->busy = false;
            worker->abandoned = false;
            worker->freed.notify_all();
        }
    }
}

void startWatcherLocked(State& s)
{
    if (s.watcherRunning)
        return;
    try {
        std::thread(watch).detach(); // waits only in poll(): exiting never waits on it
        s.watcherRunning = true;
    } catch (const std::system_error&) {
        // No thread now: stuck mounts stay stuck until a later call starts the watcher.
    }
}

void markStuck(const std::string& key, const std::shared_ptr<Worker>& worker)
{
    {
        // Callers queued behind the call that hangs give up at once.
        std::lock_guard workerGuard(worker->lock);
        worker->abandoned = true;
        worker->freed.notify_all();
    }
    State& s = state();
    std::lock_guard guard(s.lock);
    auto it = s.guards.find(key);
    if (it == s.guards.end() || it->second.worker != worker)
        return;
    it->second.stuck = true;
}

// Sends one request to the mount's helper and waits for the answer until `deadline`.
MountAnswer<MountProbeReply> askHelper(const MountRecord& mount, const MountProbeRequest& request,
                                       MountDeadline deadline)
{
    State& s = state();
    const std::string key = keyOf(mount);
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::shared_ptr<Worker> worker;
        {
            std::lock_guard guard(s.lock);
            Guard& g = s.guards[key];
            g.mount = mount;
            if (g.stuck)
                return {std::nullopt, MountState::NotResponding};
            if (!g.worker) {
                auto fresh = std::make_shared<Worker>();
                if (!mountProbeSpawn(fresh->pid, fresh->fd))
                    return {mountProbeServe(request), MountState::Responding}; // no process: ask directly
                g.worker = std::move(fresh);
                startWatcherLocked(s);
            }
            worker = g.worker;
        }
        {
            std::unique_lock workerGuard(worker->lock);
            const bool free = worker->freed.wait_until(workerGuard, deadline,
                                                       [&] { return !worker->busy || worker->abandoned; });
            if (!free || worker->abandoned) {
                workerGuard.unlock();
                markStuck(key, worker); // an earlier call on it is still out
                return {std::nullopt, MountState::NotResponding};
            }
            worker->busy = true;
        }
        MountProbeReply reply;
        const MountProbeResult result = mountProbeExchange(worker->fd, request, reply, deadline);
        if (result == MountProbeResult::Late) {
            markStuck(key, worker); // the watcher frees the helper when the answer comes
            return {std::nullopt, MountState::NotResponding};
        }
        {
            std::lock_guard workerGuard(worker->lock);
            worker->busy = false;
            worker->freed.notify_all();
        }
        std::lock_guard guard(s.lock);
        auto it = s.guards.find(key);
        if (result == MountProbeResult::Broken) {
            if (it != s.guards.end() && it->second.worker == worker)
                retire(s, it->second); // and try once more with a new helper
            continue;
        }
        if (it != s.guards.end())
            it->second.answeredAt = Clock::now();
        return {reply, MountState::Responding};
    }
    return {std::nullopt, MountState::Responding};
}

// Runs a request on the right side of the fence: directly for unguarded mounts, in the
// mount's helper otherwise.
MountAnswer<MountProbeReply> ask(MountProbeOp op, std::string_view path, MountDeadline deadline)
{
    MountProbeRequest request;
    if (!mountProbeRequestFill(request, op, path))
        return {std::nullopt, MountState::Responding}; // too long for any system call
    std::optional<MountRecord> guarded; // copied only when the call goes to a helper
    {
        State& s = state();
        std::lock_guard guard(s.lock);
        const MountRecord* mount = mountOfLocked(s, path);
        if (mount && mountWatchdogGuards(*mount))
            guarded = *mount;
    }
    if (!guarded)
        return {mountProbeServe(request), MountState::Responding};
    return askHelper(*guarded, request, effective(deadline));
}

template <class T, class F> MountAnswer<T> convert(const MountAnswer<MountProbeReply>& answer, F&& f)
{
    MountAnswer<T> out;
    out.state = answer.state;
    if (answer.value && answer.value->rc == 0)
        out.value = f(*answer.value);
    return out;
}

} // namespace

MountAnswer<MountCapacity> mountWatchdogCapacity(const std::string& path, MountDeadline deadline)
{
    return convert<MountCapacity>(ask(MountProbeOp::Statfs, path, deadline), [](const MountProbeReply& r) {
        const int64_t unit = int64_t(r.fs.f_frsize ? r.fs.f_frsize : r.fs.f_bsize);
        return MountCapacity{int64_t(r.fs.f_blocks) * unit, int64_t(r.fs.f_bavail) * unit};
    });
}

MountAnswer<struct stat> mountWatchdogStat(const std::string& path, MountDeadline deadline)
{
    return convert<struct stat>(ask(MountProbeOp::Stat, path, deadline), [](const MountProbeReply& r) { return r.st; });
}

MountAnswer<struct stat> mountWatchdogLstat(const std::string& path, MountDeadline deadline)
{
    return convert<struct stat>(ask(MountProbeOp::Lstat, path, deadline), [](const MountProbeReply& r) { return r.st; });
}

MountAnswer<std::string> mountWatchdogRealpath(const std::string& path, MountDeadline deadline)
{
    deadline = effective(deadline);
    std::string pending = path;
    if (pending.empty() || pending[0] != '/') {
        char cwd[PATH_MAX];
        if (!::getcwd(cwd, sizeof cwd))
            return {};
        pending = std::string(cwd) + "/" + pending;
    }
    // Components still to resolve, the next one last.
    std::vector<std::string> todo;
    auto pushPath = [&todo](std::string_view p) {
        std::vector<std::string> parts;
        for (size_t i = 0; i < p.size();) {
            const size_t slash = p.find('/', i);
            const size_t end = slash == std::string_view::npos ? p.size() : slash;
            if (end > i)
                parts.emplace_back(p.substr(i, end - i));
            i = end + 1;
        }
        todo.insert(todo.end(), parts.rbegin(), parts.rend());
    };
    pushPath(pending);
    std::string done;
    int links = 0;
    while (!todo.empty()) {
        const std::string part = std::move(todo.back());
        todo.pop_back();
        if (part == ".")
            continue;
        if (part == "..") {
            const size_t slash = done.rfind('/');
            done.resize(slash == std::string::npos ? 0 : slash);
            continue;
        }
        const std::string candidate = done + "/" + part;
        const MountAnswer<MountProbeReply> st = ask(MountProbeOp::Lstat, candidate, deadline);
        if (!st.responding())
            return {std::nullopt, MountState::NotResponding};
        if (!st.value || st.value->rc != 0)
            return {};
        if (!S_ISLNK(st.value->st.st_mode)) {
            done = candidate;
            continue;
        }
        const MountAnswer<MountProbeReply> link = ask(MountProbeOp::Readlink, candidate, deadline);
        if (!link.responding())
            return {std::nullopt, MountState::NotResponding};
        if (!link.value || link.value->rc < 0 || ++links > 40)
            return {};
        const std::string_view target(link.value->text, size_t(link.value->rc));
        if (target.starts_with('/'))
            done.clear();
        pushPath(target);
    }
    return {done.empty() ? std::string("/") : done, MountState::Responding};
}

MountState mountWatchdogCheck(const std::string& path, MountDeadline deadline)
{
    std::string mountPoint;
    {
        State& s = state();
        std::lock_guard guard(s.lock);
        const MountRecord* mount = mountOfLocked(s, path);
        if (!mount || !mountWatchdogGuards(*mount))
            return MountState::Responding;
        auto it = s.guards.find(keyOf(*mount));
        if (it != s.guards.end()) {
            if (it->second.stuck)
                return MountState::NotResponding;
            if (Clock::now() - it->second.answeredAt < kTrustAnswer)
                return MountState::Responding;
        }
        mountPoint = mount->mountPoint;
    }
    return mountWatchdogCapacity(mountPoint, deadline).state;
}

std::vector<std::string> mountWatchdogStuckEntries(const std::string& dir, MountDeadline deadline)
{
    deadline = effective(deadline);
    const std::string_view parent = trimmed(dir);
    std::vector<std::string> points;
    {
        State& s = state();
        std::lock_guard guard(s.lock);
        for (const MountRecord& m : tableLocked(s)) {
            const size_t slash = m.mountPoint.rfind('/');
            if (slash == std::string::npos || m.mountPoint.size() == 1)
                continue;
            const std::string_view up = slash == 0 ? std::string_view("/") : std::string_view(m.mountPoint).substr(0, slash);
            if (up == parent && mountWatchdogGuards(m)
                && std::find(points.begin(), points.end(), m.mountPoint) == points.end())
                points.push_back(m.mountPoint);
        }
    }
    std::vector<MountState> states(points.size(), MountState::Responding);
    std::vector<std::thread> checks;
    for (size_t i = 0; i < points.size(); ++i) {
        try {
            // Joined below: each waits at most until the deadline, in poll().
            checks.emplace_back([&, i] { states[i] = mountWatchdogCheck(points[i], deadline); });
        } catch (const std::system_error&) {
            states[i] = mountWatchdogCheck(points[i], deadline);
        }
    }
    for (auto& t : checks)
        t.join();
    std::vector<std::string> names;
    for (size_t i = 0; i < points.size(); ++i)
        if (states[i] == MountState::NotResponding)
            names.push_back(points[i].substr(points[i].rfind('/') + 1));
    return names;
}

bool mountWatchdogIsStuck(dev_t device)
{
    State& s = state();
    std::lock_guard guard(s.lock);
    for (const auto& [key, g] : s.guards)
        if (g.stuck && g.mount.device == device)
            return true;
    return false;
}

bool mountWatchdogIsStuckAt(std::string_view mountPoint)
{
    mountPoint = trimmed(mountPoint);
    State& s = state();
    std::lock_guard guard(s.lock);
    for (const auto& [key, g] : s.guards)
        if (g.stuck && g.mount.mountPoint == mountPoint)
            return true;
    return false;
}

bool mountWatchdogIsStuckPath(std::string_view path)
{
    State& s = state();
    std::lock_guard guard(s.lock);
    if (s.guards.empty())
        return false;
    const MountRecord* mount = mountOfLocked(s, path);
    if (!mount)
        return false;
    auto it = s.guards.find(keyOf(*mount));
    return it != s.guards.end() && it->second.stuck;
}

std::vector<std::string> mountWatchdogStuckMounts()
{
    State& s = state();
    std::lock_guard guard(s.lock);
    std::vector<std::string> points;
    for (const auto& [key, g] : s.guards)
        if (g.stuck)
            points.push_back(g.mount.mountPoint);
    std::sort(points.begin(), points.end());
    return points;
}

std::optional<MountRecord> mountWatchdogMountOf(std::string_view path)
{
    State& s = state();
    std::lock_guard guard(s.lock);
    const MountRecord* mount = mountOfLocked(s, path);
    return mount ? std::optional<MountRecord>(*mount) : std::nullopt;
}

std::vector<MountRecord> mountWatchdogTable()
{
    State& s = state();
    std::lock_guard guard(s.lock);
    return tableLocked(s);
}

bool mountWatchdogGuards(const MountRecord& mount)
{
    // Never destroyed: a walk let go of at exit may still ask.
    static const auto& network = *new std::set<std::string, std::less<>>{
        "nfs", "nfs4", "cifs", "smb3", "smbfs", "9p", "ceph", "glusterfs", "davfs", "afs", "lustre", "ncpfs",
        "virtiofs", "sshfs", "ftpfs", "curlftpfs",
    };
    const std::string_view point = mount.mountPoint;
    auto below = [point](std::string_view dir) { return point.size() > dir.size() && isBelowOrAt(point, dir); };
    return mount.fsType.starts_with("fuse") || network.contains(mount.fsType) || below("/media")
        || below("/mnt") || below("/run/media");
}

void mountWatchdogSetTableForTest(std::optional<std::vector<MountRecord>> table)
{
    State& s = state();
    std::lock_guard guard(s.lock);
    s.testTable = std::move(table);
}

void mountWatchdogResetForTest()
{
    State& s = state();
    std::lock_guard guard(s.lock);
    for (auto& [key, g] : s.guards)
        retire(s, g);
    s.guards.clear();
    s.haveTable = false;
}
