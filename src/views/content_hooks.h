#pragma once
// What a content view reports back to its pane, and the row handling the list and
// column views share: activation and the context menu.

#include "fs/dir_node.h"

#include <QPoint>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class NodeTreeModel;
class QAbstractItemDelegate;
class QObject;
class QAbstractItemView;
class QMenu;
class QWidget;
struct ListColumnWidths;

// What the icon view leaves behind for the next icon view of its pane, so that a
// rebuild (favourites edited, a sort or a card changed) shows the folder where it was:
// the scroll position, the selected paths and the current one, for that location.
struct IconViewMemory {
    std::string location;
    int scroll = 0;
    std::vector<std::string> selected;
    std::string current;
};

struct ContentHooks {
    std::function<void(const std::string&)> openFolder; // a folder activated
    std::function<void(const std::string&)> openFile;   // a file activated
    // Fills the context menu of a row (a file, a folder or a section header), or of
    // empty space when the node is null.
    std::function<void(QMenu&, const DirNodePtr&)> fillMenu;
    // A click on the list's column header: "name", "date", "size" or "kind".
    std::function<void(const std::string& key)> sortBy;
    // A row renamed in place: the item at `path` gets `newName` (one name, as bytes).
    std::function<void(const std::string& path, const std::string& newName)> rename;
    // Files dropped on the view: into `folder` (a folder row, or the shown folder).
    std::function<void(std::vector<std::string> paths, std::string folder)> drop;
    // The list's column widths as the user left them (null: a view of its own).
    std::shared_ptr<ListColumnWidths> listWidths;
    // Shows `folder` in the list view (Peek mode's "+ N more" on a large folder).
    std::function<void(const std::string& folder)> showInList;
    // Peek mode saved a new order of its styles: the menus follow.
    std::function<void()> peekOrderChanged;
    // The icon view's place (null: a view of its own).
    std::shared_ptr<IconViewMemory> iconMemory;
    // Shows the folder holding the shown one (a shown folder that is gone offers it).
    std::function<void()> goUp;
};

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

// The in-place rename editor of a view over `model`: it hands accepted names to the hooks.
QAbstractItemDelegate* contentRenameEditor(const NodeTreeModel& model, const ContentHooks& hooks, QObject* parent);

// Rows drag out as files, and files drop onto folder rows or the empty space.
void contentDragDropSetUp(QAbstractItemView& view, NodeTreeModel& model, const ContentHooks& hooks);

// The rows' model of an item view, when it shows a NodeTreeModel.
const NodeTreeModel* contentModel(const QAbstractItemView* view);
