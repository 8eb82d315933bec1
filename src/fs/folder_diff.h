#pragma once
// What changed between two reads of one folder, worked out off the UI thread so that a
// shown folder can follow the disk without the view looking at every row.

#include "fs/node_store.h"

#include <cstdint>
#include <vector>

struct FolderDiff {
    // For each entry of the old read, its place in the new one (-1: gone).
    std::vector<int32_t> oldToNew;
    uint32_t added = 0;
    uint32_t removed = 0;
    // Whether a view would show anything different: entries came or went, moved in the
    // order, or kept their name and changed size, date or kind.
    bool changed = false;
};

// Matches the entries of `before` and `after` (children of two reads of a folder) by name.
FolderDiff folderDiff(const NodeRecord& before, const NodeRecord& after);
