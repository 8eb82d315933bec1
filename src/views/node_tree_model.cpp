#include "views/node_tree_model.h"

#include "fs/background_release.h"
#include "fs/fmt.h"
#include "fs/kind_table.h"
#include "fs/sort_nodes.h"
#include "views/row_info_cache.h"
#include "services/scan_service.h"
#include "services/file_clipboard.h"
#include "services/file_icons.h"
#include "services/theme_icons.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QFont>
#include <QIcon>
#include <QPalette>

#include <deque>

// The rows under one parent: `nodes` first, then the records of `folder` in display
// order. A row that a view opens gets a Level of its own in `kids`, keyed by its slot
// (its place in `nodes`, or nodes.size() plus its record's place in the folder), which
// a new order leaves unchanged.
struct NodeTreeModel::Level {
    Level* up = nullptr;
    size_t slotInUp = 0;
    DirNodePtr owner; // the node whose rows these are (null for the top and for records)
    std::vector<DirNodePtr> nodes;
    NodeStorePtr store;
    const NodeRecord* folder = nullptr;
    std::vector<uint32_t> order;   // row → record once sorted again; empty: as stored
    std::vector<uint32_t> inverse; // record → row, with `order`
    std::shared_ptr<MetaFillState> fill;
    bool sortPending = false; // the sort needs sizes or dates that are still being read
    std::unordered_map<size_t, std::unique_ptr<Level>> kids;
    bool built = false;
    bool fetching = false;

    int count() const { return int(nodes.size() + (folder ? folder->childCount : 0)); }
    uint32_t recordAt(int row) const
    {
        const uint32_t at = uint32_t(row) - uint32_t(nodes.size());
        return order.empty() ? at : order[at];
    }
    size_t slotOf(int row) const { return size_t(row) < nodes.size() ? size_t(row) : nodes.size() + recordAt(row); }
    int rowOfSlot(size_t slot) const
    {
        if (slot < nodes.size())
            return int(slot);
        const uint32_t record = uint32_t(slot - nodes.size());
        return int(nodes.size() + (inverse.empty() ? record : inverse[record]));
    }
    Row row(int row) const
    {
        if (size_t(row) < nodes.size())
            return {nodes[size_t(row)].get(), nullptr, nullptr};
        return {nullptr, &folder->children[recordAt(row)], store.get()};
    }
    ~Level()
    {
        if (fill)
            fill->cancel();
    }
};

namespace {

QString decoded(const char* name, size_t length)
{
    return QFile::decodeName(QByteArray::fromRawData(name, qsizetype(length)));
}

} // namespace

QString NodeTreeModel::Row::name() const
{
    return node ? QFile::decodeName(node->name.c_str()) : decoded(record->name, record->nameLength);
}

std::string NodeTreeModel::Row::path() const
{
    return node ? node->path : store->path(*record);
}

bool NodeTreeModel::Row::metaKnown() const
{
    return node || (nodeMeta(*record) & kMetaKnown);
}

std::optional<int64_t> NodeTreeModel::Row::date() const
{
    if (node)
        return node->dateModified;
    if (nodeMeta(*record) & kMetaHasDate)
        return record->date;
    return std::nullopt;
}

QString NodeTreeModel::Row::kind() const
{
    if (node)
        return node->kind.empty() ? QCoreApplication::translate("NodeTreeModel", "Folder") : QString::fromStdString(node->kind);
    const std::string_view kind = nodeKindText(*record);
    return QString::fromUtf8(kind.data(), qsizetype(kind.size()));
}

NodeTreeModel::NodeTreeModel(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context,
    QObject* parent)
    : QAbstractItemModel(parent)
    , m_root(std::move(root))
    , m_headers(std::move(headers))
    , m_context(context)
    , m_top(std::make_unique<Level>())
{
    m_top->owner = m_root;
}

NodeTreeModel::~NodeTreeModel()
{
    // A big folder's store and order are freed off the UI thread; any read of sizes
    // still on its way stops.
    releaseInBackground(std::move(m_top));
    releaseInBackground(std::move(m_retired));
}

void NodeTreeModel::build(Level& level) const
{
    if (level.built || !fillLevel(level))
        return;
    level.built = true;
    const_cast<NodeTreeModel*>(this)->startMeta(level);
}

bool NodeTreeModel::fillLevel(Level& level) const
{
    const DirNode* owner = level.owner.get();
    if (&level == m_top.get()) {
        level.nodes = topNodes();
        if (m_root->store) {
            level.store = m_root->store;
            level.folder = &m_root->store->root();
        } else if (m_root->path == "/") {
            // The Computer root is built unsorted and is small.
            std::vector<DirNodePtr> drives = sortNodes(m_root->children, SortPlace::ComputerRoot, *m_context.settings);
            level.nodes.insert(level.nodes.end(), drives.begin(), drives.end());
        } else {
            level.nodes.insert(level.nodes.end(), m_root->children.begin(), m_root->children.end());
        }
    } else if (owner) {
        if (!owner->childrenLoaded && !owner->isSectionHeader)
            return false; // waits for fetchMore
        if (owner->store) {
            level.store = owner->store;
            level.folder = &owner->store->root();
        } else {
            level.nodes = owner->children; // folders arrive sorted; a header's in the favourites' order
        }
    } else if (!(level.folder && (level.folder->flags & kNodeLoaded))) {
        return false; // a record's folder: waits for fetchMore
    }
    return true;
}

bool NodeTreeModel::expandable(const Row& row) const
{
    return row.isHeader() ? headersExpand() : row.isDir();
}

NodeTreeModel::Level* NodeTreeModel::levelOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Level*>(index.internalPointer()) : nullptr;
}

NodeTreeModel::Level* NodeTreeModel::kidLevel(Level& level, int row) const
{
    const size_t slot = level.slotOf(row);
    std::unique_ptr<Level>& kid = level.kids[slot];
    if (!kid) {
        kid = std::make_unique<Level>();
        kid->up = &level;
        kid->slotInUp = slot;
        const Row r = level.row(row);
        if (r.node) {
            kid->owner = level.nodes[slot];
        } else if (r.record->flags & kNodeLoaded) {
            kid->store = level.store; // read with its parent (deep scans)
            kid->folder = r.record;
        }
    }
    return kid.get();
}

NodeTreeModel::Level* NodeTreeModel::kidsOf(const QModelIndex& parent) const
{
    Level* level = parent.isValid() ? kidLevel(*levelOf(parent), parent.row()) : m_top.get();
    build(*level);
    return level;
}

NodeTreeModel::Row NodeTreeModel::rowAt(const QModelIndex& index) const
{
    Level* level = levelOf(index);
    return level ? level->row(index.row()) : Row{m_root.get(), nullptr, nullptr};
}

DirNodePtr NodeTreeModel::nodeAt(const QModelIndex& index) const
{
    Level* level = levelOf(index);
    if (!level)
        return {};
    const auto kid = level->kids.find(level->slotOf(index.row()));
    const bool read = kid != level->kids.end() && kid->second->built;
    if (size_t(index.row()) < level->nodes.size()) {
        const DirNodePtr& node = level->nodes[size_t(index.row())];
        if (!read || node->childrenLoaded || node->isSectionHeader)
            return node;
        // Read by this model since: a copy says so (the shared node stays as it was).
        DirNodePtr copy = std::make_shared<DirNode>(*node);
        copy->childrenLoaded = true;
        return copy;
    }
    const Row row = level->row(index.row());
    DirNodePtr node = nodeStoreRecordNode(*row.store, *row.record);
    node->childrenLoaded = node->childrenLoaded || read; // a folder whose rows this model has read
    return node;
}

NodeTreeModel::Facts NodeTreeModel::factsAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return {true, false, 0, true};
    const Row row = rowAt(index);
    if (row.node)
        return {row.node->isSectionHeader, row.node->isDir, row.node->size, true};
    const bool known = row.metaKnown();
    return {false, row.record->isDir(), known ? row.record->size : 0, known};
}

QModelIndex NodeTreeModel::indexOfPath(const std::string& path) const
{
    Level& top = *m_top;
    build(top);
    for (size_t i = 0; i < top.nodes.size(); ++i)
        if (top.nodes[i]->path == path && !top.nodes[i]->isSectionHeader)
            return createIndex(int(i), 0, &top);
    if (!top.folder)
        return {};
    // A record's path is the root's plus its name: only the names are compared.
    const std::string& base = m_root->path;
    const bool slash = base != "/";
    if (path.size() <= base.size() + slash || path.compare(0, base.size(), base) != 0
        || (slash && path[base.size()] != '/'))
        return {};
    const std::string_view name = std::string_view(path).substr(base.size() + slash);
    for (int row = int(top.nodes.size()); row < top.count(); ++row)
        if (top.row(row).record->nameView() == name)
            return createIndex(row, 0, &top);
    return {};
}

QModelIndex NodeTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= columnCount(parent))
        return {};
    Level* level = kidsOf(parent);
    if (!level->built || row >= level->count())
        return {};
    return createIndex(row, column, level);
}

QModelIndex NodeTreeModel::parent(const QModelIndex& index) const
{
    Level* level = levelOf(index);
    if (!level || !level->up)
        return {};
    return createIndex(level->up->rowOfSlot(level->slotInUp), 0, level->up);
}

int NodeTreeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return 0;
    if (parent.isValid() && !expandable(rowAt(parent)))
        return 0;
    Level* level = kidsOf(parent);
    return level->built ? level->count() : 0;
}

bool NodeTreeModel::hasChildren(const QModelIndex& parent) const
{
    if (parent.column() > 0)
        return false;
    if (!parent.isValid())
        return true;
    // Every folder shows a disclosure, loaded or not, empty or not.
    return expandable(rowAt(parent));
}

bool NodeTreeModel::canFetchMore(const QModelIndex& parent) const
{
    if (!parent.isValid() || !expandable(rowAt(parent)) || !rowAt(parent).isDir())
        return false;
    Level* level = kidsOf(parent);
    return !level->built && !level->fetching;
}

void NodeTreeModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent) || !m_context.scans)
        return;
    Level* level = kidsOf(parent);
    level->fetching = true;
    QPersistentModelIndex keep(parent);
    m_context.scans->scan(rowAt(parent).path(), *m_context.settings, this, [this, keep, level](DirNodePtr fresh) {
        if (keep.isValid())
            adopt(level, keep, fresh);
    });
}

void NodeTreeModel::adopt(Level* level, const QModelIndex& parent, const DirNodePtr& fresh)
{
    level->fetching = false;
    level->owner = fresh;
    level->store.reset();
    level->folder = nullptr;
    Level probe;
    probe.owner = fresh;
    fillLevel(probe); // what the fresh read gives, without touching the shown level yet
    const int count = probe.count();
    if (count)
        beginInsertRows(parent, 0, count - 1);
    level->nodes = std::move(probe.nodes);
    level->store = std::move(probe.store);
    level->folder = probe.folder;
    level->built = true;
    if (count)
        endInsertRows();
    startMeta(*level);
    emit childrenArrived(parent);
}

void NodeTreeModel::startMeta(Level& level)
{
    if (!level.folder || level.fill || !m_context.scans)
        return;
    if (!(level.folder->flags & kNodeMetaPending))
        return; // read in full (the scanner says so: no row is looked at here)
    const SortColumnsUsed used = sortColumnsUsed(SortPlace::Folder, *m_context.settings);
    level.sortPending = used.sizes || used.dates;
    level.fill = std::make_shared<MetaFillState>();
    Level* target = &level;
    m_context.scans->fillMeta(level.store, level.folder, level.fill, this, [this, target](bool finished) {
        if (finished)
            metaDone(target);
        emit metaArrived();
    });
}

void NodeTreeModel::metaDone(Level* level)
{
    if (!level->sortPending)
        return;
    // The folder was shown in name order: now that the sizes or dates are in, its order
    // is made again in the background and applied in one step.
    NodeStorePtr store = level->store;
    const NodeRecord* folder = level->folder;
    const BrondelSettings settings = *m_context.settings;
    m_context.scans->submit(this, [this, level, store, folder, settings]() -> std::function<void()> {
        // The settings may have changed since the folder was shown: every column the
        // sort now uses is filled.
        const SortColumnsUsed used = sortColumnsUsed(SortPlace::Folder, settings);
        SortColumns columns;
        std::deque<std::string> spelled; // kinds past the interned table, kept for the sort
        for (uint32_t i = 0; i < folder->childCount; ++i) {
            const NodeRecord& record = folder->children[i];
            columns.names.push_back(record.nameView());
            columns.dirs.push_back(record.isDir());
            if (used.sizes)
                columns.sizes.push_back(record.size);
            if (used.dates)
                columns.dates.push_back(nodeMeta(record) & kMetaHasDate ? record.date : SortColumns::kNoDate);
            if (used.kinds)
                columns.kinds.push_back(record.kind != kKindFromName
                        ? kindText(record.kind)
                        : std::string_view(spelled.emplace_back(nodeKindText(record))));
        }
        auto order = std::make_shared<std::vector<uint32_t>>(sortOrder(columns, SortPlace::Folder, settings));
        return [this, level, order, store] {
            if (level->store == store) // not read again meanwhile
                resorted(level, std::move(*order));
        };
    });
}

void NodeTreeModel::resorted(Level* level, std::vector<uint32_t> order)
{
    const int offset = int(level->nodes.size());
    QModelIndex parent = level->up ? createIndex(level->up->rowOfSlot(level->slotInUp), 0, level->up) : QModelIndex();
    emit layoutAboutToBeChanged({QPersistentModelIndex(parent)}, QAbstractItemModel::VerticalSortHint);
    std::vector<uint32_t> inverse(order.size());
    for (uint32_t row = 0; row < order.size(); ++row)
        inverse[order[row]] = row;
    // Persistent indexes (the selection, the current row) follow their records.
    QModelIndexList from, to;
    for (const QModelIndex& index : persistentIndexList()) {
        if (levelOf(index) != level || index.row() < offset)
            continue;
        from << index;
        to << createIndex(offset + int(inverse[level->recordAt(index.row())]), index.column(), level);
    }
    releaseInBackground(std::exchange(level->order, std::move(order)));
    releaseInBackground(std::exchange(level->inverse, std::move(inverse)));
    level->sortPending = false;
    changePersistentIndexList(from, to);
    emit layoutChanged({QPersistentModelIndex(parent)}, QAbstractItemModel::VerticalSortHint);
    emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void NodeTreeModel::noteVisibleRows(const QModelIndex& parent, int first, int last)
{
    Level* level = parent.isValid() ? kidLevel(*levelOf(parent), parent.row()) : m_top.get();
    if (!level->fill || level->fill->finished() || !level->order.empty())
        return;
    const int offset = int(level->nodes.size());
    first = std::max(first - offset, 0);
    last = std::min(last - offset, int(level->folder->childCount) - 1);
    if (last >= first)
        level->fill->setVisible(uint32_t(first), uint32_t(last));
}

bool NodeTreeModel::sortPending() const
{
    return m_top->sortPending;
}

bool NodeTreeModel::metaPending() const
{
    return (m_top->fill && !m_top->fill->finished()) || m_top->sortPending;
}

Qt::ItemFlags NodeTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) // the empty space: files dropped there go into the shown folder
        return m_root->path == "/" && !m_root->store ? Qt::NoItemFlags : Qt::ItemIsDropEnabled;
    // Section headers can be expanded but never selected, by click, keys or select-all.
    const Row row = rowAt(index);
    if (row.isHeader())
        return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (row.isDir())
        flags |= Qt::ItemIsDropEnabled;
    // Saying so spares the tree a look-up per row of whether the row is expanded, when it
    // lays out a folder's rows.
    if (!expandable(row))
        flags |= Qt::ItemNeverHasChildren;
    // A folder's entries can be renamed in place; drives and favourites rows cannot.
    if (row.record && index.column() == 0)
        flags |= Qt::ItemIsEditable;
    return flags;
}

QStringList NodeTreeModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

QMimeData* NodeTreeModel::mimeData(const QModelIndexList& indexes) const
{
    std::vector<std::string> paths;
    for (const QModelIndex& index : indexes) {
        if (index.column() != 0 || rowAt(index).isHeader())
            continue;
        paths.push_back(rowAt(index).path());
    }
    return paths.empty() ? nullptr : fileClipboardData(paths, ClipboardIntent::Copy);
}

Qt::DropActions NodeTreeModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

Qt::DropActions NodeTreeModel::supportedDragActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

bool NodeTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex& parent) const
{
    return data && m_drop && (flags(parent) & Qt::ItemIsDropEnabled) && fileClipboardRead(*data).has_value();
}

bool NodeTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
    const QModelIndex& parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // On a folder row: into it; between rows or on empty space: into the folder shown.
    const std::string folder = parent.isValid() && rowAt(parent).isDir() ? rowAt(parent).path() : m_root->path;
    m_drop(fileClipboardRead(*data)->paths, folder);
    return false; // the rows change when the disk does, never by the view's own move
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

QString NodeTreeModel::infoText(const Row& row) const
{
    if (row.record && !row.record->isDir()) {
        // A file's text comes from its record alone: no node is made for it.
        if (!row.metaKnown())
            return {};
        DirNode file;
        file.isDir = false;
        file.size = row.record->size;
        std::optional<RowInfo> info = RowInfoCache::shared().find(file, *m_context.settings);
        return info ? info->line : QString();
    }
    DirNodePtr made = row.record ? nodeStoreRecordNode(*row.store, *row.record) : DirNodePtr();
    std::optional<RowInfo> info = RowInfoCache::shared().find(made ? *made : *row.node, *m_context.settings);
    return info ? info->line : QString();
}

QIcon NodeTreeModel::icon(const Row& row) const
{
    if (row.node)
        return fileIconFor(*row.node);
    if (!row.record->isDir())
        return FileIcons::shared().iconFor(std::string(row.record->nameView()));
    DirNode folder;
    folder.isDir = true;
    folder.kind = "Folder";
    folder.path = row.path();
    return iconForNode(folder);
}

size_t NodeTreeModel::topSlotOf(const Level* level) const
{
    while (level->up && level->up != m_top.get())
        level = level->up;
    return level->slotInUp;
}

bool NodeTreeModel::applyFresh(const DirNodePtr& fresh, const FolderDiff& diff)
{
    Level& top = *m_top;
    if (!top.built || !top.folder || !fresh->store || diff.oldToNew.size() != top.folder->childCount)
        return false;
    const size_t offset = top.nodes.size();
    const NodeRecord& freshFolder = fresh->store->root();
    // Where an old slot lands, or nothing.
    auto slotAfter = [&](size_t slot) -> std::optional<size_t> {
        if (slot < offset)
            return slot;
        const int32_t to = diff.oldToNew[slot - offset];
        return to < 0 ? std::nullopt : std::optional<size_t>(offset + size_t(to));
    };
    emit layoutAboutToBeChanged({}, QAbstractItemModel::NoLayoutChangeHint);
    // Work out the persistent indexes' new places before anything moves: their rows are
    // read through the old order. A fresh read arrives sorted, so a record's place is
    // its row.
    QModelIndexList from, to;
    for (const QModelIndex& index : persistentIndexList()) {
        Level* level = levelOf(index);
        const size_t slot = level == &top ? top.slotOf(index.row()) : topSlotOf(level);
        const std::optional<size_t> moved = slotAfter(slot);
        from << index;
        if (!moved)
            to << QModelIndex();
        else if (level == &top)
            to << createIndex(int(*moved), index.column(), level);
        else
            to << index; // a row inside an opened folder: its level moves along below
    }
    // Opened folders keep their levels under their new slots; the levels of rows that
    // are gone are freed off the UI thread.
    std::unordered_map<size_t, std::unique_ptr<Level>> kids;
    for (auto& [slot, kid] : top.kids) {
        if (const std::optional<size_t> moved = slotAfter(slot)) {
            kid->slotInUp = *moved;
            kids.emplace(*moved, std::move(kid));
        } else {
            // Kept until the model goes: a read on its way may still name it.
            if (kid->fill)
                kid->fill->cancel();
            m_retired.push_back(std::move(kid));
        }
    }
    if (top.fill)
        top.fill->cancel();
    top.fill.reset();
    top.kids = std::move(kids);
    releaseInBackground(std::exchange(top.order, {}));
    releaseInBackground(std::exchange(top.inverse, {}));
    top.sortPending = false;
    top.owner = fresh;
    top.folder = &freshFolder;
    releaseInBackground(std::exchange(top.store, fresh->store));
    m_root = fresh;
    changePersistentIndexList(from, to);
    emit layoutChanged({}, QAbstractItemModel::NoLayoutChangeHint);
    startMeta(top);
    return true;
}
