#pragma once
// The folder sort shared by every listing.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <vector>

enum class SortPlace { Folder, ComputerRoot };

// Returns the nodes in display order (stable). At the Computer root: size alone,
// largest first. Elsewhere: folders first if asked, then the settings' key with ties
// broken by name ascending, then the direction.
std::vector<DirNodePtr> sortNodes(std::vector<DirNodePtr> nodes, SortPlace place, const BrondelSettings& settings);

// The place a folder's own children are sorted for: ComputerRoot exactly for "/".
inline SortPlace sortPlaceOf(const std::string& folderPath)
{
    return folderPath == "/" ? SortPlace::ComputerRoot : SortPlace::Folder;
}
