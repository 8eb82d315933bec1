#pragma once
// Bringing an item back from the Trash: where its .trashinfo record says it came from.

#include <optional>
#include <string>
#include <string_view>

// The decoded Path= value of a .trashinfo text (its [Trash Info] group), or nothing when
// the text has none or it is not properly encoded.
std::optional<std::string> trashInfoOriginal(std::string_view text);

// An item inside a trash's files/ folder, with its record and original place.
struct TrashEntry {
    std::string infoPath;  // <trash>/info/<name>.trashinfo
    std::string original;  // absolute
};

// Reads the record of `trashedPath` (<trash>/files/<name>). A relative Path= is taken
// relative to the volume the trash belongs to ($topdir/.Trash/$uid or
// $topdir/.Trash-$uid). 0 or an errno (ENOENT: no record; EINVAL: not in a trash, or an
// unreadable record).
int trashEntryOf(const std::string& trashedPath, TrashEntry& entry);
