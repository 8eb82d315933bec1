#include "fs/walk_gate.h"

#include <gtest/gtest.h>

#include <sys/sysmacros.h>

namespace {

// A machine's mounts: the root, a data disk, and the kernel's own file systems.
const char* const kMounts =
    "21 1 254:1 / / rw,relatime - ext4 /dev/vda1 rw\n"
    "22 21 0:21 / /proc rw,nosuid - proc proc rw\n"
    "23 21 0:20 / /sys rw,nosuid - sysfs sysfs rw\n"
    "24 23 0:26 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n"
    "25 23 0:7 / /sys/kernel/debug rw - debugfs debugfs rw\n"
    "26 21 0:5 / /dev rw - devtmpfs udev rw\n"
    "27 26 0:24 / /dev/pts rw - devpts devpts rw\n"
    "28 21 0:25 / /run rw - tmpfs tmpfs rw\n"
    "29 21 8:17 / /mnt/data rw - xfs /dev/sdb1 rw\n"
    "30 22 0:50 / /proc/sys/fs/binfmt_misc rw - binfmt_misc binfmt_misc rw\n";

const dev_t kRoot = makedev(254, 1), kProc = makedev(0, 21), kSys = makedev(0, 20), kCgroup = makedev(0, 26),
            kDebug = makedev(0, 7), kDev = makedev(0, 5), kPts = makedev(0, 24), kRun = makedev(0, 25),
            kData = makedev(8, 17), kBinfmt = makedev(0, 50), kUnknown = makedev(0, 99);

} // namespace

TEST(WalkGate, KernelFileSystemsByDevice)
{
    const std::vector<MountRecord> mounts = mountTableParse(kMounts);
    struct Case {
        const char* what;
        dev_t start;
        dev_t device;
        WalkStep step;
        bool enters;
    };
    const Case cases[] = {
        {"a folder on the same disk", kRoot, kRoot, WalkStep::Folder, true},
        {"a link on the same disk", kRoot, kRoot, WalkStep::Link, true},
        {"another disk", kRoot, kData, WalkStep::Folder, true},
        {"tmpfs and devtmpfs are ordinary", kRoot, kRun, WalkStep::Folder, true},
        {"devtmpfs", kRoot, kDev, WalkStep::Folder, true},
        {"a device missing from the table", kRoot, kUnknown, WalkStep::Folder, true},
        {"/proc below the start", kRoot, kProc, WalkStep::Folder, false},
        {"/sys below the start", kRoot, kSys, WalkStep::Folder, false},
        {"a link into /proc (/dev/fd)", kRoot, kProc, WalkStep::Link, false},
        {"devpts", kDev, kPts, WalkStep::Folder, false},
        {"cgroup2", kRoot, kCgroup, WalkStep::Folder, false},
        {"debugfs", kRoot, kDebug, WalkStep::Folder, false},
        {"binfmt_misc", kRoot, kBinfmt, WalkStep::Folder, false},
        {"inside /proc: its own folders", kProc, kProc, WalkStep::Folder, true},
        {"inside /proc: its links (/proc/self)", kProc, kProc, WalkStep::Link, false},
        {"inside /proc: a link off the mount (/proc/1/root)", kProc, kRoot, WalkStep::Link, false},
        {"inside /proc: a mount below it", kProc, kBinfmt, WalkStep::Folder, false},
        {"inside /sys: its own folders", kSys, kSys, WalkStep::Folder, true},
        {"inside /sys: a link to another of its folders", kSys, kSys, WalkStep::Link, false},
        {"inside /sys: cgroup2 below it", kSys, kCgroup, WalkStep::Folder, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(WalkGate(mounts, c.start).mayEnter(c.device, 1000, c.step, nullptr), c.enters) << c.what;

    EXPECT_TRUE(walkGateKernelFsType("tracefs"));
    EXPECT_FALSE(walkGateKernelFsType("fuse.sshfs"));
    EXPECT_TRUE(WalkGate({}, kRoot).mayEnter(kProc, 1, WalkStep::Folder, nullptr)); // no table: nothing is known
}

TEST(WalkGate, NeverEntersAFolderOnItsOwnPath)
{
    const WalkGate gate(mountTableParse(kMounts), kRoot);
    auto top = std::make_shared<const WalkAncestor>(WalkAncestor{kRoot, 2, nullptr});
    auto mid = std::make_shared<const WalkAncestor>(WalkAncestor{kRoot, 30, top});
    auto here = std::make_shared<const WalkAncestor>(WalkAncestor{kRoot, 400, mid});
    EXPECT_FALSE(gate.mayEnter(kRoot, 400, WalkStep::Link, here.get()));   // a link to "."
    EXPECT_FALSE(gate.mayEnter(kRoot, 30, WalkStep::Link, here.get()));    // to the parent
    EXPECT_FALSE(gate.mayEnter(kRoot, 2, WalkStep::Folder, here.get()));   // a bind mount of the top
    EXPECT_TRUE(gate.mayEnter(kRoot, 401, WalkStep::Link, here.get()));    // a sibling
    EXPECT_TRUE(gate.mayEnter(kData, 400, WalkStep::Folder, here.get()));  // same inode, other disk
}
