#pragma once
// The folder sort shared by every listing.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <cstdint>
#include <string_view>
#include <vector>

enum class SortPlace { Folder, ComputerRoot };

// What the sort reads of each entry, column by column, so that DirNodes and the compact
// store's records sort by one piece of code. Only the columns the sort uses need to be
// filled (sortColumnsUsed).
struct SortColumns {
    std::vector<std::string_view> names;
    std::vector<uint8_t> dirs;
    std::vector<int64_t> sizes;
    std::vector<int64_t> dates;          // kNoDate for an entry without one
    std::vector<std::string_view> kinds;
    static constexpr int64_t kNoDate = INT64_MIN;
};

struct SortColumnsUsed {
    bool sizes = false, dates = false, kinds = false;
};
SortColumnsUsed sortColumnsUsed(SortPlace place, const BrondelSettings& settings);

// The display order of the entries as indexes into the columns (stable). At the
// Computer root: size alone, largest first. Elsewhere: folders first if asked, then the
// settings' key with ties broken by name ascending, then the direction. Collation keys
// of a large folder are computed once per name, on two threads.
std::vector<uint32_t> sortOrder(const SortColumns& columns, SortPlace place, const BrondelSettings& settings);

// Returns the nodes in display order (sortOrder over the nodes' fields).
std::vector<DirNodePtr> sortNodes(std::vector<DirNodePtr> nodes, SortPlace place, const BrondelSettings& settings);

// The place a folder's own children are sorted for: ComputerRoot exactly for "/".
inline SortPlace sortPlaceOf(const std::string& folderPath)
{
    return folderPath == "/" ? SortPlace::ComputerRoot : SortPlace::Folder;
}
