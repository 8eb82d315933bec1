#pragma once
// The helper process behind the mount watchdog (fs/mount_watchdog.h): forked once per
// guarded mount, it performs one raw system call per request and sends the answer back
// over a socket. Forked from a threaded program, it touches nothing but system calls
// (no allocation, no locks, no C library state), closes every inherited descriptor,
// and dies with this process unless it is stuck in the kernel, where only its own
// call waits.

#include <chrono>
#include <climits>
#include <cstdint>
#include <string_view>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>

enum class MountProbeOp : uint32_t { Stat, Lstat, Statfs, Readlink };

struct MountProbeRequest {
    MountProbeOp op = MountProbeOp::Stat;
    char path[PATH_MAX] = {};
};

struct MountProbeReply {
    int64_t rc = -1; // the call's result (Readlink: the length of text)
    int32_t err = 0; // errno when rc < 0
    struct stat st = {};
    struct statfs fs = {};
    char text[PATH_MAX] = {};
};

enum class MountProbeResult {
    Answered,
    Late,   // no answer by the deadline: the call is still out
    Broken, // the helper is gone
};

// False when `path` does not fit (no system call would take it either).
bool mountProbeRequestFill(MountProbeRequest& request, MountProbeOp op, std::string_view path);

// Performs the request on the calling thread.
MountProbeReply mountProbeServe(const MountProbeRequest& request);

// Tests only: what the helper does with a request instead of the system call (set it
// before the first helper is forked; helpers keep what they were forked with).
using MountProbeServeFn = MountProbeReply (*)(const MountProbeRequest& request);
void mountProbeSetServeForTest(MountProbeServeFn serve);

// Forks a helper; `fd` is this side of its socket. False when no process can be made.
bool mountProbeSpawn(pid_t& pid, int& fd);

// Sends the request and waits for the answer until `deadline`.
MountProbeResult mountProbeExchange(int fd, const MountProbeRequest& request, MountProbeReply& reply,
                                    std::chrono::steady_clock::time_point deadline);

// Reads an answer that is ready (a late one); false when the helper is gone.
bool mountProbeReceive(int fd, MountProbeReply& reply);
