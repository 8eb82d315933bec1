#pragma once
// Where the icon view draws its sections and items, as pure arithmetic: a section is a
// few numbers (how many items, how it is shown), its place is worked out in one pass
// over the sections, and an item's rectangle from its index. Nothing is laid out item
// by item, so a section of 100,000 items costs the same as one of ten.

#include <QRect>

#include <cstddef>
#include <utility>
#include <vector>

// What the layout needs of one section.
struct IconSecShape {
    size_t count = 0;
    bool strip = false;
    bool list = false;
    bool breakdown = false;
    double iconSize = 48;
    long long legendRows = 8;
    double tileWidth = 220;
    double topPad = 0;
    bool cardHeader = false; // the card's header row (title, chevron, "⋯")
    bool subHeader = false;  // the section's own sub-header row (title, "Show all")
};

// One section's place, in content coordinates (y grows down the whole stack).
struct IconSecGeom {
    int top = 0;
    int height = 0;
    QRect header;  // the card header row; empty when none
    QRect sub;     // the sub-header row; empty when none
    int itemsTop = 0;
    int itemsLeft = 0;
    int cellWidth = 0;
    int cellHeight = 0;
    int columns = 1; // items per row (a strip: all of them)
    int rows = 0;
    bool strip = false;
};

struct IconLayout {
    std::vector<IconSecGeom> sections;
    int width = 0;
    int height = 0; // of the whole stack
};

inline constexpr int kIconMargin = 12;
inline constexpr int kIconHeaderHeight = 30;
inline constexpr int kIconSubHeight = 24;
inline constexpr int kIconSectionGap = 8;

// The sections' places for a view `width` pixels wide.
IconLayout iconLayoutMake(const std::vector<IconSecShape>& shapes, int width);

// The rectangle of item `index` of a section; a strip's items move left by `stripOffset`.
QRect iconItemRect(const IconSecGeom& geom, size_t index, int stripOffset = 0);

// The items of a section of `count` items that may intersect `area`, as [first, last).
std::pair<size_t, size_t> iconItemsIn(const IconSecGeom& geom, size_t count, const QRect& area, int stripOffset = 0);

// The widest a strip scrolls: how far its last item reaches past the view.
int iconStripRange(const IconSecGeom& geom, size_t count, int viewWidth);

// The section under content y, or -1.
int iconSectionAt(const IconLayout& layout, int y);
