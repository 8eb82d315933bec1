#pragma once
// Mounted drives: the user-visible volume list, the drive-space look-up of a volume's
// root folder, and the Computer root that lists Home and the drives.

#include "fs/dir_node.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct Volume {
    std::string name;
    std::string path;
    int64_t totalBytes = 0;
    int64_t freeBytes = 0;

    int64_t usedBytes() const { return totalBytes - freeBytes; }
    bool operator==(const Volume&) const = default;
};

// The volume whose root folder is exactly `path` (symbolic links resolved), with its
// capacity; nothing for any other path. Cached for 5 seconds per path.
std::optional<Volume> driveSpace(const std::string& path);

// The uncached reading behind driveSpace.
std::optional<Volume> driveSpaceRead(const std::string& path);
