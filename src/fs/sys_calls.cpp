#include "fs/sys_calls.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <stdio.h>
#include <sys/xattr.h>

namespace {

int realOpen(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int realOpenat(int dirfd, const char* path, int flags, mode_t mode) { return ::openat(dirfd, path, flags, mode); }
int realFstatat(int dirfd, const char* path, struct stat* st, int flags) { return ::fstatat(dirfd, path, st, flags); }
ssize_t realGetdents64(int fd, void* buf, size_t count) { return ::getdents64(fd, buf, count); }
ssize_t realCopyFileRange(int inFd, off64_t* inOffset, int outFd, off64_t* outOffset, size_t length, unsigned flags)
{
    return ::copy_file_range(inFd, inOffset, outFd, outOffset, length, flags);
}
int realRenameat2(int fromDir, const char* from, int toDir, const char* to, unsigned flags)
{
    return ::renameat2(fromDir, from, toDir, to, flags);
}
int realFchmodat(int dirfd, const char* path, mode_t mode, int flags) { return ::fchmodat(dirfd, path, mode, flags); }
int realUtimensat(int dirfd, const char* path, const struct timespec times[2], int flags)
{
    return ::utimensat(dirfd, path, times, flags);
}
ssize_t realFgetxattr(int fd, const char* name, void* value, size_t size) { return ::fgetxattr(fd, name, value, size); }
int realFsetxattr(int fd, const char* name, const void* value, size_t size, int flags)
{
    return ::fsetxattr(fd, name, value, size, flags);
}

const SysCalls kReal = {
    realOpen, realOpenat, ::close, ::read, ::write, ::fsync, ::rename, ::link, ::unlink,
    ::mkdir, ::stat, ::lstat, realFstatat, ::statx, ::readlink, ::fchmod, ::fstat, realGetdents64,
    realCopyFileRange, realRenameat2, realFchmodat, realUtimensat, ::fchown, ::flistxattr, realFgetxattr,
    realFsetxattr, ::symlink, ::fdatasync, ::rmdir, ::posix_fadvise,
    ::chmod, ::chown, ::unlinkat,
};

std::atomic<const SysCalls*> g_current{&kReal};

} // namespace

const SysCalls& sysCalls() { return *g_current.load(std::memory_order_acquire); }
const SysCalls& sysCallsReal() { return kReal; }

SysCallsOverride::SysCallsOverride(const SysCalls& calls)
    : m_previous(g_current.exchange(&calls))
{
}

SysCallsOverride::~SysCallsOverride() { g_current.store(m_previous); }

int sysOpen(const char* path, int flags, mode_t mode)
{
    int fd;
    do
        fd = sysCalls().open(path, flags | O_CLOEXEC, mode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

ssize_t sysReadAll(int fd, void* buf, size_t count)
{
    size_t done = 0;
    while (done < count) {
        ssize_t n = sysCalls().read(fd, static_cast<char*>(buf) + done, count - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        done += size_t(n);
    }
    return ssize_t(done);
}

bool sysWriteAll(int fd, const void* buf, size_t count)
{
    size_t done = 0;
    while (done < count) {
        ssize_t n = sysCalls().write(fd, static_cast<const char*>(buf) + done, count - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += size_t(n);
    }
    return true;
}

int sysClose(int fd)
{
    // close() must not be retried on EINTR on Linux: the descriptor is gone either way.
    return sysCalls().close(fd);
}
