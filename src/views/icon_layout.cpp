#include "views/icon_layout.h"

#include <algorithm>
#include <cmath>

namespace {

// The cell of one item for the way its section is shown.
std::pair<int, int> cellOf(const IconSecShape& s, int inner)
{
    const int icon = int(std::lround(s.iconSize));
    if (s.list)
        return {std::max(inner, 1), icon + 8};
    if (s.breakdown)
        return {int(std::lround(s.tileWidth)) + kIconMargin, 64 + int(s.legendRows) * 18 + kIconMargin};
    return {std::max(96, icon + 48), icon + 44};
}

} // namespace

IconLayout iconLayoutMake(const std::vector<IconSecShape>& shapes, int width)
{
    IconLayout layout;
    layout.width = width;
    const int inner = std::max(1, width - 2 * kIconMargin);
    int y = 0;
    for (const IconSecShape& s : shapes) {
        IconSecGeom g;
        y += int(std::lround(s.topPad));
        g.top = y;
        if (s.cardHeader) {
            g.header = QRect(kIconMargin, y, inner, kIconHeaderHeight);
            y += kIconHeaderHeight;
        }
        if (s.subHeader) {
            g.sub = QRect(kIconMargin, y, inner, kIconSubHeight);
            y += kIconSubHeight;
        }
        const auto [cw, ch] = cellOf(s, inner);
        g.cellWidth = cw;
        g.cellHeight = ch;
        g.itemsTop = y;
        g.itemsLeft = kIconMargin;
        g.strip = s.strip;
        if (s.count == 0) {
            g.columns = 1;
            g.rows = 0;
        } else if (s.strip) {
            g.columns = int(std::min<size_t>(s.count, size_t(1) << 30));
            g.rows = 1;
        } else {
            g.columns = std::max(1, inner / cw);
            g.rows = int((s.count + size_t(g.columns) - 1) / size_t(g.columns));
        }
        y += g.rows * ch + kIconSectionGap;
        g.height = y - g.top;
        layout.sections.push_back(g);
    }
    layout.height = y + kIconMargin;
    return layout;
}

QRect iconItemRect(const IconSecGeom& geom, size_t index, int stripOffset)
{
    const int column = geom.strip ? 0 : int(index % size_t(geom.columns));
    const long long row = geom.strip ? 0 : (long long)(index / size_t(geom.columns));
    const long long x = geom.strip ? (long long)index * geom.cellWidth - stripOffset : (long long)column * geom.cellWidth;
    return QRect(int(geom.itemsLeft + x), int(geom.itemsTop + row * geom.cellHeight), geom.cellWidth, geom.cellHeight);
}

std::pair<size_t, size_t> iconItemsIn(const IconSecGeom& geom, size_t count, const QRect& area, int stripOffset)
{
    if (count == 0 || geom.rows == 0)
        return {0, 0};
    const int bottom = geom.itemsTop + geom.rows * geom.cellHeight;
    if (area.bottom() < geom.itemsTop || area.top() >= bottom)
        return {0, 0};
    if (geom.strip) {
        const long long left = (long long)area.left() - geom.itemsLeft + stripOffset;
        const long long right = (long long)area.right() - geom.itemsLeft + stripOffset;
        const long long first = std::max(0LL, left / geom.cellWidth);
        const long long last = std::min((long long)count, right / geom.cellWidth + 1);
        return first < last ? std::pair{size_t(first), size_t(last)} : std::pair{size_t(0), size_t(0)};
    }
    const int firstRow = std::max(0, (area.top() - geom.itemsTop) / geom.cellHeight);
    const int lastRow = std::min(geom.rows - 1, (area.bottom() - geom.itemsTop) / geom.cellHeight);
    const size_t first = size_t(firstRow) * size_t(geom.columns);
    const size_t last = std::min(count, size_t(lastRow + 1) * size_t(geom.columns));
    return first < last ? std::pair{first, last} : std::pair{size_t(0), size_t(0)};
}

int iconStripRange(const IconSecGeom& geom, size_t count, int viewWidth)
{
    const long long reach = (long long)count * geom.cellWidth + 2LL * geom.itemsLeft;
    return int(std::max(0LL, std::min(reach - viewWidth, (long long)INT32_MAX)));
}

int iconSectionAt(const IconLayout& layout, int y)
{
    auto it = std::upper_bound(layout.sections.begin(), layout.sections.end(), y,
        [](int value, const IconSecGeom& g) { return value < g.top; });
    if (it == layout.sections.begin())
        return -1;
    --it;
    return y < it->top + it->height ? int(it - layout.sections.begin()) : -1;
}
