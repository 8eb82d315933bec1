// What Linux says about mounts: the mount table of this process and a file system's
// capacity. The rest of the volume code only sees the records and numbers.

#include "fs/file_io.h"
#include "fs/mount_table.h"

#include <cerrno>
#include <sys/statvfs.h>

std::vector<MountRecord> mountTableRead()
{
    // mountinfo rather than /proc/mounts: it is per process (our namespace) and marks
    // its fields unambiguously with the " - " separator.
    const std::optional<std::string> text = fileReadAll("/proc/self/mountinfo");
    return text ? mountTableParse(*text) : std::vector<MountRecord>();
}

std::optional<MountCapacity> mountCapacityRead(const std::string& path)
{
    struct statvfs vfs;
    int rc;
    do
        rc = ::statvfs(path.c_str(), &vfs);
    while (rc != 0 && errno == EINTR);
    if (rc != 0)
        return std::nullopt;
    // f_frsize is the unit of the block counts (f_bsize is only the preferred I/O size).
    const int64_t unit = int64_t(vfs.f_frsize ? vfs.f_frsize : vfs.f_bsize);
    return MountCapacity{int64_t(vfs.f_blocks) * unit, int64_t(vfs.f_bavail) * unit};
}
