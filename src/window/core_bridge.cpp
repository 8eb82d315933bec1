#include "window/core_bridge.h"

#include "config/pinned_nodes.h"
#include "config/recents.h"
#include "config/sidebar_file.h"
#include "fs/computer_root.h"
#include "fs/file_io.h"
#include "fs/mount_watchdog.h"
#include "fs/paths.h"
#include "fs/volume_list.h"
#include "sizes/folder_sizes.h"

#include <algorithm>

namespace {

// Every user-visible drive with whether it answers. The volume list leaves out drives
// whose capacity probe did not answer in time; the watchdog is asked about those, and
// the ones it finds not responding are listed too (without figures), so that the user
// sees them and their badge.
std::vector<BridgeDrive> drivesRead(std::vector<Volume>* volumes)
{
    const std::vector<MountRecord> table = mountTableRead();
    const VolumeViewer viewer = VolumeViewer::current();
    std::vector<Volume> found = VolumeList::mounted(table, viewer, mountCapacityRead);
    const auto deadline = std::chrono::steady_clock::now() + kMountProbeDeadline;
    std::vector<BridgeDrive> drives;
    for (const Volume& volume : found)
        drives.push_back(
            {volume.name, volume.path, mountWatchdogCheck(volume.path, deadline) == MountState::Responding});
    for (const MountRecord& mount : VolumeList::visible(table, viewer)) {
        const bool listed = std::any_of(
            found.begin(), found.end(), [&](const Volume& v) { return v.path == mount.mountPoint; });
        if (listed || mountWatchdogCheck(mount.mountPoint, deadline) == MountState::Responding)
            continue;
        Volume silent;
        silent.name = pathLastComponent(mount.mountPoint);
        silent.path = mount.mountPoint;
        found.push_back(silent);
        drives.push_back({silent.name, silent.path, false});
    }
    std::sort(drives.begin(), drives.end(),
        [](const BridgeDrive& a, const BridgeDrive& b) { return a.name != b.name ? a.name < b.name : a.path < b.path; });
    std::sort(found.begin(), found.end(),
        [](const Volume& a, const Volume& b) { return a.name != b.name ? a.name < b.name : a.path < b.path; });
    if (volumes)
        *volumes = std::move(found);
    return drives;
}

} // namespace

DirNodePtr bridgeComputerRoot()
{
    std::vector<Volume> volumes;
    drivesRead(&volumes);
    return ComputerRoot::build(ComputerRoot::hostName(), homeDir(), volumes);
}

std::vector<DirNodePtr> bridgePinnedNodes(const BrondelSettings& settings)
{
    return pinnedNodes(settings);
}

void bridgeRecentsNote(const std::string& path, const BrondelSettings& settings)
{
    recentsNote(path, settings);
}

void bridgeSizesForget(const std::string& path)
{
    FolderSizes::shared().forget(path);
}

SidebarSection bridgeSidebarRead()
{
    SidebarFile file = sidebarRead();
    return sidebarSection(file.title, file.paths);
}

std::vector<BridgeDrive> bridgeDrives()
{
    return drivesRead(nullptr);
}

bool bridgeDriveStuck(const std::string& mountPoint)
{
    return mountWatchdogIsStuckAt(mountPoint);
}
