#pragma once
// The metadata of one path as the `info` command shows it, read independently of the
// scanner.

#include <cstdint>
#include <optional>
#include <string>

struct FileInfo {
    std::string path;                // exactly as given to gather()
    std::string name;                // last component of the path
    std::string kind = "unknown";    // MIME type name, e.g. inode/directory, text/plain
    int64_t size = 0;                // bytes of a regular file (final link followed); else 0
    std::optional<int64_t> created;  // birth time, when the file system records one
    std::optional<int64_t> modified; // content modification time
    std::string permissions = "0";   // mode bits & 07777 of the item itself, in octal

    // Never fails: whatever cannot be read keeps the defaults above. A relative path is
    // taken relative to the current working directory.
    static FileInfo gather(const std::string& path);
};

// `mode & 07777` in octal digits without leading zeros ("644", "1777", "0").
std::string fileInfoOctal(unsigned mode);
