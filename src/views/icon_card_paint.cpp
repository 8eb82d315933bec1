#include "views/icon_card_paint.h"

#include "fs/fmt.h"
#include "views/icon_layout.h"

#include <QFile>
#include <cmath>

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

QColor iconHueColor(double hue)
{
    return QColor::fromHsvF(float(hue), 0.75f, 0.62f, 1.0f);
}

QPixmap iconTinted(const QIcon& icon, int edge, std::optional<double> hue, qreal dpr)
{
    QPixmap pixmap = icon.pixmap(QSize(edge, edge), dpr);
    if (!hue || pixmap.isNull())
        return pixmap;
    QPainter p(&pixmap);
    p.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    QColor tint = iconHueColor(*hue);
    tint.setAlphaF(0.45f);
    p.fillRect(pixmap.rect(), tint);
    return pixmap;
}

QRect iconChevronRect(const QRect& header)
{
    return QRect(header.left(), header.top() + (header.height() - 20) / 2, 20, 20);
}

QRect iconTuneRect(const QRect& header)
{
    return QRect(header.right() - 28, header.top() + (header.height() - 22) / 2, 28, 22);
}

QRect iconShowAllRect(const QRect& sub, const QString& text, const QFont& font)
{
    const int width = QFontMetrics(font).horizontalAdvance(text) + 8;
    return QRect(sub.right() - width, sub.top(), width, sub.height());
}

void iconPaintCardHeader(QPainter& p, const QRect& rect, const IconHeaderLook& look, const QPalette& palette)
{
    p.save();
    QFont font = p.font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.15);
    p.setFont(font);
    p.setPen(palette.color(QPalette::Text));
    QRect text = rect;
    if (look.chevron) {
        const QRect chev = look.chevronRect;
        p.setRenderHint(QPainter::Antialiasing);
        p.drawEllipse(chev.adjusted(2, 2, -2, -2));
        QPainterPath arrow;
        const QPointF c = QRectF(chev).center();
        const qreal d = look.collapsed ? 3 : -3; // down when collapsed (Expand), up when open (Collapse)
        arrow.moveTo(c.x() - 4, c.y() - d / 2);
        arrow.lineTo(c.x(), c.y() + d / 2);
        arrow.lineTo(c.x() + 4, c.y() - d / 2);
        p.drawPath(arrow);
        text.setLeft(chev.right() + 6);
    }
    if (look.tune) {
        text.setRight(look.tuneRect.left() - 4);
        p.drawText(look.tuneRect, Qt::AlignCenter, QStringLiteral("⋯"));
    }
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(font).elidedText(look.text, Qt::ElideRight, text.width()));
    p.restore();
}

void iconPaintSubHeader(QPainter& p, const QRect& rect, const IconSubLook& look, const QPalette& palette)
{
    p.save();
    QRect text = rect;
    if (look.hue) {
        const QColor colour = iconHueColor(*look.hue);
        p.fillRect(QRect(rect.left(), rect.top() + 6, 4, rect.height() - 12), colour);
        text.setLeft(rect.left() + 10);
        p.setPen(colour.darker(115));
    } else {
        p.setPen(palette.color(QPalette::PlaceholderText));
    }
    if (!look.showAll.isEmpty())
        text.setRight(look.showAllRect.left() - 6);
    QFont font = p.font();
    font.setBold(true);
    p.setFont(font);
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(font).elidedText(look.text, Qt::ElideRight, text.width()));
    if (!look.showAll.isEmpty()) {
        p.setFont(QFont(font.family(), font.pointSize()));
        p.setPen(palette.color(QPalette::Link));
        p.drawText(look.showAllRect, Qt::AlignRight | Qt::AlignVCenter, look.showAll);
    }
    p.restore();
}

namespace {

void paintSelection(QPainter& p, const QRect& area, const IconItemLook& look, const QPalette& palette)
{
    if (look.selected) {
        QColor fill = palette.color(look.focused ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
        fill.setAlphaF(look.focused ? 0.35f : 0.2f);
        p.setPen(Qt::NoPen);
        p.setBrush(fill);
        p.drawRoundedRect(area, 6, 6);
    }
    if (look.current && look.focused) {
        p.setPen(QPen(palette.color(QPalette::Highlight), 1, Qt::DotLine));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(area.adjusted(0, 0, -1, -1), 6, 6);
    }
}

void paintPicture(QPainter& p, const QRect& box, const IconItemLook& look)
{
    if (!look.preview.isNull()) {
        const QSize fit = look.preview.size().scaled(box.size(), Qt::KeepAspectRatio);
        const QRect target(box.left() + (box.width() - fit.width()) / 2, box.top() + (box.height() - fit.height()) / 2,
            fit.width(), fit.height());
        p.drawImage(target, look.preview);
        return;
    }
    p.drawPixmap(box, look.icon);
}

} // namespace

QRect iconLabelRect(const QRect& cell, int iconEdge, IconShape shape, const QFontMetrics& metrics)
{
    if (shape == IconShape::ListRow) {
        const int left = cell.left() + 6 + iconEdge + 9; // right of the icon
        return QRect(left, cell.top() + cell.height() / 2 - metrics.height(), cell.right() - left - 6, metrics.height());
    }
    const QRect area = cell.adjusted(3, 3, -3, -3);
    return QRect(area.left() + 2, cell.top() + 6 + iconEdge + 3, area.width() - 4, metrics.height() * 2 + 2);
}

void iconPaintItem(QPainter& p, const QRect& cell, const IconItemLook& look, const QPalette& palette)
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect area = cell.adjusted(3, 3, -3, -3);
    paintSelection(p, area, look, palette);
    const QRect box(cell.left() + (cell.width() - look.iconEdge) / 2, cell.top() + 6, look.iconEdge, look.iconEdge);
    paintPicture(p, box, look);
    const QFontMetrics metrics(p.font());
    const QRect text = iconLabelRect(cell, look.iconEdge, IconShape::Item, metrics);
    // Two lines at most: a longer name loses its middle.
    QString shown = look.name;
    if (metrics.horizontalAdvance(look.name) > text.width() * 2 - metrics.averageCharWidth())
        shown = metrics.elidedText(look.name, Qt::ElideMiddle, text.width() * 2 - metrics.averageCharWidth() * 2);
    p.setPen(palette.color(QPalette::Text));
    p.drawText(text, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWrapAnywhere, shown);
    p.restore();
}

void iconPaintListRow(QPainter& p, const QRect& cell, const IconItemLook& look, const QPalette& palette)
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    const QRect area = cell.adjusted(0, 2, 0, -2);
    paintSelection(p, area, look, palette);
    const QRect box(cell.left() + 6, cell.top() + (cell.height() - look.iconEdge) / 2, look.iconEdge, look.iconEdge);
    paintPicture(p, box, look);
    const QFontMetrics metrics(p.font());
    const QRect name = iconLabelRect(cell, look.iconEdge, IconShape::ListRow, metrics);
    p.setPen(palette.color(QPalette::Text));
    p.drawText(name, Qt::AlignLeft | Qt::AlignVCenter, metrics.elidedText(look.name, Qt::ElideMiddle, name.width()));
    p.setPen(palette.color(QPalette::PlaceholderText));
    p.drawText(name.translated(0, metrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        metrics.elidedText(look.detail, Qt::ElideRight, name.width()));
    p.restore();
}

void iconPaintTile(QPainter& p, const QRect& cell, const IconItemLook& look, const DriveTile& tile,
    const QPalette& palette)
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    const QRect area = cell.adjusted(0, 0, -kIconMargin, -kIconMargin);
    p.setPen(palette.color(QPalette::Mid));
    p.setBrush(palette.color(QPalette::AlternateBase));
    p.drawRoundedRect(area, 8, 8);
    paintSelection(p, area, look, palette);
    const QFontMetrics metrics(p.font());
    const QRect box(area.left() + 8, area.top() + 8, 32, 32);
    p.drawPixmap(box, look.icon);
    p.setPen(palette.color(QPalette::Text));
    const QRect name(box.right() + 8, area.top() + 8, area.right() - box.right() - 16, metrics.height());
    p.drawText(name, Qt::AlignLeft | Qt::AlignVCenter, metrics.elidedText(look.name, Qt::ElideRight, name.width()));
    p.setPen(palette.color(QPalette::PlaceholderText));
    const QString figures = !tile.responding ? QStringLiteral("not responding")
        : tile.known ? QString::fromStdString(fmtHuman(tile.free) + " free of " + fmtHuman(tile.total))
                     : QString();
    p.drawText(name.translated(0, metrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
        metrics.elidedText(figures, Qt::ElideRight, name.width()));
    // The usage bar: one stretch per legend row, in turning hues, the free space left plain.
    const QRect bar(area.left() + 8, area.top() + 48, area.width() - 16, 8);
    p.setPen(Qt::NoPen);
    p.setBrush(palette.color(QPalette::Midlight));
    p.drawRoundedRect(bar, 3, 3);
    int y = bar.bottom() + 8;
    double x = bar.left();
    for (size_t i = 0; i < tile.legend.size(); ++i) {
        const QColor colour = iconHueColor(std::fmod(0.08 + 0.13 * double(i), 1.0));
        if (tile.total > 0) {
            const double width = double(bar.width()) * double(tile.legend[i].second) / double(tile.total);
            p.setBrush(colour);
            p.drawRect(QRectF(x, bar.top(), width, bar.height()));
            x += width;
        }
        const QRect line(bar.left(), y, bar.width(), 18);
        p.setBrush(colour);
        p.drawEllipse(QRect(line.left(), line.top() + 5, 8, 8));
        p.setPen(palette.color(QPalette::Text));
        const QString size = QString::fromStdString(fmtHuman(tile.legend[i].second));
        const int sizeWidth = metrics.horizontalAdvance(size);
        p.drawText(line.adjusted(14, 0, -sizeWidth - 6, 0), Qt::AlignLeft | Qt::AlignVCenter,
            metrics.elidedText(QFile::decodeName(QByteArray::fromStdString(tile.legend[i].first)), Qt::ElideRight,
                line.width() - sizeWidth - 20));
        p.setPen(palette.color(QPalette::PlaceholderText));
        p.drawText(line, Qt::AlignRight | Qt::AlignVCenter, size);
        p.setPen(Qt::NoPen);
        y += 18;
    }
    p.restore();
}
