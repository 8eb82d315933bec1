#pragma once
// What the windows ask of the layer above them (the menus and the actions) without
// including it: the GUI is a one-way stack, actions → window → views → services → core.
// The actions fill these in when the GUI library loads (actions/window_hooks_install.cpp);
// an empty hook does nothing (a test that builds windows alone).

#include "fs/dir_node.h"

#include <functional>
#include <string>
#include <vector>

class BrondelWindow;
class BrowserFrame;
class QMenu;
class QObject;
class QWidget;
struct BrowserContext;

struct WindowHooks {
    // The menu bar of a new frame.
    std::function<void(BrowserFrame&)> installMenus;
    // A pane's context menu for a row (null: the empty space).
    std::function<void(QMenu&, BrondelWindow&, const DirNodePtr&)> fillContextMenu;
    // Moves the paths to the Trash, as the pane's Move to Trash does.
    std::function<void(BrondelWindow&, std::vector<std::string>)> trash;
    // Opens a file with its default application (an alert when that fails).
    std::function<void(QWidget*, const std::string&)> openFile;
    // Renames the item at `path` to `newName` (a row edited in place).
    std::function<void(BrondelWindow&, const std::string& path, const std::string& newName)> rename;
    // Files dropped into `folder`: copied or moved as the keys and the devices say.
    std::function<void(BrondelWindow&, std::vector<std::string> paths, const std::string& folder)> drop;
    // A click on a list column header: sort by that key (again: the other direction).
    std::function<void(const BrowserContext&, const std::string&)> sortByColumn;
    // Opens the Properties window of each path; `owner` bounds the windows' life.
    std::function<void(const BrowserContext&, QObject* owner, std::vector<std::string>)> showProperties;
    // The order of the Peek styles was saved: rebuild the Peek Style menus.
    std::function<void()> peekOrderChanged;
};

// The process's hooks.
WindowHooks& windowHooks();
