#pragma once
// The shared base of the list and column sources: a tree whose folders read their
// children lazily, in the background, when a view first asks for them (canFetchMore /
// fetchMore). Each model keeps its own rows, so panes that share nodes never see rows
// change under them without a notification.
//
// A folder of a million entries costs no object per row: the rows under one parent are
// a Level, which holds a few DirNodes (favourites headers and their entries, the
// Computer root's drives) followed by the records of a folder read into the compact
// store. An index points at its Level and carries its row; only the rows a view opens
// get a Level of their own. The folder's names come first: its records' sizes and dates
// are read afterwards (the visible rows first) and metaArrived() asks the views to draw
// again; a sort by size or date is made again once they are all in.

#include "fs/dir_node.h"
#include "fs/folder_diff.h"
#include "fs/node_meta_fill.h"
#include "fs/node_store.h"
#include "services/browser_context.h"

#include <QAbstractItemModel>
#include <QIcon>

#include <functional>
#include <string>

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

class NodeTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // `headers` are the favourites section headers (each with its entries as children).
    NodeTreeModel(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context,
        QObject* parent = nullptr);
    ~NodeTreeModel() override;

    const DirNodePtr& rootNode() const { return m_root; }
    // The row as a node of its own (a copy for a row of the compact store).
    DirNodePtr nodeAt(const QModelIndex& index) const;
    QModelIndex indexOfPath(const std::string& path) const; // top level only
    bool isFolder(const QModelIndex& index) const { return index.isValid() && rowAt(index).isDir(); }
    // What a tally of many rows needs, without making a node per row.
    struct Facts {
        bool header = false;
        bool folder = false;
        int64_t size = 0; // a file's, once known
        bool sizeKnown = true;
    };
    Facts factsAt(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Drag and drop: rows leave as files (services/file_clipboard); files dropped on a
    // folder row go into it, anywhere else into the shown folder, through `drop`
    // (paths, target folder), which decides between copy and move.
    using Drop = std::function<void(std::vector<std::string> paths, std::string folder)>;
    void setDrop(Drop drop) { m_drop = std::move(drop); }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
        const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
        const QModelIndex& parent) override;

    // The rows [first, last] under `parent` are on screen: their sizes and dates are read first.
    void noteVisibleRows(const QModelIndex& parent, int first, int last);
    // Whether the top level still waits for sizes and dates its sort needs.
    bool sortPending() const;
    // Whether sizes and dates of the top level are still being read.
    bool metaPending() const;

    // The shown folder was read again: `fresh` is the new read and `diff` matches the
    // records shown now to its records. The top level takes the new rows in one layout
    // change, in which the selection, the current row and the opened folders follow their
    // names and rows that are gone drop out. False when the top level shows no records
    // of the same folder (the caller builds the view again).
    bool applyFresh(const DirNodePtr& fresh, const FolderDiff& diff);

signals:
    void childrenArrived(const QModelIndex& parent);
    // Sizes and dates of some rows arrived: the views draw their rows again.
    void metaArrived();

protected:
    // One row, whichever form it has.
    struct Row {
        const DirNode* node = nullptr;
        const NodeRecord* record = nullptr;
        const NodeStore* store = nullptr;

        bool isHeader() const { return node && node->isSectionHeader; }
        bool isDir() const { return node ? node->isDir : record->isDir(); }
        QString name() const;
        std::string path() const;
        // Size and date, once known (a names-first row waits for them).
        bool metaKnown() const;
        std::optional<int64_t> date() const;
        QString kind() const;
    };

    // The DirNodes at the top, before the root's own entries: the subclasses decide where
    // the headers go.
    virtual std::vector<DirNodePtr> topNodes() const = 0;
    // Whether a favourites header opens to its entries.
    virtual bool headersExpand() const = 0;

    const BrowserContext& context() const { return m_context; }
    const std::vector<DirNodePtr>& headers() const { return m_headers; }
    Row rowAt(const QModelIndex& index) const;
    // Font and colour of a section header row (semibold, tinted with its hue).
    static QVariant headerStyle(const DirNode& header, int role);
    // The text of a row's info line ("" when there is none, or not yet: a folder's is
    // computed in the background and RowInfoCache::changed() announces it).
    QString infoText(const Row& row) const;
    QIcon icon(const Row& row) const;

private:
    struct Level;
    Level* levelOf(const QModelIndex& index) const; // the level the index's row belongs to
    Level* kidsOf(const QModelIndex& parent) const; // the level of the parent's rows (built)
    Level* kidLevel(Level& level, int row) const;   // made on first use, not yet built
    void build(Level& level) const;
    bool fillLevel(Level& level) const; // its rows from its owner or folder; false: not read yet
    bool expandable(const Row& row) const;
    void adopt(Level* level, const QModelIndex& parent, const DirNodePtr& fresh);
    void startMeta(Level& level);
    void metaDone(Level* level);
    void resorted(Level* level, std::vector<uint32_t> order);
    // The top-level slot a level hangs from (its own slot for a top-level row's level).
    size_t topSlotOf(const Level* level) const;

    DirNodePtr m_root;
    std::vector<DirNodePtr> m_headers;
    const BrowserContext& m_context;
    std::unique_ptr<Level> m_top;
    std::vector<std::unique_ptr<Level>> m_retired; // levels of rows gone from the folder
    Drop m_drop;
};
