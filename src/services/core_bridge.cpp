#include "services/core_bridge.h"

#include "config/pinned_nodes.h"
#include "config/recents.h"
#include "config/sidebar_file.h"
#include "fs/computer_root.h"
#include "fs/mount_watchdog.h"
#include "fs/volume_list.h"
#include "sizes/folder_sizes.h"

DirNodePtr bridgeComputerRoot()
{
    return ComputerRoot::build();
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
    std::vector<BridgeDrive> drives;
    for (const auto& volume : VolumeList::mounted())
        drives.push_back({volume.name, volume.path, volume.responding});
    return drives;
}

bool bridgeDriveStuck(const std::string& mountPoint)
{
    return mountWatchdogIsStuckAt(mountPoint);
}

BridgeSpace bridgeFreeSpace(const std::string& path)
{
    const MountAnswer<MountCapacity> answer = mountWatchdogCapacity(path);
    if (!answer.responding())
        return {std::nullopt, false};
    return {answer.value ? std::optional<int64_t>(answer.value->freeBytes) : std::nullopt, true};
}

std::optional<int64_t> bridgeFolderSize(const std::string& path)
{
    return FolderSizes::shared().size(path);
}

BridgeEntry bridgeEntryAt(const std::string& path)
{
    const MountAnswer<struct stat> answer = mountWatchdogStat(path);
    if (!answer.responding())
        return BridgeEntry::NotResponding;
    if (!answer.value)
        return BridgeEntry::Missing;
    return S_ISDIR(answer.value->st_mode) ? BridgeEntry::Folder : BridgeEntry::NotFolder;
}
