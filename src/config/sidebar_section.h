#pragma once
// Display records of the sidebar and of the favourites sections: a titled list of
// existing folders, each with the name shown and its absolute path.

#include <string>
#include <vector>

struct SidebarItem {
    std::string name; // the text shown: the last component of the path
    std::string path; // absolute
    bool operator==(const SidebarItem&) const = default;
};

struct SidebarSection {
    std::string title;
    std::vector<SidebarItem> items;
    bool operator==(const SidebarSection&) const = default;
};

// A section of the stored `paths` (absolute or "~"-abbreviated) that exist on disk, in
// order, each expanded and named by its last path component.
SidebarSection sidebarSection(const std::string& title, const std::vector<std::string>& paths);
