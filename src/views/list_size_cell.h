#pragma once
// The size column of the list: a usage bar with "used" and "free" texts for a drive, the
// info line for anything else (a folder's size, or "…" while it is computed).

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <QStyledItemDelegate>

#include <optional>

struct SizeCellContent {
    std::optional<double> fraction; // the bar; absent hides it and the free text
    QString text;                   // left text
    QString free;                   // right text
};

// What a size cell shows for a node, computed on the calling thread: it may ask the disk
// about a folder, so the views take it from RowInfoCache instead.
SizeCellContent listSizeCellFill(const DirNode& node, const BrondelSettings& settings);

class NodeTreeModel;

class ListSizeCell : public QStyledItemDelegate {
    Q_OBJECT
public:
    ListSizeCell(const NodeTreeModel& model, const BrondelSettings& settings, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const NodeTreeModel& m_model;
    const BrondelSettings& m_settings;
};
