#include "fs/folder_notify_linux.h"

#include "fs/sys_calls.h"

#include <cerrno>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Up to this own size a folder's watch also follows changes inside its entries: some
// 30,000 entries on ext4, whose marking costs the kernel about a millisecond.
constexpr int64_t kEntryChangesUpTo = 1 << 20;

} // namespace

uint32_t folderNotifyMask(int64_t folderBytes)
{
    uint32_t mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    if (folderBytes <= kEntryChangesUpTo)
        mask |= IN_ATTRIB | IN_CLOSE_WRITE;
    return mask;
}

int folderNotifyOpen(const std::string& path)
{
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        return -1;
    const int fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0)
        return -1;
    if (::inotify_add_watch(fd, path.c_str(), folderNotifyMask(int64_t(st.st_size))) < 0) {
        sysClose(fd);
        return -1;
    }
    return fd;
}

bool folderNotifyDrain(int fd)
{
    // Whatever the notices say, the folder is read again: they are only counted.
    alignas(inotify_event) char buffer[16 * 1024];
    bool any = false;
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0) {
            any = true;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        return any; // EAGAIN: drained
    }
}
