#pragma once
// The right-click menus of the content views. Each item acts, through ContextActions,
// on the pane the menu was opened in.

#include "fs/dir_node.h"

class BrondelWindow;
class QMenu;

// A file or folder (`node`), a favourites or Recent section header, or the empty space
// of the pane's folder (no node).
void contextMenuFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node);

// "Open", "Reveal in Finder", "Copy Path", "Move to Trash", for the item `node`.
void contextFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node);

// A favourites section's menu; the Recent section's is "Clear Recents" alone.
void contextSectionFill(QMenu& menu, BrondelWindow& pane, const DirNode& header);

// The menu of empty space: new folder, favourites and refresh.
void contextBackgroundFill(QMenu& menu, BrondelWindow& pane);
