#pragma once
// The few core services the window needs that other parts of the core provide: the
// Computer root, the favourites headers, the recent folders, the sidebar file and the
// folder-size cache. The window reaches them only through these functions, so each is
// one line to repoint. All but bridgeSizesForget (which only drops cached numbers) may
// touch the disk: they are called off the main thread.

#include "config/brondel_settings.h"
#include "config/sidebar_section.h"
#include "fs/dir_node.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The synthetic Computer node (path "/"): Home, then one child per mounted drive.
DirNodePtr bridgeComputerRoot();

// The favourites section headers (each carrying its entries), then the Recent header.
std::vector<DirNodePtr> bridgePinnedNodes(const BrondelSettings& settings);

// Notes a shown folder in the recent folders.
void bridgeRecentsNote(const std::string& path, const BrondelSettings& settings);

// Forgets cached folder sizes of `path` and everything below it.
void bridgeSizesForget(const std::string& path);

// The sidebar's top section: its title and the existing folders, named.
SidebarSection bridgeSidebarRead();

// The mounted user-visible drives as (name, mount path), each with whether it answered.
struct BridgeDrive {
    std::string name;
    std::string path;
    bool responding = true;
};
std::vector<BridgeDrive> bridgeDrives();

// Whether the drive mounted at `mountPoint` is remembered as not responding: a look-up,
// no system call (for the UI thread).
bool bridgeDriveStuck(const std::string& mountPoint);

// The free space of the drive holding `path`, asked through the mount watchdog: a drive
// that does not answer gives "not responding" within the watchdog's deadline.
struct BridgeSpace {
    std::optional<int64_t> freeBytes; // nothing when unknown
    bool responding = true;
};
BridgeSpace bridgeFreeSpace(const std::string& path);

// A folder's size from the size cache; nothing while unknown (a walk is then queued).
std::optional<int64_t> bridgeFolderSize(const std::string& path);

// What is at a path typed by the user, asked through the mount watchdog.
enum class BridgeEntry { Folder, NotFolder, Missing, NotResponding };
BridgeEntry bridgeEntryAt(const std::string& path);
