#pragma once
// Section colours: the user-editable palette of named hues and the automatic
// assignment of hues to favourites sections that carry none of their own.

#include "config/pinned_file.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct PaletteEntry {
    std::string name;
    double hue = 0; // 0 red ... 0.33 green ... 0.58 blue ... 1 red; not range-checked
    bool operator==(const PaletteEntry&) const = default;
};

using Palette = std::vector<PaletteEntry>;

// Written when the palette file does not exist.
extern const std::string_view kPaletteDefaultText;

// "Name = hue" lines in file order; comments and malformed lines are skipped. Empty
// when no line qualifies.
Palette paletteParse(std::string_view text);

// Whether rewriting the file from what paletteParse made of `text` loses something: a
// comment below the first line, or a line that is not a "Name = hue" entry.
bool paletteLossy(std::string_view text);

// The whole file: the explanatory first line, then one "Name = hue" line per entry.
std::string paletteFormat(const Palette& palette);

// What a palette name cannot hold: nothing when `name` can be stored, else "an equals
// sign", "a number sign" or "a line break" (or "nothing at all" for an empty name).
std::optional<std::string> paletteUnstorableName(std::string_view name);

// Writes the whole palette to palettePath(). False, without writing, when an entry's
// name cannot be stored; errors of the write itself are absorbed.
bool paletteWrite(const Palette& palette);

// The palette file's entries (writing the default file first when there is none), or
// the single entry Blue 0.58 when it yields none. Never empty.
Palette pinnedPalette();

// 32-bit FNV-1a over the Unicode scalar values of `title` (a malformed byte counts as
// U+FFFD).
uint32_t paletteTitleHash(std::string_view title);

// The hue a title always gets when the palette has run out: the entry at index
// hash(title) modulo the palette's size. `palette` must not be empty.
double paletteHueForTitle(std::string_view title, const Palette& palette);

// Section title -> hue: a section's own colour, else the first palette hue not used by
// an explicit or earlier automatic colour, else the title's hash hue. The first section
// with a given title decides. `palette` must not be empty.
std::map<std::string, double> pinnedAssignHues(const std::vector<PinnedSec>& secs, const Palette& palette);
