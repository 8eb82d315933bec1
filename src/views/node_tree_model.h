#pragma once
// The shared base of the list and column sources: a tree of DirNodes whose folders read
// their children lazily, in the background, when a view first asks for them
// (canFetchMore / fetchMore). Each model keeps its own rows, so panes that share nodes
// never see rows change under them without a notification.

#include "fs/dir_node.h"
#include "window/browser_context.h"

#include <QAbstractItemModel>

#include <memory>
#include <vector>

class NodeTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // `headers` are the favourites section headers (each with its entries as children).
    NodeTreeModel(DirNodePtr root, std::vector<DirNodePtr> headers, const BrowserContext& context,
        QObject* parent = nullptr);
    ~NodeTreeModel() override;

    const DirNodePtr& rootNode() const { return m_root; }
    DirNodePtr nodeAt(const QModelIndex& index) const;
    QModelIndex indexOfPath(const std::string& path) const; // top level only

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Tells the views that the computed texts of these rows may have changed.
    void reloadRows(const QModelIndexList& indexes, int column);

signals:
    void childrenArrived(const QModelIndex& parent);

protected:
    struct Item {
        DirNodePtr node;
        Item* parent = nullptr;
        int row = 0;
        bool built = false;    // kids made from the node
        bool fetching = false; // a background read is on its way
        std::vector<std::unique_ptr<Item>> kids;
    };

    // The rows under the model's root: the subclasses decide where the headers go.
    virtual std::vector<DirNodePtr> topRows() const = 0;
    // Whether a row may have rows of its own.
    virtual bool expandable(const DirNode& node) const = 0;
    // The rows under any other node.
    std::vector<DirNodePtr> childRows(const DirNode& node) const;

    const BrowserContext& context() const { return m_context; }
    const std::vector<DirNodePtr>& headers() const { return m_headers; }
    Item* itemAt(const QModelIndex& index) const;
    // Font and colour of a section header row (semibold, tinted with its hue).
    static QVariant headerStyle(const DirNode& header, int role);
    // The text of a row's info line ("" when there is none, or not yet: a folder's is
    // computed in the background and RowInfoCache::changed() announces it).
    QString infoText(const DirNode& node) const;

private:
    void build(Item& item) const;
    static void fill(Item& item, std::vector<DirNodePtr> rows);
    void adopt(Item* item, const QModelIndex& parent, const DirNodePtr& fresh);

    DirNodePtr m_root;
    std::vector<DirNodePtr> m_headers;
    const BrowserContext& m_context;
    mutable Item m_top;
};
