#include "views/outline_row_map.h"

#include <QAbstractItemModel>

#include <algorithm>

// One expanded folder (or the invisible root). `starts[i]` is the visible place of kid
// i's own row among this node's visible rows: its row plus the rows its earlier expanded
// siblings show beneath them. Kept lazily: a change marks the nodes above it stale.
struct OutlineRowMap::Node {
    Node* up = nullptr;
    QPersistentModelIndex index;
    int row = 0;
    int childCount = 0;
    int total = 0; // visible rows beneath: childCount plus the kids' totals
    std::vector<std::unique_ptr<Node>> kids; // by row
    mutable std::vector<int> starts;
    mutable bool stale = true;

    size_t kidFrom(int r) const // the first kid at or after row r
    {
        return size_t(std::lower_bound(kids.begin(), kids.end(), r,
                           [](const std::unique_ptr<Node>& kid, int at) { return kid->row < at; })
            - kids.begin());
    }
};

namespace {

// The rows of `index` and of each folder above it, the top level first.
std::vector<int> rowChain(const QModelIndex& index)
{
    std::vector<int> rows;
    for (QModelIndex at = index; at.isValid(); at = at.parent())
        rows.push_back(at.row());
    std::reverse(rows.begin(), rows.end());
    return rows;
}

} // namespace

OutlineRowMap::OutlineRowMap(const QAbstractItemModel* model)
    : m_model(model)
    , m_root(std::make_unique<Node>())
{
    reset();
}

OutlineRowMap::~OutlineRowMap() = default;

int OutlineRowMap::rowCount() const
{
    return m_root->total;
}

QModelIndex OutlineRowMap::indexOf(const Node& node)
{
    return node.up ? QModelIndex(node.index) : QModelIndex();
}

const std::vector<int>& OutlineRowMap::startsOf(const Node& node) const
{
    if (node.stale) {
        node.starts.resize(node.kids.size());
        int extra = 0;
        for (size_t i = 0; i < node.kids.size(); ++i) {
            node.starts[i] = node.kids[i]->row + extra;
            extra += node.kids[i]->total;
        }
        node.stale = false;
    }
    return node.starts;
}

OutlineRowMap::Located OutlineRowMap::locate(int visual) const
{
    if (visual < 0 || visual >= m_root->total)
        return {};
    const Node* node = m_root.get();
    int v = visual;
    for (int depth = 0;; ++depth) {
        const std::vector<int>& starts = startsOf(*node);
        const auto after = std::upper_bound(starts.begin(), starts.end(), v);
        if (after == starts.begin())
            return {node, v, depth, false};
        const size_t i = size_t(after - starts.begin()) - 1;
        const Node& kid = *node->kids[i];
        if (v == starts[i])
            return {node, kid.row, depth, true};
        if (v <= starts[i] + kid.total) {
            v -= starts[i] + 1;
            node = &kid;
            continue;
        }
        return {node, v - (starts[i] - kid.row) - kid.total, depth, false};
    }
}

OutlineRowMap::Place OutlineRowMap::at(int visual) const
{
    const Located found = locate(visual);
    if (!found.node)
        return {};
    return {indexOf(*found.node), found.row, found.depth, found.expanded};
}

int OutlineRowMap::visualRow(const QModelIndex& index, int* depth) const
{
    if (!index.isValid() || index.model() != m_model)
        return -1;
    const std::vector<int> rows = rowChain(index);
    const Node* node = m_root.get();
    int base = 0;
    for (size_t k = 0; k < rows.size(); ++k) {
        const int r = rows[k];
        if (r < 0 || r >= node->childCount)
            return -1;
        const std::vector<int>& starts = startsOf(*node);
        const size_t i = node->kidFrom(r);
        const int extra = i > 0 ? starts[i - 1] - node->kids[i - 1]->row + node->kids[i - 1]->total : 0;
        const int v = base + r + extra;
        if (k + 1 == rows.size()) {
            if (depth)
                *depth = int(k);
            return v;
        }
        if (i == node->kids.size() || node->kids[i]->row != r)
            return -1; // a collapsed folder on the way
        base = v + 1;
        node = node->kids[i].get();
    }
    return -1;
}

OutlineRowMap::Node* OutlineRowMap::find(const QModelIndex& index) const
{
    if (index.isValid() && index.model() != m_model)
        return nullptr;
    Node* node = m_root.get();
    for (int r : rowChain(index)) {
        const size_t i = node->kidFrom(r);
        if (i == node->kids.size() || node->kids[i]->row != r)
            return nullptr;
        node = node->kids[i].get();
    }
    return node;
}

bool OutlineRowMap::isExpanded(const QModelIndex& index) const
{
    return index.isValid() && find(index) != nullptr;
}

std::vector<QModelIndex> OutlineRowMap::expandedFolders() const
{
    std::vector<QModelIndex> out;
    std::vector<const Node*> todo{m_root.get()};
    while (!todo.empty()) {
        const Node* node = todo.back();
        todo.pop_back();
        if (node->up)
            out.push_back(node->index);
        for (auto kid = node->kids.rbegin(); kid != node->kids.rend(); ++kid)
            todo.push_back(kid->get());
    }
    return out;
}

void OutlineRowMap::adjust(Node& node, int delta)
{
    for (Node* at = &node; at; at = at->up) {
        at->total += delta;
        at->stale = true;
    }
}

bool OutlineRowMap::expand(const QModelIndex& index)
{
    if (!index.isValid() || !m_model)
        return false;
    Node* parent = find(index.parent());
    const int row = index.row();
    if (!parent || row >= parent->childCount)
        return false;
    const size_t i = parent->kidFrom(row);
    if (i < parent->kids.size() && parent->kids[i]->row == row)
        return false;
    auto kid = std::make_unique<Node>();
    kid->up = parent;
    kid->index = index.siblingAtColumn(0);
    kid->row = row;
    kid->childCount = m_model->rowCount(kid->index);
    kid->total = kid->childCount;
    const int shown = kid->total;
    parent->kids.insert(parent->kids.begin() + qsizetype(i), std::move(kid));
    ++m_expanded;
    adjust(*parent, shown);
    return true;
}

void OutlineRowMap::forget(const Node& node)
{
    --m_expanded;
    for (const auto& kid : node.kids)
        forget(*kid);
}

bool OutlineRowMap::collapse(const QModelIndex& index)
{
    Node* node = index.isValid() ? find(index) : nullptr;
    if (!node)
        return false;
    Node& parent = *node->up;
    const int hidden = node->total;
    forget(*node);
    parent.kids.erase(parent.kids.begin() + qsizetype(parent.kidFrom(node->row)));
    adjust(parent, -hidden);
    return true;
}

void OutlineRowMap::rowsInserted(const QModelIndex& parent, int first, int last)
{
    Node* node = find(parent);
    if (!node || first < 0 || last < first)
        return;
    const int count = last - first + 1;
    for (size_t i = node->kidFrom(first); i < node->kids.size(); ++i)
        node->kids[i]->row += count;
    node->childCount += count;
    adjust(*node, count);
}

void OutlineRowMap::rowsRemoved(const QModelIndex& parent, int first, int last)
{
    Node* node = find(parent);
    if (!node || first < 0 || last < first)
        return;
    const int count = last - first + 1;
    const size_t from = node->kidFrom(first);
    const size_t to = node->kidFrom(last + 1);
    int hidden = 0;
    for (size_t i = from; i < to; ++i) {
        hidden += node->kids[i]->total;
        forget(*node->kids[i]);
    }
    node->kids.erase(node->kids.begin() + qsizetype(from), node->kids.begin() + qsizetype(to));
    for (size_t i = from; i < node->kids.size(); ++i)
        node->kids[i]->row -= count;
    node->childCount -= count;
    adjust(*node, -count - hidden);
}

void OutlineRowMap::layoutChanged()
{
    // Each expanded folder is placed again from its persistent index, shallower ones
    // first, under its parent as it is now (a folder moved into another expanded folder
    // stays open there). One whose parent is collapsed, or whose index the model no
    // longer gives for its place (a row gone along with its folder), is forgotten.
    std::vector<std::pair<int, QPersistentModelIndex>> folders;
    std::vector<const Node*> todo{m_root.get()};
    while (!todo.empty()) {
        const Node* at = todo.back();
        todo.pop_back();
        for (const auto& kid : at->kids)
            todo.push_back(kid.get());
        if (at->up && at->index.isValid())
            folders.emplace_back(int(rowChain(at->index).size()), at->index);
    }
    std::stable_sort(folders.begin(), folders.end(),
        [](const auto& a, const auto& b) { return a.first < b.first; });
    m_root = std::make_unique<Node>();
    reset();
    for (const auto& [depth, index] : folders) {
        const QModelIndex parent = index.parent();
        if (index == m_model->index(index.row(), 0, parent))
            expand(index);
    }
}

void OutlineRowMap::reset()
{
    m_root->kids.clear();
    m_root->childCount = m_model ? m_model->rowCount() : 0;
    m_root->total = m_root->childCount;
    m_root->stale = true;
    m_expanded = 0;
}

int OutlineRowMap::runEnd(int visual) const
{
    const Located at = locate(visual);
    if (!at.node)
        return -1;
    const size_t next = at.node->kidFrom(at.row);
    const int last = next < at.node->kids.size() ? at.node->kids[next]->row : at.node->childCount - 1;
    return visual + (last - at.row);
}

QItemSelection OutlineRowMap::selection(int from, int to, int lastColumn) const
{
    QItemSelection out;
    from = std::max(from, 0);
    to = std::min(to, rowCount() - 1);
    for (int v = from; v <= to;) {
        const Located at = locate(v);
        const int runLast = std::min(runEnd(v), to);
        const QModelIndex parent = indexOf(*at.node);
        int first = at.row;
        int last = at.row + (runLast - v);
        auto selectable = [&](int row) {
            return m_model->flags(m_model->index(row, 0, parent)) & Qt::ItemIsSelectable;
        };
        while (first <= last && !selectable(first))
            ++first;
        while (last >= first && !selectable(last))
            --last;
        if (first <= last)
            out.append(QItemSelectionRange(m_model->index(first, 0, parent), m_model->index(last, lastColumn, parent)));
        v = runLast + 1;
    }
    return out;
}

bool OutlineRowMap::consistent(const Node& node, int& count) const
{
    int total = node.childCount;
    for (size_t i = 0; i < node.kids.size(); ++i) {
        const Node& kid = *node.kids[i];
        if (kid.up != &node || kid.row < 0 || kid.row >= node.childCount || (i > 0 && node.kids[i - 1]->row >= kid.row))
            return false;
        if (!kid.index.isValid() || kid.index.row() != kid.row || kid.index.parent() != indexOf(node)
            || m_model->rowCount(kid.index) != kid.childCount)
            return false;
        if (!consistent(kid, count))
            return false;
        total += kid.total;
        ++count;
    }
    if (!node.stale) {
        int extra = 0;
        for (size_t i = 0; i < node.kids.size(); ++i) {
            if (node.starts.size() != node.kids.size() || node.starts[i] != node.kids[i]->row + extra)
                return false;
            extra += node.kids[i]->total;
        }
    }
    return total == node.total;
}

bool OutlineRowMap::isConsistent() const
{
    if (!m_model)
        return m_root->total == 0 && m_root->kids.empty();
    int count = 0;
    return m_root->childCount == m_model->rowCount() && consistent(*m_root, count) && count == m_expanded;
}
