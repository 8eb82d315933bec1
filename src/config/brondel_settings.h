#pragma once
// The user's global preferences: a plain record at the bottom of the dependency graph.
// Reading and writing it lives in settings_file.h.

#include <cstdint>
#include <map>
#include <string>

struct BrondelSettings {
    bool showHidden = false;
    std::string sortBy = "name";
    bool ascending = true;
    bool foldersFirst = true;
    bool showRecent = true;
    int64_t recentCount = 8;
    std::string drivesTitle = "Drives";
    std::string itemsTitle = "{folder}";
    std::string favoritesTitle = "Favorites";
    std::string recentTitle = "Recent";
    bool showDownloads = true;
    std::map<std::string, bool> infoOn; // ordered by key: the file lists them sorted

    bool operator==(const BrondelSettings&) const = default;
};
