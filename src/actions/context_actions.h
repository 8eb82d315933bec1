#pragma once
// What the context menus and the window's commands do to files and to the favourites:
// open, reveal, copy the path, move to the Trash, new folders, and the favourites,
// section and recent-folder edits. Disk work and configuration edits run off the main
// thread (the edits one after another, in the order they were made); the windows
// refresh once the results are in.

#include "fs/dir_node.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class BrondelWindow;
class QString;
class QWidget;
struct BrowserContext;

struct ContextActions {
    // A folder opens in the pane (or its TO panes); anything else in its application.
    static void open(BrondelWindow& pane, const DirNode& node);
    // Shows the item in the desktop's file manager, or else in a new window on its
    // folder with the item selected.
    static void reveal(BrondelWindow& pane, const std::string& path);
    static void copyPath(const std::string& path);
    // Moves the items to the Trash; failures are shown in one alert. The trashed paths
    // leave the favourites, and every window refreshes.
    static void trash(BrondelWindow& pane, std::vector<std::string> paths);
    // Creates the first free "untitled folder", "untitled folder 2", ... in the pane's
    // folder (nothing on the Computer root), then refreshes the window.
    static void newFolder(BrondelWindow& pane);
    // Refreshes the window holding the pane (all its panes and its sidebar).
    static void refreshView(BrondelWindow& pane);
    // Pins the pane's folder to "Favorites" (nothing on the Computer root).
    static void favAddCurrent(BrondelWindow& pane);

    // The section edits; `section` is the title of a favourites section.
    static void sectionAddFolders(BrondelWindow& pane, const std::string& section);
    static void sectionRename(BrondelWindow& pane, const std::string& section);
    static void sectionShift(BrondelWindow& pane, const std::string& section, int64_t delta);
    static void sectionNew(BrondelWindow& pane);
    static void sectionDelete(BrondelWindow& pane, const std::string& section);
    static void recentsClearAction(BrondelWindow& pane);

    // Runs a read-modify-write of a configuration file on the edit queue; every window
    // refreshes when `change` reports that it changed something.
    static void edit(const BrowserContext& context, std::function<bool()> change);
};

// Shows what the configuration files reported about an edit, in one alert.
void actionNoticesShow(QWidget* parent, const std::vector<std::string>& notices);

// The bytes of a folder path the folder chooser gave as text (see the .cpp). Touches the
// disk: off the main thread only.
std::string actionChosenPathBytes(const QString& chosen);

// "untitled folder" for 1, then "untitled folder 2", "untitled folder 3", ...
std::string newFolderName(int64_t number);

// Creates the first free new-folder name in `folder`; its path, or nothing when the
// folder cannot be written.
std::optional<std::string> newFolderCreate(const std::string& folder);
