#include "views/outline_paint.h"

#include "views/outline_row_map.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QPainter>

#include <algorithm>

namespace {

void paintArrow(QPainter& painter, const OutlinePaintFrame& f, const QRect& rect, const QStyleOptionViewItem& option,
    bool open)
{
    QStyleOption branch;
    branch.initFrom(f.view);
    branch.palette = option.palette;
    branch.rect = rect;
    branch.state = QStyle::State_Item | QStyle::State_Children | (option.state & QStyle::State_Selected);
    if (open)
        branch.state |= QStyle::State_Open;
    f.view->style()->drawPrimitive(QStyle::PE_IndicatorBranch, &branch, &painter, f.view);
}

} // namespace

void outlinePaint(QPainter& painter, const OutlinePaintFrame& f, const QRect& exposed)
{
    const QAbstractItemView& view = *f.view;
    const QItemSelectionModel* selection = view.selectionModel();
    const QModelIndex current = view.currentIndex();
    const bool focused = view.hasFocus();
    const int first = std::max(0, (exposed.top() + f.verticalOffset) / f.rowHeight);
    const int last = std::min(f.rows->rowCount() - 1, (exposed.bottom() + f.verticalOffset) / f.rowHeight);
    const int left = f.header->sectionViewportPosition(0);
    const int width = std::max(f.header->length(), view.viewport()->width() - left);
    const int columns = f.model->columnCount();
    const QPalette::ColorGroup group = !(f.option.state & QStyle::State_Enabled) ? QPalette::Disabled
        : (f.option.state & QStyle::State_Active)                               ? QPalette::Active
                                                                                : QPalette::Inactive;
    for (int v = first; v <= last; ++v) {
        const OutlineRowMap::Place place = f.rows->at(v);
        const QModelIndex index = f.model->index(place.row, 0, place.parent);
        if (!index.isValid())
            continue;
        const QRect row(left, v * f.rowHeight - f.verticalOffset, width, f.rowHeight);
        QStyleOptionViewItem option = f.option;
        const bool selected = selection && selection->isSelected(index);
        if (selected) {
            option.state |= QStyle::State_Selected;
            painter.fillRect(row, option.palette.brush(group, QPalette::Highlight));
        }
        const bool span = f.spans && f.spans(index);
        const int indent = (place.depth + 1) * f.indentation;
        for (int column = 0; column < (span ? 1 : columns); ++column) {
            if (f.header->isSectionHidden(column))
                continue;
            QRect cell(f.header->sectionViewportPosition(column), row.top(), f.header->sectionSize(column), f.rowHeight);
            if (span)
                cell.setRight(left + f.header->length() - 1);
            if (column == 0)
                cell.setLeft(cell.left() + indent);
            if (!cell.intersects(exposed) || cell.width() <= 0)
                continue;
            const QModelIndex at = column ? f.model->index(place.row, column, place.parent) : index;
            option.rect = cell;
            view.itemDelegateForIndex(at)->paint(&painter, option, at);
        }
        if (f.model->hasChildren(index))
            paintArrow(painter, f, QRect(left + place.depth * f.indentation, row.top(), f.indentation, f.rowHeight),
                option, place.expanded);
        if (focused && current.isValid() && current.row() == place.row && current.parent() == place.parent) {
            QStyleOptionFocusRect frame;
            frame.QStyleOption::operator=(option);
            frame.rect = row;
            frame.state |= QStyle::State_KeyboardFocusChange | QStyle::State_HasFocus;
            frame.backgroundColor = option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
            view.style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, &view);
        }
    }
    if (!f.dropRect.isEmpty()) {
        QStyleOption drop;
        drop.initFrom(f.view);
        drop.rect = f.dropRect;
        view.style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &drop, &painter, &view);
    }
}
