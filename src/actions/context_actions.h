#pragma once
// What the context menus and the window's commands do to files and to the favourites:
// open, reveal, copy the path, move to the Trash, new folders, and the favourites,
// section and recent-folder edits. Disk work and configuration edits run off the main
// thread (the edits one after another, in the order they were made); the windows
// refresh once the results are in.

#include "fs/dir_node.h"

#include <QMetaType>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class BrondelWindow;
class BrowserFrame;
class QColor;
class QString;
class QWidget;
struct BrowserContext;

// What a menu item acts on, attached to the item as its data.
struct MenuPayload {
    std::string path;                   // the file or folder
    std::optional<std::string> section; // a favourites section title
    int64_t delta = 0;                  // a move: -1 up, +1 down
    std::optional<double> hue;          // a colour
};
Q_DECLARE_METATYPE(MenuPayload)

enum class PathKind { File, Folder, Unknown };

struct ContextActions {
    // Where actions without a payload (main menu, keys) go: the active window when it is
    // a browser window, else the first browser window; null when there is none.
    static BrowserFrame* window();
    // What such an action acts on: the items selected in the frame's routed pane.
    static std::vector<std::string> selectedPaths(const BrowserFrame& frame);

    // A folder opens in the pane (or its TO panes); anything else in its application. An
    // unknown kind is looked up in the background first.
    static void open(BrondelWindow& pane, const DirNode& node);
    static void openPath(BrondelWindow& pane, const std::string& path, PathKind kind);
    // Opens a file with its default application; says why in an alert when that fails.
    static void openFile(QWidget* parent, const std::string& path);
    // A new window on the folder, as at launch.
    static void openNewWindow(BrondelWindow& pane, const std::string& path);
    // Shows the item in the desktop's file manager, or else in a new window on its
    // folder with the item selected.
    static void reveal(BrondelWindow& pane, const std::string& path);
    // "Reveal in File Manager": the title of the item that reveals.
    static QString revealTitle();
    static void copyPath(const std::string& path);
    // Moves the items to the Trash; failures are shown in one alert. The trashed paths
    // leave the favourites, and every window refreshes.
    static void trash(BrondelWindow& pane, std::vector<std::string> paths);
    // Creates the first free "untitled folder", "untitled folder 2", ... in the pane's
    // folder (nothing on the Computer root), then refreshes the window; an alert says
    // why when no folder could be made.
    static void newFolder(BrondelWindow& pane);
    // Refreshes the window holding the pane (all its panes and its sidebar).
    static void refreshView(BrondelWindow& pane);

    // The favourites of a folder. favAdd pins it to `section` ("Favorites" when none).
    static void favAdd(BrondelWindow& pane, const std::string& path, const std::optional<std::string>& section);
    // Pins the pane's folder to "Favorites" (nothing on the Computer root).
    static void favAddCurrent(BrondelWindow& pane);
    static void favMove(BrondelWindow& pane, const std::string& path, const std::string& section);
    // Asks for a section name and moves (or adds) the folder there.
    static void favNewSection(BrondelWindow& pane, const std::string& path);
    static void favShift(BrondelWindow& pane, const std::string& path, int64_t delta);
    static void favRemove(BrondelWindow& pane, const std::string& path);
    // Pins the folders to "Favorites", or unpins them; files are left out.
    static void favAddPaths(BrondelWindow& pane, std::vector<std::string> paths);
    static void favRemovePaths(BrondelWindow& pane, std::vector<std::string> paths);

    // The section edits; `section` is the title of a favourites section.
    static void sectionAddFolders(BrondelWindow& pane, const std::string& section);
    static void sectionRename(BrondelWindow& pane, const std::string& section);
    static void sectionShift(BrondelWindow& pane, const std::string& section, int64_t delta);
    static void sectionNew(BrondelWindow& pane);
    static void sectionDelete(BrondelWindow& pane, const std::string& section);
    static void recentsClearAction(BrondelWindow& pane);

    // Colours of a section: a palette hue, or none for "Automatic".
    static void sectionColor(BrondelWindow& pane, const std::string& section, std::optional<double> hue);
    // Opens the colour panel for the section; each colour picked there is stored at once.
    static void sectionColorCustom(BrondelWindow& pane, const std::string& section);
    // One pick in the colour panel: the hue is written now, and the pane's window is
    // refreshed once, 0.15 s after the last of a quick run of picks.
    static void colorPicked(BrondelWindow& pane, const std::string& section, const QColor& color);
    // Opens the palette file in the desktop's editor (writing the default file first).
    static void editPalette(BrondelWindow& pane);

    // The sidebar's top section.
    static void sidebarAddAction(BrondelWindow& pane, const std::string& path);
    static void sidebarRemoveAction(BrondelWindow& pane, const std::string& path);
    static void sidebarShiftAction(BrondelWindow& pane, const std::string& path, int64_t delta);
    // Moves the row of `path` to where the row of `target` is (a drag in the sidebar).
    static void sidebarMoveAction(BrondelWindow& pane, const std::string& path, const std::string& target);
    static void sidebarRenameAction(BrondelWindow& pane);
    static void sidebarAddFolderAction(BrondelWindow& pane);

    // Runs a read-modify-write of a configuration file on the edit queue; every window
    // refreshes when `change` reports that it changed something.
    static void edit(const BrowserContext& context, std::function<bool()> change);
};

// Shows what the configuration files reported about an edit, in one alert.
void actionNoticesShow(QWidget* parent, const std::vector<std::string>& notices);

