#pragma once
// The right-click menus: of the content views (files, folders, favourites and Recent
// section headers, empty space) and of the sidebar's rows. Each item acts, through
// ContextActions, on the pane the menu was opened for, and carries a MenuPayload.

#include "fs/dir_node.h"

#include <string>
#include <vector>

class BrondelWindow;
class QMenu;

// The full form ends with the favourites block (folders only) and "Move to Trash"; the
// compact form stops after "Copy Path".
enum class MenuForm { Full, Compact };

// A file or folder (`node`), a favourites or Recent section header, or the empty space
// of the pane's folder (no node).
void contextMenuFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node);

// "Open", "Open in New Window" (folders), "Reveal in File Manager", "Copy Path", then
// in the full form the favourites block (folders) and "Move to Trash".
void contextFill(QMenu& menu, BrondelWindow& pane, const DirNode& node, MenuForm form = MenuForm::Full);

// For the folder `path`: "Add to Sidebar", then "Add to Favorites" (or, when a section
// holds it already, "Move to Section") with the section titles and "New Section…", and
// for a favourite "Move Up/Down in Favorites" and "Remove from Favorites". The sections
// are those the pane last read (its headers), so building the menu reads no file.
void ctxFavoritesItems(QMenu& menu, BrondelWindow& pane, const std::string& path);

// A favourites section's menu, with its Color submenu; the Recent section's is
// "Clear Recents" alone.
void contextSectionFill(QMenu& menu, BrondelWindow& pane, const DirNode& header);

// The menu of empty space: new folder, favourites and refresh.
void contextBackgroundFill(QMenu& menu, BrondelWindow& pane);

enum class SidebarRowKind; // window/sidebar_view.h

// The sidebar's menu for a row of its top section (`path`), its title, or another row.
void sidebarMenuFill(QMenu& menu, BrondelWindow& pane, const std::string& path, SidebarRowKind kind);

// The favourites section titles among `headers` in order ("Favorites" in front when
// missing), and the title of the first section holding `path`, or "".
std::vector<std::string> favoritesTitles(const std::vector<DirNodePtr>& headers);
std::string favoritesSectionOf(const std::vector<DirNodePtr>& headers, const std::string& path);

// A title shown as a menu item's text: an "&" stays an "&", not a mnemonic.
class QString;
QString menuTitleEscape(const QString& title);
