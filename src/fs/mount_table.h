#pragma once
// The kernel's table of mounts. The parser is pure (text in, records out); the readers
// that ask the running system live in mount_table_linux.cpp, so another platform swaps
// only that file.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

// One mount, with every field's octal escapes ("\040" for a space) decoded to bytes.
struct MountRecord {
    std::string mountPoint; // absolute
    std::string fsType;     // "ext4", "fuse.sshfs", ...
    std::string source;     // "/dev/sdb1", "server:/export", "none", ...
    std::string options;    // the per-mount options, e.g. "rw,nosuid,relatime"
    dev_t device = 0;       // the file system's device number (st_dev of its files)

    bool operator==(const MountRecord&) const = default;
};

struct MountCapacity {
    int64_t totalBytes = 0;
    int64_t freeBytes = 0; // available to unprivileged users
};

// Parses /proc/<pid>/mountinfo text, in table order. Lines that do not have the shape
// "id parent major:minor root mount-point options [optional...] - type source [super]"
// are skipped.
std::vector<MountRecord> mountTableParse(std::string_view text);

// The mounts of this process's namespace (empty when the table cannot be read).
std::vector<MountRecord> mountTableRead();

// The capacity of the file system holding `path` (statvfs), or nothing on failure. May
// block for as long as the file system does (a dead network mount): call it where a
// hang costs nothing.
std::optional<MountCapacity> mountCapacityRead(const std::string& path);
