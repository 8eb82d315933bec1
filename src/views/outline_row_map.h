#pragma once
// The visible order of an outline's rows: the top-level rows, each expanded folder's
// children spliced in after it, recursively. Only the expanded folders are stored (their
// row under their parent, their child count, and the visible rows beneath them), so a
// million top-level rows cost nothing here, and turning a visible row into its place in
// the model (or back) costs O(depth · log e) for e expanded folders, never O(rows).
//
// The map is told about the model's changes by its owner (rows inserted or removed
// under any parent shift the expanded folders after them; a move or layout change is
// re-derived from the folders' persistent indexes; a reset forgets them).

#include <QItemSelection>
#include <QPersistentModelIndex>

#include <memory>
#include <vector>

class QAbstractItemModel;

class OutlineRowMap {
public:
    explicit OutlineRowMap(const QAbstractItemModel* model = nullptr);
    ~OutlineRowMap();
    OutlineRowMap(const OutlineRowMap&) = delete;
    OutlineRowMap& operator=(const OutlineRowMap&) = delete;

    // A visible row's place in the model.
    struct Place {
        QModelIndex parent; // invalid at the top level
        int row = -1;
        int depth = 0;      // 0 at the top level
        bool expanded = false;
        bool valid() const { return row >= 0; }
    };

    int rowCount() const; // visible rows
    Place at(int visual) const;
    // The visible row of `index` (any column), or -1 when a folder above it is collapsed.
    int visualRow(const QModelIndex& index, int* depth = nullptr) const;
    bool isExpanded(const QModelIndex& index) const;
    int expandedCount() const { return m_expanded; }
    // The last visible row of the run that `visual` starts: the rows under one parent
    // that follow each other on screen, up to the next expanded folder's own row.
    int runEnd(int visual) const;
    // The expanded folders, each before its expanded descendants.
    std::vector<QModelIndex> expandedFolders() const;

    // Shows the folder's children after it; false when it is already expanded, is not
    // a row, or a folder above it is collapsed.
    bool expand(const QModelIndex& index);
    // Hides its children and forgets which of its descendants were expanded.
    bool collapse(const QModelIndex& index);

    // The visible rows [from, to] as selection ranges of columns [0, lastColumn]: one
    // range per run of rows under one parent, so a range over a million top-level rows
    // is one range. Rows that cannot be selected (section headers) are left out at the
    // ends of each run.
    QItemSelection selection(int from, int to, int lastColumn) const;

    // The model's changes, reported after the model made them.
    void rowsInserted(const QModelIndex& parent, int first, int last);
    void rowsRemoved(const QModelIndex& parent, int first, int last);
    void layoutChanged(); // also after rows moved
    void reset();

    // Every stored count and row agrees with the model and with each other.
    bool isConsistent() const;

private:
    struct Node;
    struct Located {
        const Node* node = nullptr;
        int row = -1;
        int depth = 0;
        bool expanded = false;
    };
    Located locate(int visual) const;
    Node* find(const QModelIndex& index) const; // the node of an expanded folder (root: invalid)
    static QModelIndex indexOf(const Node& node);
    // A node's rows or kids changed by `delta` visible rows: its ancestors follow.
    void adjust(Node& node, int delta);
    void forget(const Node& node); // a node and its descendants leave the count
    const std::vector<int>& startsOf(const Node& node) const;
    bool consistent(const Node& node, int& count) const;

    const QAbstractItemModel* m_model;
    std::unique_ptr<Node> m_root;
    int m_expanded = 0;
};
