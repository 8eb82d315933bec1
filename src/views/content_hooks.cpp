#include "views/content_hooks.h"
#include "views/rename_editor.h"

#include "views/node_tree_model.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QMenu>

void contentActivate(const DirNodePtr& node, const ContentHooks& hooks)
{
    if (!node || node->isSectionHeader)
        return;
    if (node->isDir) {
        if (hooks.openFolder)
            hooks.openFolder(node->path);
    } else if (hooks.openFile) {
        hooks.openFile(node->path);
    }
}

std::unique_ptr<QMenu> contentMenuAt(QAbstractItemView& view, QPoint pos, const ContentHooks& hooks)
{
    if (!hooks.fillMenu)
        return nullptr;
    const NodeTreeModel* model = contentModel(&view);
    QModelIndex index = view.indexAt(pos);
    DirNodePtr node = model ? model->nodeAt(index) : DirNodePtr();
    if (node && !node->isSectionHeader)
        view.selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    auto menu = std::make_unique<QMenu>();
    hooks.fillMenu(*menu, node);
    if (menu->isEmpty())
        return nullptr;
    return menu;
}

void contentMenuPopup(std::unique_ptr<QMenu> menu, QWidget& owner, QPoint global)
{
    // Not a child of the view: an action may rebuild the view, and a view deleted in
    // the middle of the menu's own signal would take the menu with it.
    QMenu* shown = menu.release();
    QObject::connect(shown, &QMenu::aboutToHide, shown, &QObject::deleteLater);
    QObject::connect(&owner, &QObject::destroyed, shown, &QMenu::close);
    shown->popup(global);
}

QAbstractItemDelegate* contentRenameEditor(const NodeTreeModel& model, const ContentHooks& hooks, QObject* parent)
{
    const NodeTreeModel* rows = &model;
    return new RenameEditor([rows](const QModelIndex& index) { return rows->nodeAt(index)->path; },
        [rows](const QModelIndex& index) { return rows->isFolder(index); }, hooks.rename, parent);
}

void contentDragDropSetUp(QAbstractItemView& view, NodeTreeModel& model, const ContentHooks& hooks)
{
    model.setDrop(hooks.drop);
    view.setDragEnabled(true);
    view.setAcceptDrops(true);
    view.setDropIndicatorShown(true);
    view.setDragDropMode(QAbstractItemView::DragDrop);
    view.setDragDropOverwriteMode(true); // onto rows, not between them
    view.setDefaultDropAction(Qt::MoveAction);
}

const NodeTreeModel* contentModel(const QAbstractItemView* view)
{
    return view ? qobject_cast<const NodeTreeModel*>(view->model()) : nullptr;
}
