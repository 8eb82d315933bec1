#pragma once
// The column mode's source: the first column lists each favourites header followed by
// its entries, then the root's children; each further column lists the children of
// the folder selected to its left. Headers are leaves and cannot be selected.

#include "views/node_tree_model.h"

class ColumnSource : public NodeTreeModel {
    Q_OBJECT
public:
    using NodeTreeModel::NodeTreeModel;

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    // A row's text: the name, then "  (" info ")" when the info line has something.
    QString rowText(const Row& row) const;

protected:
    std::vector<DirNodePtr> topNodes() const override;
    bool headersExpand() const override { return false; }
};
