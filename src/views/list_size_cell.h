#pragma once
// The size column of the list: a usage bar with "used" and "free" texts for a drive, the
// info line for anything else (a folder's size, or "…" while it is computed).

#include "config/brondel_settings.h"

#include <QStyledItemDelegate>

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
