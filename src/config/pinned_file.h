#pragma once
// The favourites file: named sections of pinned folders, each with an optional hue.
// Parsing and formatting are pure; every edit reads the file afresh, changes it and
// writes it whole (no cache), keeping the user's leading comment block.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct PinnedSec {
    std::string title;              // identity in every edit: exact, case-sensitive
    std::vector<std::string> paths; // absolute or "~/..."; display order
    std::optional<double> color;    // hue 0...1; absent: assigned from the palette
    bool operator==(const PinnedSec&) const = default;
};

struct PinnedFile {
    std::string header; // the text before the first section, ending in "\n"
    std::vector<PinnedSec> secs;
    bool operator==(const PinnedFile&) const = default;
};

// The header of a file that could not be read.
inline constexpr std::string_view kPinnedDefaultHeader = "# Brondel favorites \u2014 edit freely.\n";

// Reads a file's text. Lines before the first "[[section]]" form the header.
PinnedFile pinnedParse(std::string_view text);

// Whether rewriting the file from what pinnedParse made of `text` loses something of a
// section: an unclosed or second title, a colour that is not a number, an unpaired quote
// or stray text on a path line (a mistyped "[[section]" line).
bool pinnedLossy(std::string_view text);

// The whole file in its fixed layout.
std::string pinnedFormat(const std::string& header, const std::vector<PinnedSec>& secs);

// Reads pinnedFilePath(): the default header and no sections when it cannot be read.
PinnedFile pinnedRead();

// Writes the whole file. Errors are absorbed; the result only tells tests.
bool pinnedWrite(const std::string& header, const std::vector<PinnedSec>& secs);

// The edits. `path` is absolute; stored entries match it after tilde expansion. Those
// returning bool say whether they changed (and wrote) the file.

// Pins `path` at the end of the first section titled `section`, creating that section
// at the end of the file when there is none. False when the folder is already pinned
// anywhere in the file, or when its path (or the title) holds a double quote or a line
// break, which the file cannot store (a notice says so).
bool pinnedAdd(const std::string& path, const std::string& section);
// Unpins every entry of `path`. An emptied section stays in the file.
bool pinnedRemove(const std::string& path);
// Moves the path's first entry by `by` places within its section.
void pinnedShift(const std::string& path, int64_t by);
// The title of the first section holding `path`.
std::optional<std::string> pinnedSectionOf(const std::string& path);
// The non-empty titles in file order, with "Favorites" in front when it is missing.
std::vector<std::string> pinnedSectionTitles();
// Appends an empty section; false when the title is taken.
bool pinnedAddSection(const std::string& title);
// Renames the first section titled `from`, or merges its paths into the end of another
// section already titled `to`. An empty `to` changes nothing.
void pinnedRenameSection(const std::string& from, const std::string& to);
// Moves the first section titled `title` by `by` places.
void pinnedShiftSection(const std::string& title, int64_t by);
// Drops the first section titled `title` with its entries.
bool pinnedRemoveSection(const std::string& title);
// Sets (or with no hue, clears) the colour of the first section titled `title`.
void pinnedSetColor(const std::string& title, std::optional<double> hue);
