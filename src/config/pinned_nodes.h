#pragma once
// The favourites as the views show them: one section header node per favourites
// section carrying its existing entries, then the Recent header. Read afresh on every
// call; the file is the only state.

#include "config/brondel_settings.h"
#include "config/pinned_file.h"
#include "config/sidebar_section.h"
#include "fs/dir_node.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// The sections with a non-empty title, in file order, each holding the entries that
// exist on disk.
std::vector<SidebarSection> pinnedLoad();
std::vector<SidebarSection> pinnedLoad(const std::vector<PinnedSec>& secs);

// Favourites header nodes with their entries as children, then (when
// settings.showRecent is on and the list is not empty) the Recent header with the
// recent folders. Replaces the hue registry's content with the headers' hues.
std::vector<DirNodePtr> pinnedNodes(const BrondelSettings& settings);

// Section title -> hue of the headers the last pinnedNodes() call built, for the views
// that colour a section's rows. Guarded by a lock of its own.
struct PinnedHueRegistry {
    static std::map<std::string, double> all();
    static std::optional<double> hueOf(const std::string& title);
    static void replace(std::map<std::string, double> hues);
};
