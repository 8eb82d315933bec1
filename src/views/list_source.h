#pragma once
// The list mode's outline: the favourites sections as group rows, then the root's
// contents; every folder expands in place. Columns "name", "date", "size", "kind".

#include "views/node_tree_model.h"

class ListSource : public NodeTreeModel {
    Q_OBJECT
public:
    enum Column { Name, Date, Size, Kind, ColumnCount };

    using NodeTreeModel::NodeTreeModel;

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

protected:
    std::vector<DirNodePtr> topNodes() const override { return headers(); }
    bool headersExpand() const override { return true; }
};
