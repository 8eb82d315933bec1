#pragma once
// Mounted drives: the user-visible volume list, the drive-space look-up of a volume's
// root folder, and the Computer root that lists Home and the drives.

#include "fs/dir_node.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What views and commands show for a drive that does not answer.
inline constexpr const char* kNotRespondingText = "not responding";

struct Volume {
    std::string name;
    std::string path;
    int64_t totalBytes = 0;
    int64_t freeBytes = 0;
    // False when the drive did not answer in time (a dead network share, a hung FUSE
    // daemon): the capacity is then unknown (both 0) and views show "not responding".
    bool responding = true;

    int64_t usedBytes() const { return totalBytes - freeBytes; }
    bool operator==(const Volume&) const = default;
};

// The volume whose root folder is exactly `path` (symbolic links resolved), with its
// capacity; nothing for any other path. Cached for 5 seconds per path. Every call on
// the drive goes through the mount watchdog: a drive that does not answer gives a
// Volume with responding false at once (never cached, so it returns when it answers),
// and a path that cannot be resolved because its drive hangs gives nothing.
std::optional<Volume> driveSpace(const std::string& path);

// The uncached reading behind driveSpace.
std::optional<Volume> driveSpaceRead(const std::string& path);
