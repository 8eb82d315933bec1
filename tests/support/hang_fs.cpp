#include "support/hang_fs.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <limits.h>
#include <sstream>
#include <string_view>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// The live mounts, for the crash handler: plain arrays it may read without locks.
constexpr int kSlots = 8;
struct Slot {
    std::atomic<pid_t> pid{0};
    char path[PATH_MAX];
};
Slot g_slots[kSlots];

void cleanAll()
{
    for (Slot& slot : g_slots) {
        const pid_t pid = slot.pid.exchange(0);
        if (pid <= 0)
            continue;
        ::kill(pid, SIGKILL); // closing /dev/fuse fails every blocked call at once
        ::umount2(slot.path, MNT_DETACH);
    }
}

void onFatal(int sig)
{
    cleanAll();
    ::signal(sig, SIG_DFL);
    ::raise(sig);
}

void installHandlers()
{
    static std::atomic<bool> done{false};
    if (done.exchange(true))
        return;
    for (int sig : {SIGINT, SIGTERM, SIGABRT, SIGSEGV, SIGBUS})
        ::signal(sig, onFatal);
    std::atexit(cleanAll);
}

std::string helperPath()
{
    const char* env = std::getenv("HANGFS_BIN");
    return env && *env ? env : "";
}

bool mountListed(const std::string& point)
{
    std::ifstream in("/proc/self/mountinfo");
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string id, parent, dev, root, mp;
        fields >> id >> parent >> dev >> root >> mp;
        if (mp == point && line.find(" - fuse.hangfs ") != std::string::npos)
            return true;
    }
    return false;
}

void makeDirs(const std::string& path)
{
    for (size_t slash = 1; slash != std::string::npos;) {
        slash = path.find('/', slash + 1);
        ::mkdir(path.substr(0, slash).c_str(), 0755);
    }
}

int runQuiet(const char* program, const std::vector<const char*>& args)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 1);
        ::dup2(null, 2);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(program));
        for (const char* a : args)
            argv.push_back(const_cast<char*>(a));
        argv.push_back(nullptr);
        ::execvp(program, argv.data());
        ::_exit(127);
    }
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) < 0)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

std::string HangFs::unusableReason()
{
    const int fd = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return std::string("/dev/fuse cannot be opened: ") + std::strerror(errno);
    ::close(fd);
    const std::string helper = helperPath();
    if (helper.empty() || ::access(helper.c_str(), X_OK) != 0)
        return "the hangfs helper is not built (HANGFS_BIN unset or not executable)";
    return {};
}

HangFs::HangFs(std::string mountPoint, std::string ops)
    : m_mountPoint(std::move(mountPoint))
{
    m_skipReason = unusableReason();
    if (!m_skipReason.empty())
        return;
    installHandlers();
    Slot* slot = nullptr;
    for (Slot& s : g_slots)
        if (s.pid.load() == 0) {
            slot = &s;
            break;
        }
    if (!slot || m_mountPoint.size() >= PATH_MAX) {
        m_skipReason = "too many hangfs mounts in one test";
        return;
    }
    makeDirs(m_mountPoint);
    const std::string helper = helperPath();
    const std::string hangArg = "--hang=" + ops;
    int ack[2];
    if (::pipe2(ack, O_CLOEXEC) != 0) {
        m_skipReason = "pipe failed";
        return;
    }
    const pid_t pid = ::fork();
    if (pid < 0) {
        ::close(ack[0]);
        ::close(ack[1]);
        m_skipReason = "fork failed";
        return;
    }
    if (pid == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, 0);
        ::dup2(null, 1);
        ::dup2(ack[1], 3); // dup2 clears close-on-exec
        const std::string ackArg = "--ack-fd=3";
        ::execl(helper.c_str(), "hangfs", hangArg.c_str(), ackArg.c_str(), m_mountPoint.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(ack[1]);
    m_ackFd = ack[0];
    std::strcpy(slot->path, m_mountPoint.c_str());
    slot->pid = pid;
    m_pid = pid;

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!mountListed(m_mountPoint)) {
        int status = 0;
        if (::waitpid(pid, &status, WNOHANG) == pid) {
            slot->pid = 0;
            m_pid = -1;
            ::close(m_ackFd);
            m_ackFd = -1;
            m_skipReason = "hangfs could not mount (exit status "
                + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + ")";
            return;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            unmount();
            m_skipReason = "hangfs did not mount within 5 s";
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

HangFs::~HangFs() { unmount(); }

namespace {

// Signals the daemon and waits (a little) for it to say the switch is made.
void signalAndWait(pid_t pid, int sig, int ackFd)
{
    if (pid <= 0 || ::kill(pid, sig) != 0 || ackFd < 0)
        return;
    pollfd pfd{ackFd, POLLIN, 0};
    if (::poll(&pfd, 1, 3000) > 0) {
        char byte;
        [[maybe_unused]] const ssize_t n = ::read(ackFd, &byte, 1);
    }
}

} // namespace

void HangFs::hang() { signalAndWait(m_pid, SIGUSR2, m_ackFd); }

void HangFs::release() { signalAndWait(m_pid, SIGUSR1, m_ackFd); }

void HangFs::unmount()
{
    if (m_pid <= 0)
        return;
    release();
    if (::umount2(m_mountPoint.c_str(), MNT_DETACH) != 0)
        runQuiet("fusermount3", {"-u", "-z", m_mountPoint.c_str()});
    ::kill(m_pid, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (::waitpid(m_pid, nullptr, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    for (Slot& s : g_slots)
        if (s.pid.load() == m_pid)
            s.pid = 0;
    m_pid = -1;
    if (m_ackFd >= 0)
        ::close(m_ackFd);
    m_ackFd = -1;
}
