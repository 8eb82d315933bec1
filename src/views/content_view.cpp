#include "views/content_view.h"

#include "views/column_view.h"
#include "views/list_view.h"

#include <QListView>

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

namespace {

// The icon and Peek modes until their own views land: the root's items as a grid.
QWidget* gridStandIn(const DirNodePtr& root, const BrowserContext& context, const ContentHooks& hooks)
{
    auto* view = new QListView;
    auto* source = new ListSource(root, {}, context, view);
    view->setModel(source);
    view->setModelColumn(ListSource::Name);
    view->setViewMode(QListView::IconMode);
    view->setResizeMode(QListView::Adjust);
    view->setUniformItemSizes(true);
    view->setWordWrap(true);
    view->setGridSize(QSize(110, 90));
    view->setIconSize(QSize(48, 48));
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    QObject::connect(view, &QAbstractItemView::activated, view,
        [source, hooks](const QModelIndex& index) { contentActivate(source->nodeAt(index), hooks); });
    return view;
}

} // namespace

QWidget* contentViewBuild(ViewMode mode, const DirNodePtr& root, std::vector<DirNodePtr> headers,
    const BrowserContext& context, const ContentHooks& hooks)
{
    switch (mode) {
    case ViewMode::List:
        return new BrondelOutlineView(new ListSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Column:
        return new BrondelBrowser(new ColumnSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Icon:
    case ViewMode::Peek:
        break;
    }
    return gridStandIn(root, context, hooks);
}

QWidget* contentViewFocus(QWidget* view)
{
    if (auto* browser = qobject_cast<BrondelBrowser*>(view)) {
        auto columns = browser->columns();
        return columns.isEmpty() ? view : columns.first();
    }
    return view;
}
