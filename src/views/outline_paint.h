#pragma once
// Drawing an outline's visible rows: only the rows that intersect the exposed area are
// looked up (through the row map) and drawn, each cell by the view's delegate for it,
// with the folders' disclosure arrows, the current row's focus frame and the drop
// indicator.

#include <QRect>
#include <QStyleOptionViewItem>

#include <functional>

class OutlineRowMap;
class QAbstractItemModel;
class QAbstractItemView;
class QHeaderView;
class QPainter;

struct OutlinePaintFrame {
    const QAbstractItemView* view = nullptr; // delegates, selection, current row, style
    const QAbstractItemModel* model = nullptr;
    const OutlineRowMap* rows = nullptr;
    const QHeaderView* header = nullptr;
    QStyleOptionViewItem option; // the view's item option
    int rowHeight = 1;
    int indentation = 0;
    int verticalOffset = 0;
    std::function<bool(const QModelIndex&)> spans; // a row drawn across all columns
    QRect dropRect;                                // empty: no drop indicator
};

void outlinePaint(QPainter& painter, const OutlinePaintFrame& frame, const QRect& exposed);
