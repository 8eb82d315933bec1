#pragma once
// Folder paths as the favourites and sidebar files store them: absolute, or beginning
// with "~" for the home folder. Comparisons expand the tilde on both sides and then
// compare the strings exactly.

#include <optional>
#include <string>
#include <string_view>

// "~/..." for a path inside the home folder; any other path (the home folder itself
// included, since it has no trailing slash) unchanged.
std::string configAbbreviateHome(const std::string& path);

// Whether two stored or absolute paths name the same place after tilde expansion.
bool configSamePath(const std::string& a, const std::string& b);

// What in `text` a file of quoted strings (favourites, sidebar) cannot store: "a double
// quote" (it would end the string early) or "a line break" (it would split the line);
// nothing when the text reads back as it is written. A path or title that cannot be
// stored is refused rather than written in a form that reads back as something else.
std::optional<std::string> configUnstorable(std::string_view text);

// The user's message for a refused folder: "“<path>” was not added to <where>: its path
// holds <what>, which <file> cannot store."
std::string configRefusedPath(const std::string& path, const std::string& where, const std::string& what,
    const std::string& file);
