#include "views/node_tree_model.h"

#include "fs/background_release.h"
#include "fs/sort_nodes.h"
#include "views/row_info_cache.h"
#include "window/scan_service.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPalette>

NodeTreeModel::NodeTreeModel(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context,
    QObject* parent)
    : QAbstractItemModel(parent)
    , m_root(std::move(root))
    , m_headers(std::move(headers))
    , m_context(context)
{
    m_top.node = m_root;
}

NodeTreeModel::~NodeTreeModel()
{
    // The rows of a big folder are many small objects: they are freed off the UI thread.
    releaseInBackground(std::move(m_top.kids));
}

std::vector<DirNodePtr> NodeTreeModel::childRows(const DirNode& node) const
{
    if (node.isSectionHeader)
        return node.children; // the favourites order
    // Folders read by the scanner arrive sorted (the read sorts in the background, so a
    // folder of 100,000 entries never sorts on the main thread); the Computer root is
    // built unsorted and is small.
    if (node.path == "/")
        return sortNodes(node.children, SortPlace::ComputerRoot, *m_context.settings);
    return node.children;
}

void NodeTreeModel::build(Item& item) const
{
    if (item.built)
        return;
    if (&item != &m_top && !item.node->childrenLoaded && !item.node->isSectionHeader)
        return; // waits for fetchMore
    item.built = true;
    fill(item, &item == &m_top ? topRows() : childRows(*item.node));
}

void NodeTreeModel::fill(Item& item, std::vector<DirNodePtr> rows)
{
    item.kids.clear();
    item.kids.reserve(rows.size());
    for (auto& node : rows) {
        auto kid = std::make_unique<Item>();
        kid->node = std::move(node);
        kid->parent = &item;
        kid->row = int(item.kids.size());
        item.kids.push_back(std::move(kid));
    }
}

NodeTreeModel::Item* NodeTreeModel::itemAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return &m_top;
    return static_cast<Item*>(index.internalPointer());
}

DirNodePtr NodeTreeModel::nodeAt(const QModelIndex& index) const
{
    return index.isValid() ? itemAt(index)->node : DirNodePtr();
}

QModelIndex NodeTreeModel::indexOfPath(const std::string& path) const
{
    build(m_top);
    for (const auto& kid : m_top.kids)
        if (kid->node->path == path && !kid->node->isSectionHeader)
            return createIndex(kid->row, 0, kid.get());
    return {};
}

QModelIndex NodeTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    Item* item = itemAt(parent);
    build(*item);
    if (row < 0 || row >= int(item->kids.size()) || column < 0 || column >= columnCount(parent))
        return {};
    return createIndex(row, column, item->kids[size_t(row)].get());
}

QModelIndex NodeTreeModel::parent(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    Item* up = itemAt(index)->parent;
    if (!up || up == &m_top)
        return {};
    return createIndex(up->row, 0, up);
}

int NodeTreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    Item* item = itemAt(parent);
    if (item != &m_top && !expandable(*item->node))
        return 0;
    build(*item);
    return int(item->kids.size());
}

bool NodeTreeModel::hasChildren(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return false;
    Item* item = itemAt(parent);
    if (item == &m_top)
        return true;
    // Every folder shows a disclosure, loaded or not, empty or not.
    return expandable(*item->node);
}

bool NodeTreeModel::canFetchMore(const QModelIndex& parent) const
{
    Item* item = itemAt(parent);
    if (item == &m_top || item->built || item->fetching)
        return false;
    return expandable(*item->node) && item->node->isDir && !item->node->childrenLoaded;
}

void NodeTreeModel::fetchMore(const QModelIndex& parent)
{
    Item* item = itemAt(parent);
    if (!canFetchMore(parent) || !m_context.scans)
        return;
    item->fetching = true;
    QPersistentModelIndex keep(parent);
    m_context.scans->scan(item->node->path, *m_context.settings, this, [this, keep](DirNodePtr fresh) {
        if (keep.isValid())
            adopt(itemAt(keep), keep, fresh);
    });
}

void NodeTreeModel::adopt(Item* item, const QModelIndex& parent, const DirNodePtr& fresh)
{
    item->fetching = false;
    DirNode& node = *item->node;
    // Another pane sharing this node may have read it meanwhile: its rows are as good.
    if (!node.childrenLoaded) {
        node.children = fresh->children;
        node.childrenLoaded = true;
    }
    std::vector<DirNodePtr> rows = childRows(node);
    const int count = int(rows.size());
    if (count)
        beginInsertRows(parent, 0, count - 1);
    item->built = true;
    fill(*item, std::move(rows));
    if (count)
        endInsertRows();
    emit childrenArrived(parent);
}

Qt::ItemFlags NodeTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    // Section headers can be expanded but never selected, by click, keys or select-all.
    if (itemAt(index)->node->isSectionHeader)
        return Qt::ItemIsEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

void NodeTreeModel::reloadRows(const QModelIndexList& indexes, int column)
{
    for (const auto& index : indexes) {
        QModelIndex cell = index.siblingAtColumn(column);
        if (cell.isValid())
            emit dataChanged(cell, cell, {Qt::DisplayRole});
    }
}

QVariant NodeTreeModel::headerStyle(const DirNode& header, int role)
{
    if (role == Qt::FontRole) {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * 11.0 / 13.0 + 0.5);
        font.setWeight(QFont::DemiBold);
        return font;
    }
    if (role == Qt::ForegroundRole) {
        if (header.hue)
            return QColor::fromHsvF(float(*header.hue), 0.75f, 0.62f, 1.0f);
        return QApplication::palette().color(QPalette::Disabled, QPalette::WindowText);
    }
    return {};
}

QString NodeTreeModel::infoText(const DirNode& node) const
{
    std::optional<RowInfo> info = RowInfoCache::shared().find(node, *m_context.settings);
    return info ? info->line : QString();
}
