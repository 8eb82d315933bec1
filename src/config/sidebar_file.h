#pragma once
// The sidebar file: the title and folders of the sidebar's top section. Parsing and
// formatting are pure; every edit reads the file afresh and rewrites it whole.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct SidebarFile {
    std::string title = "Favorites";
    std::vector<std::string> paths; // absolute or "~/..."; display order
    bool operator==(const SidebarFile&) const = default;
};

// What a missing file is created with.
SidebarFile sidebarDefaults();

// Title line, comments and paths: every quoted string on any other line is a path.
SidebarFile sidebarParse(std::string_view text);

// Whether rewriting the file from what sidebarParse made of `text` loses something: an
// unclosed or second title, an unpaired quote or stray text on a path line.
bool sidebarLossy(std::string_view text);

// The whole file in its fixed layout.
std::string sidebarFormat(const std::string& title, const std::vector<std::string>& paths);

// Reads sidebarFilePath(), first writing the defaults when no file exists there. An
// unreadable file gives the title "Favorites" and no paths.
SidebarFile sidebarRead();

// Writes the whole file. Errors are absorbed; the result only tells tests.
bool sidebarWrite(const std::string& title, const std::vector<std::string>& paths);

// The edits. `path` is absolute; stored entries match it after tilde expansion.
// Appends `path` ("~"-abbreviated inside the home folder); false when already there, or
// when the path holds a double quote or a line break (refused with a notice).
bool sidebarAdd(const std::string& path);
// Removes every entry of `path`; false when there was none.
bool sidebarRemove(const std::string& path);
// Swaps the path's first entry with the one `by` places away, if there is one.
void sidebarShift(const std::string& path, int64_t by);
// Replaces the section's title.
void sidebarRename(const std::string& title);
