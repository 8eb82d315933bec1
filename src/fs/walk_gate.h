#pragma once
// The one place that decides whether a deep walk (the search) may go into a folder. Two
// things stop it: kernel file systems, whose folders are views of the running system
// rather than files (/proc/<pid>/root leads back to "/", and the links of /sys join
// every device to its driver, bus and class, so following them multiplies the tree
// without end), and whatever else is known about a device before it is touched.
// The type of each device comes from the mount table, read once per walk: asking the
// mount itself (statfs) could hang on a dead one.

#include "fs/mount_table.h"

#include <memory>
#include <string_view>
#include <sys/types.h>
#include <vector>

// A folder on the walk's current path, linked to the one above it (the first folder has
// none). Shared by the jobs below it, so a path costs one record per folder.
struct WalkAncestor {
    dev_t device;
    ino_t inode;
    std::shared_ptr<const WalkAncestor> up;
};

// How the walk reaches a folder: as a folder of its parent, or through a link to a folder.
enum class WalkStep { Folder, Link };

class WalkGate {
public:
    // `mounts` is the mount table; `startDevice` the device of the walk's first folder.
    WalkGate(const std::vector<MountRecord>& mounts, dev_t startDevice);

    // Whether the walk may read the folder (device, inode), reached by `step` from the
    // folder `path` (the innermost of the current path). A folder that is already on the
    // path is never entered again (a link to "." or to a parent, a bind mount of a parent),
    // as `find -L` decides. Below its first folder a walk never enters a kernel file
    // system; one that starts inside such a file system stays on that mount and does not
    // follow its links to folders.
    bool mayEnter(dev_t device, ino_t inode, WalkStep step, const WalkAncestor* path) const;

    bool isKernelFs(dev_t device) const;

private:
    std::vector<dev_t> m_kernelDevices; // sorted
    dev_t m_startDevice;
};

// Whether a file-system type is one of the kernel's pseudo file systems (proc, sysfs,
// cgroup, ...), never worth a search.
bool walkGateKernelFsType(std::string_view fsType);

// Whether (device, inode) is `path` or one of the folders above it.
bool walkGateOnPath(const WalkAncestor* path, dev_t device, ino_t inode);
