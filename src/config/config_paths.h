#pragma once
// Folder paths as the favourites and sidebar files store them: absolute, or beginning
// with "~" for the home folder. Comparisons expand the tilde on both sides and then
// compare the strings exactly.

#include <string>

// "~/..." for a path inside the home folder; any other path (the home folder itself
// included, since it has no trailing slash) unchanged.
std::string configAbbreviateHome(const std::string& path);

// Whether two stored or absolute paths name the same place after tilde expansion.
bool configSamePath(const std::string& a, const std::string& b);
