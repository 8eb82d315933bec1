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

    // The rows under a node, as shown: a header's entries as stored, a folder's
    // children in the common order, and for the root the headers first.
    std::vector<DirNodePtr> shown(const DirNodePtr& node) const;

protected:
    std::vector<DirNodePtr> topRows() const override;
    bool expandable(const DirNode& node) const override;
};
