#pragma once
// An open folder descriptor shared by the walk jobs that open their folders through it;
// it closes when the last of them lets go, so a depth-first walk holds few at a time.
// A negative descriptor (AT_FDCWD, the working directory) is never closed.

#include "fs/sys_calls.h"

#include <cerrno>
#include <dirent.h>
#include <vector>

class DirFd {
public:
    explicit DirFd(int fd)
        : m_fd(fd)
    {
    }
    ~DirFd()
    {
        if (m_fd >= 0)
            sysClose(m_fd);
    }
    DirFd(const DirFd&) = delete;
    DirFd& operator=(const DirFd&) = delete;
    int fd() const { return m_fd; }

private:
    const int m_fd;
};

// Hands each entry of the open folder `fd` but "." and ".." to each(name, d_type), in
// directory order, reading through `buffer` (64 KiB is plenty). Returns 0, or the errno
// of a failed read (the entries before it have been handed out).
template <typename Each>
int dirForEachEntry(int fd, std::vector<char>& buffer, Each&& each)
{
    for (;;) {
        const ssize_t n = sysCalls().getdents64(fd, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        if (n == 0)
            return 0;
        for (ssize_t offset = 0; offset < n;) {
            const auto* entry = reinterpret_cast<const struct dirent64*>(buffer.data() + offset);
            offset += entry->d_reclen;
            const char* name = entry->d_name;
            if (!(name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))))
                each(name, entry->d_type);
        }
    }
}
