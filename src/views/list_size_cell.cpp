#include "views/list_size_cell.h"

#include "views/node_tree_model.h"
#include "views/row_info_cache.h"

#include <QApplication>
#include <QPainter>

ListSizeCell::ListSizeCell(const NodeTreeModel& model, const BrondelSettings& settings, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_model(model)
    , m_settings(settings)
{
}

void ListSizeCell::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    // Only a folder's cell can hold a bar (a drive's space): a file's is plain text.
    DirNodePtr node = m_model.isFolder(index) ? m_model.nodeAt(index) : DirNodePtr();
    if (!node) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    // Only what was computed in the background: drawing never waits on a drive.
    std::optional<RowInfo> info = RowInfoCache::shared().find(*node, m_settings);
    if (!info || !info->cell.fraction) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const SizeCellContent& cell = info->cell;
    // Background and selection as the other cells draw them, then bar and two texts.
    QStyleOptionViewItem base = option;
    initStyleOption(&base, index);
    base.text.clear();
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &base, painter, base.widget);

    painter->save();
    const QRect r = option.rect.adjusted(4, 0, -4, 0);
    const int barWidth = std::max(24, r.width() / 3);
    QRectF bar(r.left(), r.center().y() - 3, barWidth, 6);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(option.palette.color(QPalette::Midlight));
    painter->drawRoundedRect(bar, 3, 3);
    QRectF used = bar;
    used.setWidth(bar.width() * std::clamp(*cell.fraction, 0.0, 1.0));
    painter->setBrush(*cell.fraction > 0.9 ? QColor(220, 80, 60) : option.palette.color(QPalette::Highlight));
    painter->drawRoundedRect(used, 3, 3);
    const bool selected = option.state & QStyle::State_Selected;
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    QRect textRect = r.adjusted(barWidth + 6, 0, 0, 0);
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
        option.fontMetrics.elidedText(cell.text, Qt::ElideRight, textRect.width() / 2));
    painter->setPen(option.palette.color(QPalette::Disabled, QPalette::Text));
    painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignRight,
        option.fontMetrics.elidedText(cell.free, Qt::ElideRight, textRect.width() / 2));
    painter->restore();
}
