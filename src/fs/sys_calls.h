#pragma once
// The seam between Brondel and the system calls that touch the disk. Production code
// calls through sysCalls(); a test swaps in its own table with SysCallsOverride to feed
// EINTR, EACCES, ENOSPC and the like. The retry helpers below absorb EINTR.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

struct SysCalls {
    int (*open)(const char* path, int flags, mode_t mode);
    int (*openat)(int dirfd, const char* path, int flags, mode_t mode);
    int (*close)(int fd);
    ssize_t (*read)(int fd, void* buf, size_t count);
    ssize_t (*write)(int fd, const void* buf, size_t count);
    int (*fsync)(int fd);
    int (*rename)(const char* from, const char* to);
    int (*link)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*mkdir)(const char* path, mode_t mode);
    int (*stat)(const char* path, struct stat* st);
    int (*lstat)(const char* path, struct stat* st);
    int (*fstatat)(int dirfd, const char* path, struct stat* st, int flags);
    int (*statx)(int dirfd, const char* path, int flags, unsigned mask, struct statx* st);
    ssize_t (*readlink)(const char* path, char* buf, size_t size);
    int (*fchmod)(int fd, mode_t mode);
    int (*fstat)(int fd, struct stat* st);
    // Reads directory entries of an open folder (struct dirent64 records); 0 at the end.
    ssize_t (*getdents64)(int fd, void* buf, size_t count);
    // What the file operations need beyond reading: copying, renaming without
    // replacing, keeping modes, times, owners and extended attributes.
    ssize_t (*copy_file_range)(int inFd, off64_t* inOffset, int outFd, off64_t* outOffset, size_t length,
                               unsigned flags);
    int (*renameat2)(int fromDir, const char* from, int toDir, const char* to, unsigned flags);
    int (*fchmodat)(int dirfd, const char* path, mode_t mode, int flags);
    int (*utimensat)(int dirfd, const char* path, const struct timespec times[2], int flags);
    int (*fchown)(int fd, uid_t owner, gid_t group);
    ssize_t (*flistxattr)(int fd, char* list, size_t size);
    ssize_t (*fgetxattr)(int fd, const char* name, void* value, size_t size);
    int (*fsetxattr)(int fd, const char* name, const void* value, size_t size, int flags);
    int (*symlink)(const char* target, const char* linkPath);
    int (*fdatasync)(int fd);
    int (*rmdir)(const char* path);
    int (*fadvise)(int fd, off_t offset, off_t length, int advice); // 0 or an error number, like posix_fadvise
    // Permission and ownership changes (the Properties window); both follow links.
    int (*chmod)(const char* path, mode_t mode);
    int (*chown)(const char* path, uid_t owner, gid_t group);
    // Removes the entry `path` of the open folder `dirfd` (AT_REMOVEDIR: an empty folder),
    // never following a link: what deleting for good walks through.
    int (*unlinkat)(int dirfd, const char* path, int flags);
};

// The table in force (the real calls unless a test overrides them).
const SysCalls& sysCalls();

// The real system calls.
const SysCalls& sysCallsReal();

// Installs `calls` for the lifetime of the object (tests only; not thread-safe against
// calls in flight).
class SysCallsOverride {
public:
    explicit SysCallsOverride(const SysCalls& calls);
    ~SysCallsOverride();
    SysCallsOverride(const SysCallsOverride&) = delete;
    SysCallsOverride& operator=(const SysCallsOverride&) = delete;

private:
    const SysCalls* m_previous;
};

// Wrappers that retry on EINTR.
int sysOpen(const char* path, int flags, mode_t mode = 0);
ssize_t sysReadAll(int fd, void* buf, size_t count);   // reads until count or EOF
bool sysWriteAll(int fd, const void* buf, size_t count); // writes everything or fails
int sysClose(int fd);
