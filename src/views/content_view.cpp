#include "views/content_view.h"

#include "views/column_view.h"
#include "views/icon_card_view.h"
#include "views/list_view.h"
#include "views/peek/peek_mode_view.h"

#include <QCoreApplication>
#include <QFile>
#include <QItemSelectionModel>
#include <QLabel>
#include <QColumnView>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

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
    // Range by range, each row once by its first column: no list of every selected
    // cell (a selection of a million rows spans four million).
    std::set<std::string> seen;
    for (const QItemSelectionRange& range : items->selectionModel()->selection()) {
        if (range.left() != 0)
            continue;
        for (int row = range.top(); row <= range.bottom(); ++row) {
            DirNodePtr node = model->nodeAt(model->index(row, 0, range.parent()));
            if (node && !node->isSectionHeader && seen.insert(node->path).second)
                paths.push_back(node->path);
        }
    }
    return paths;
}

bool contentViewSelect(QWidget* view, const std::string& path)
{
    return contentViewSelectAll(view, {path}) == 1;
}

int contentViewSelectAll(QWidget* view, const std::vector<std::string>& paths)
{
    if (auto* icons = qobject_cast<IconCardView*>(view)) // the first found
        return std::any_of(paths.begin(), paths.end(), [icons](const std::string& path) { return icons->selectPath(path); });
    QAbstractItemView* items = selectionView(view);
    const NodeTreeModel* model = contentModel(items);
    if (!model)
        return 0;
    QItemSelection selection;
    QModelIndex first;
    for (const std::string& path : paths) {
        QModelIndex index = model->indexOfPath(path);
        if (!index.isValid() || selection.contains(index))
            continue;
        if (!first.isValid())
            first = index;
        selection.select(index, index);
    }
    if (!first.isValid())
        return 0;
    auto* selectionModel = items->selectionModel();
    selectionModel->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    selectionModel->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    items->scrollTo(first);
    return int(selection.size());
}

bool contentViewRename(QWidget* view, const std::string& path)
{
    if (!path.empty() && !contentViewSelect(view, path))
        return false;
    if (auto* icons = qobject_cast<IconCardView*>(view))
        return icons->beginRename();
    QAbstractItemView* items = selectionView(view);
    if (auto* browser = qobject_cast<QColumnView*>(items)) {
        // The editor opens in the column that shows the row.
        const QModelIndex current = browser->currentIndex();
        for (QAbstractItemView* column : browser->findChildren<QAbstractItemView*>())
            if (column != browser && column->rootIndex() == current.parent() && column->model() == browser->model()) {
                column->setCurrentIndex(current);
                items = column;
                break;
            }
    }
    if (!items || !items->currentIndex().isValid())
        return false;
    const QModelIndex name = items->currentIndex().siblingAtColumn(0);
    if (!(name.flags() & Qt::ItemIsEditable))
        return false;
    items->setFocus(Qt::OtherFocusReason);
    items->edit(name);
    return items->viewport()->findChild<QWidget*>(QStringLiteral("renameEditor")) != nullptr;
}

bool contentViewApplyFresh(QWidget* view, const DirNodePtr& fresh, const FolderDiff& diff)
{
    QAbstractItemView* items = selectionView(view);
    // The view's own model: the const accessor is for readers.
    auto* model = const_cast<NodeTreeModel*>(contentModel(items));
    return model && model->applyFresh(fresh, diff);
}

namespace {

// Says why the folder shows no rows, where the rows would be. A folder that is gone
// (deleted or moved while shown) offers the folder that held it.
QWidget* readErrorView(int error, const DirNodePtr& root, const ContentHooks& hooks)
{
    auto* label = new QLabel(contentReadErrorText(error));
    label->setObjectName(QStringLiteral("readError"));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    if (error != ENOENT || !hooks.goUp) {
        label->setBackgroundRole(QPalette::Base); // the same ground as the rows it stands for
        label->setAutoFillBackground(true);
        return label;
    }
    auto* box = new QWidget;
    box->setObjectName(QStringLiteral("folderGone"));
    box->setBackgroundRole(QPalette::Base);
    box->setAutoFillBackground(true);
    auto* column = new QVBoxLayout(box);
    column->addStretch(1);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    column->addWidget(label);
    const QString name = root ? QFile::decodeName(QByteArray::fromStdString(root->name)) : QString();
    auto* detail = new QLabel(QCoreApplication::translate("ContentView",
        "“%1” is no longer here: it was moved or deleted.").arg(name));
    detail->setAlignment(Qt::AlignCenter);
    detail->setWordWrap(true);
    column->addWidget(detail);
    auto* up = new QPushButton(QCoreApplication::translate("ContentView", "Go to Enclosing Folder"));
    up->setObjectName(QStringLiteral("goUp"));
    QObject::connect(up, &QPushButton::clicked, box, hooks.goUp);
    column->addWidget(up, 0, Qt::AlignHCenter);
    column->addStretch(1);
    return box;
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
        return readErrorView(root->readError, root, hooks);
    switch (mode) {
    case ViewMode::List:
        return new BrondelOutlineView(new ListSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Column:
        return new BrondelBrowser(new ColumnSource(root, std::move(headers), context), context, hooks);
    case ViewMode::Peek:
        return new PeekModeView({root ? root->path : "/", !root || root->path == "/", context, hooks});
    case ViewMode::Icon:
        return new IconCardView(root, std::move(headers), context, hooks);
    }
    return nullptr;
}

QWidget* contentViewFocus(QWidget* view)
{
    if (auto* browser = qobject_cast<BrondelBrowser*>(view)) {
        auto columns = browser->columns();
        return columns.isEmpty() ? view : columns.first();
    }
    return view;
}
