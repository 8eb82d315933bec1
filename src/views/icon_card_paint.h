#pragma once
// Drawing the icon view's pieces: card headers, sub-headers, items in their three
// shapes (icon with name, list row, drive breakdown tile). Each takes the rectangle to
// fill and the values to show; none looks anything up on the disk.

#include "views/icon_card_data.h"

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QRect>
#include <QString>

#include <optional>

class QFontMetrics;
class QPainter;
class QPalette;

// The colour of a section's hue (as the list view's section rows have it).
QColor iconHueColor(double hue);

// An icon tinted with the section's hue (folders of a coloured favourites section).
QPixmap iconTinted(const QIcon& icon, int edge, std::optional<double> hue, qreal dpr);

struct IconHeaderLook {
    QString text;
    bool chevron = false;
    bool collapsed = false;
    bool tune = false;
    QRect chevronRect;
    QRect tuneRect;
};
void iconPaintCardHeader(QPainter& p, const QRect& rect, const IconHeaderLook& look, const QPalette& palette);

struct IconSubLook {
    QString text;
    std::optional<double> hue;
    QString showAll; // "" for none
    QRect showAllRect;
};
void iconPaintSubHeader(QPainter& p, const QRect& rect, const IconSubLook& look, const QPalette& palette);

struct IconItemLook {
    QString name;
    QString detail;   // the list row's second line
    QPixmap icon;     // or
    QImage preview;   // a real preview, drawn in place of the icon when not null
    int iconEdge = 48;
    bool selected = false;
    bool current = false;
    bool focused = false;
};
void iconPaintItem(QPainter& p, const QRect& cell, const IconItemLook& look, const QPalette& palette);
void iconPaintListRow(QPainter& p, const QRect& cell, const IconItemLook& look, const QPalette& palette);
void iconPaintTile(QPainter& p, const QRect& cell, const IconItemLook& look, const DriveTile& tile,
    const QPalette& palette);

// Where an item's name is drawn in `cell`: under its icon (two lines high), or beside
// it on a list row (one line). The rename field opens over it.
enum class IconShape { Item, ListRow };
QRect iconLabelRect(const QRect& cell, int iconEdge, IconShape shape, const QFontMetrics& metrics);

// The header's control rectangles for a header row.
QRect iconChevronRect(const QRect& header);
QRect iconTuneRect(const QRect& header);
QRect iconShowAllRect(const QRect& sub, const QString& text, const QFont& font);
