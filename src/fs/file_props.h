#pragma once
// What the Properties window shows of one item, read in one go off the UI thread, and
// the permission logic behind its editing: the text of a mode, the bits a box stands
// for, and who may change what. Changes go through the system-call seam.

#include "fs/file_info.h"
#include "fs/volume.h"

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct FileProps {
    FileInfo info;            // name, type, size, created, modified
    bool exists = false;
    bool isDir = false;       // the item or, for a link, what it leads to
    bool isLink = false;
    std::string linkTarget;   // a link's text
    unsigned mode = 0;        // permission bits (& 07777) of what the path leads to
    uid_t uid = 0;
    gid_t gid = 0;
    std::string owner;        // user name, or the number when it has none
    std::string group;        // group name, or the number
    std::optional<int64_t> accessed;
    std::optional<Volume> drive; // the capacity, when the path is a drive's root

    static FileProps read(const std::string& path);
};

enum class PermWho { Owner, Group, Others };
enum class PermBit { Read, Write, Execute };

// The one mode bit of `who` and `bit` (Owner Read is 0400).
unsigned permMask(PermWho who, PermBit bit);

// `mode` with that bit set or cleared; the other bits are kept.
unsigned permWith(unsigned mode, PermWho who, PermBit bit, bool on);

// "rwxr-x---" style, with the set-id bits as s/S and the sticky bit as t/T.
std::string permSymbolic(unsigned mode);

// What `who` may do, in words: "Read and write", "Read only", "Write only", "No access",
// followed by ", run" for a file or ", open" for a folder when the execute bit is set
// (a folder without it cannot be entered: ", cannot open" when it can be read).
std::string permAccessText(unsigned mode, PermWho who, bool isDir);

// One to four octal digits ("644", "1777"); nothing for anything else.
std::optional<unsigned> permParseOctal(std::string_view text);

// What the user `me` may change on an item owned by `owner`: the mode and the group
// (to one of their own groups) when they own it, everything as root. A link's own bits
// are not editable.
struct PermRights {
    bool mode = false;
    bool group = false;
    bool owner = false;
};
PermRights permRights(uid_t me, uid_t owner, bool isLink);

// The groups the current user belongs to (names, primary first), for the group choice.
std::vector<std::string> permUserGroups();

// Changes through the seam; 0 or the errno.
int permApplyMode(const std::string& path, unsigned mode);
// `owner` / `group` are names or numbers; empty keeps that part. EINVAL for an unknown
// name.
int permApplyOwner(const std::string& path, const std::string& owner, const std::string& group);
