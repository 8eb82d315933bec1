#include "views/content_view.h"

#include "views/column_view.h"
#include "views/icon_card_view.h"
#include "views/list_view.h"

#include <QCoreApplication>
#include <QItemSelectionModel>
#include <QLabel>
#include <QListView>
#include <QMenu>

#include <cerrno>
#include <cstring>
#include <set>

namespace {

// The item view carrying the selection of a content view.
QAbstractItemView* selectionView(QWidget* view)
{
    return qobject_cast<QAbstractItemView*>(view);
}

} // namespace

std::vector<std::string> contentViewSelection(QWidget* view)
{
    if (auto* icons = qobject_cast<IconCardView*>(view))
        return icons->selectedPaths();
    std::vector<std::string> paths;
    QAbstractItemView* items = selectionView(view);
    const NodeTreeModel* model = contentModel(items);
    if (!model || !items->selectionModel())
        return paths;
    std::set<std::string> seen;
    for (const QModelIndex& index : items->selectionModel()->selectedIndexes()) {
        DirNodePtr node = model->nodeAt(index);
        if (node && !node->isSectionHeader && seen.insert(node->path).second)
            paths.push_back(node->path);
    }
    return paths;
}

bool contentViewSelect(QWidget* view, const std::string& path)
{
    if (auto* icons = qobject_cast<IconCardView*>(view))
        return icons->selectPath(path);
    QAbstractItemView* items = selectionView(view);
    const NodeTreeModel* model = contentModel(items);
    if (!model)
        return false;
    QModelIndex index = model->indexOfPath(path);
    if (!index.isValid())
        return false;
    items->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    items->scrollTo(index);
    return true;
}



namespace {

// The Peek mode until its own view lands: the root's items as a grid.
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
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(view, &QWidget::customContextMenuRequested, view, [view, hooks](QPoint pos) {
        if (auto menu = contentMenuAt(*view, pos, hooks))
            contentMenuPopup(std::move(menu), *view, view->viewport()->mapToGlobal(pos));
    });
    return view;
}

// Says why the folder shows no rows, where the rows would be.
QWidget* readErrorView(int error)
{
    auto* label = new QLabel(contentReadErrorText(error));
    label->setObjectName(QStringLiteral("readError"));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setBackgroundRole(QPalette::Base); // the same ground as the rows it stands for
    label->setAutoFillBackground(true);
    return label;
}

} // namespace

QString contentReadErrorText(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return QCoreApplication::translate("ContentView", "Permission denied");
    case ENOENT:
        return QCoreApplication::translate("ContentView", "No such folder");
    case ETIMEDOUT: // the scanner's word for a drive the mount watchdog found stuck
        return QCoreApplication::translate("ContentView", "The drive is not responding");
    default:
        return QString::fromLocal8Bit(std::strerror(error));
    }
}

QWidget* contentViewBuild(ViewMode mode, const DirNodePtr& root, std::vector<DirNodePtr> headers,
    const BrowserContext& context, const ContentHooks& hooks)
{
    if (root && root->readError != 0 && !root->hasEntries()) // what a partial read gave still shows
        return readErrorView(root->readError);
    switch (mode) {
    case ViewMode::List:
        return new BrondelOutlineView(new ListSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Column:
        return new BrondelBrowser(new ColumnSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Icon:
        return new IconCardView(root, std::move(headers), context, hooks);
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
