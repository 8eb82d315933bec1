#include "fs/mount_probe_helper.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

MountProbeServeFn g_serveForTest = nullptr; // read by the helper after the fork only

// Raw system calls only: the helper is a fork of a threaded process, where another
// thread may have held any C library lock at the moment of the fork.
long rawCall(long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0)
{
    return ::syscall(number, a, b, c, d, e, f);
}

[[noreturn]] void helperMain(int fd, pid_t parent)
{
    rawCall(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL);
    if (rawCall(SYS_getppid) != parent)
        rawCall(SYS_exit_group, 0);
    // Keep only the socket: a stuck helper must not hold the caller's output pipe open
    // (a shell reading it would wait for the end of the stream).
    const int null = int(rawCall(SYS_openat, AT_FDCWD, long("/dev/null"), O_RDWR));
    for (int std = 0; std < 3; ++std)
        if (null >= 0 && null != std)
            rawCall(SYS_dup3, null, std, 0);
    const int keepLow = fd < 3 ? 3 : fd;
    if (rawCall(SYS_close_range, 3, keepLow - 1, 0) != 0 || rawCall(SYS_close_range, keepLow + 1, ~0U, 0) != 0)
        for (int other = 3; other < 4096; ++other)
            if (other != fd)
                rawCall(SYS_close, other);
    static MountProbeRequest request; // static: no large stack frames in the helper
    static MountProbeReply reply;
    for (;;) {
        const long n = rawCall(SYS_recvfrom, fd, long(&request), sizeof request, 0, 0, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n != long(sizeof request))
            rawCall(SYS_exit_group, 0);
        reply = g_serveForTest ? g_serveForTest(request) : mountProbeServe(request);
        rawCall(SYS_sendto, fd, long(&reply), sizeof reply, MSG_NOSIGNAL, 0, 0);
    }
}

} // namespace

void mountProbeSetServeForTest(MountProbeServeFn serve) { g_serveForTest = serve; }

bool mountProbeRequestFill(MountProbeRequest& request, MountProbeOp op, std::string_view path)
{
    if (path.empty() || path.size() >= sizeof request.path || path.find('\0') != std::string_view::npos)
        return false;
    request.op = op;
    std::memcpy(request.path, path.data(), path.size());
    request.path[path.size()] = '\0';
    return true;
}

MountProbeReply mountProbeServe(const MountProbeRequest& request)
{
    MountProbeReply reply;
    const long path = long(request.path);
    do {
        switch (request.op) {
        case MountProbeOp::Stat:
            reply.rc = rawCall(SYS_newfstatat, AT_FDCWD, path, long(&reply.st), 0);
            break;
        case MountProbeOp::Lstat:
            reply.rc = rawCall(SYS_newfstatat, AT_FDCWD, path, long(&reply.st), AT_SYMLINK_NOFOLLOW);
            break;
        case MountProbeOp::Statfs:
            reply.rc = rawCall(SYS_statfs, path, long(&reply.fs));
            break;
        case MountProbeOp::Readlink:
            reply.rc = rawCall(SYS_readlinkat, AT_FDCWD, path, long(reply.text), sizeof reply.text - 1);
            break;
        }
    } while (reply.rc < 0 && errno == EINTR);
    reply.err = reply.rc < 0 ? errno : 0;
    return reply;
}

bool mountProbeSpawn(pid_t& pid, int& fd)
{
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) != 0)
        return false;
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        helperMain(pair[1], parent);
    ::close(pair[1]);
    if (child < 0) {
        ::close(pair[0]);
        return false;
    }
    pid = child;
    fd = pair[0];
    return true;
}

bool mountProbeReceive(int fd, MountProbeReply& reply)
{
    for (;;) {
        const ssize_t n = ::recv(fd, &reply, sizeof reply, MSG_DONTWAIT);
        if (n < 0 && errno == EINTR)
            continue;
        return n == ssize_t(sizeof reply);
    }
}

MountProbeResult mountProbeExchange(int fd, const MountProbeRequest& request, MountProbeReply& reply,
                                    std::chrono::steady_clock::time_point deadline)
{
    ssize_t sent;
    do
        sent = ::send(fd, &request, sizeof request, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    if (sent != ssize_t(sizeof request))
        return MountProbeResult::Broken;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd pfd{fd, POLLIN, 0};
        const int ready = ::poll(&pfd, 1, int(std::max<int64_t>(0, left.count())));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0)
            return MountProbeResult::Late;
        if (ready < 0)
            return MountProbeResult::Broken;
        return mountProbeReceive(fd, reply) ? MountProbeResult::Answered : MountProbeResult::Broken;
    }
}
