#include "fs/walk_gate.h"

#include "fs/mount_watchdog.h"

#include <algorithm>
#include <array>
#include <sys/sysmacros.h>

bool walkGateKernelFsType(std::string_view fsType)
{
    static constexpr std::array<std::string_view, 15> kTypes = {
        "proc",   "sysfs",     "cgroup", "cgroup2", "debugfs",   "tracefs", "securityfs", "pstore",
        "bpf",    "configfs",  "devpts", "mqueue",  "hugetlbfs", "fusectl", "binfmt_misc",
    };
    return std::find(kTypes.begin(), kTypes.end(), fsType) != kTypes.end();
}

WalkGate::WalkGate(const std::vector<MountRecord>& mounts, dev_t startDevice)
    : m_startDevice(startDevice)
{
    for (const MountRecord& mount : mounts)
        if (walkGateKernelFsType(mount.fsType))
            m_kernelDevices.push_back(mount.device);
    std::sort(m_kernelDevices.begin(), m_kernelDevices.end());
}

bool WalkGate::isKernelFs(dev_t device) const
{
    return std::binary_search(m_kernelDevices.begin(), m_kernelDevices.end(), device);
}

bool walkGateOnPath(const WalkAncestor* path, dev_t device, ino_t inode)
{
    for (; path; path = path->up.get())
        if (path->inode == inode && path->device == device)
            return true;
    return false;
}

bool WalkGate::mayEnter(dev_t device, ino_t inode, WalkStep step, const WalkAncestor* path) const
{
    if (walkGateOnPath(path, device, inode) || mountWatchdogIsStuck(device))
        return false;
    if (!isKernelFs(m_startDevice))
        return !isKernelFs(device);
    // Started inside a kernel file system: its real folders reach each of its entries
    // once, so only those are walked; its links lead to the same entries again and again.
    return device == m_startDevice && step == WalkStep::Folder;
}
