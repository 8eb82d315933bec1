#pragma once
// The content view of a pane for a mode, and what it reports back to the pane.

#include "app/view_mode.h"
#include "fs/dir_node.h"
#include "window/browser_context.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAbstractItemView;
class QMenu;
struct ListColumnWidths;

struct ContentHooks {
    std::function<void(const std::string&)> openFolder; // a folder activated
    std::function<void(const std::string&)> openFile;   // a file activated
    // Fills the context menu of a row (a file, a folder or a section header), or of
    // empty space when the node is null.
    std::function<void(QMenu&, const DirNodePtr&)> fillMenu;
    // A click on the list's column header: "name", "date", "size" or "kind".
    std::function<void(const std::string& key)> sortBy;
    // The list's column widths as the user left them (null: a view of its own).
    std::shared_ptr<ListColumnWidths> listWidths;
};

// Builds the view of `mode` for `root`, with the favourites `headers` above its rows.
// The icon and Peek modes show a grid of the root's items until their own views exist.
// A root whose folder could not be read shows why instead of rows.
QWidget* contentViewBuild(ViewMode mode, const DirNodePtr& root, std::vector<DirNodePtr> headers,
    const BrowserContext& context, const ContentHooks& hooks);

// What a folder that could not be read shows: "Permission denied", "No such folder", or
// the C library's text for the errno.
QString contentReadErrorText(int error);

// The widget that should take the keyboard focus inside a content view.
QWidget* contentViewFocus(QWidget* view);

// The paths of the selected rows of a content view (section headers are never
// selected), each once.
std::vector<std::string> contentViewSelection(QWidget* view);

// Selects the top-level row of `path` in a content view and scrolls to it; false when
// the view has no such row.
bool contentViewSelect(QWidget* view, const std::string& path);

// The context menu at `pos` (viewport coordinates) of an item view showing a
// NodeTreeModel: a row's node is first selected alone (a header is left as it is),
// then the hooks fill the menu for it, or for empty space. Null when they add nothing.
std::unique_ptr<QMenu> contentMenuAt(QAbstractItemView& view, QPoint pos, const ContentHooks& hooks);

// Shows a context menu at `global` without a nested event loop, and returns at once.
// A nested loop (QMenu::exec) would let the pane rebuild its view, and so delete the
// view whose handler is still on the stack. The menu owns itself: it is freed once
// hidden, and closes when `owner` goes away; its actions hold values only.
void contentMenuPopup(std::unique_ptr<QMenu> menu, QWidget& owner, QPoint global);

// What a double-click or Return on a row does: folders go to openFolder, files to
// openFile, section headers do nothing.
void contentActivate(const DirNodePtr& node, const ContentHooks& hooks);
