#include "views/outline_input.h"

#include <QAbstractItemModel>

#include <algorithm>

OutlineMove outlineKeyMove(const OutlineRowMap& rows, int current, OutlineKey key, int pageRows, bool folder)
{
    const int count = rows.rowCount();
    if (count == 0)
        return {};
    if (current < 0 || current >= count)
        return {key == OutlineKey::End ? count - 1 : 0};
    const auto clamp = [count](int v) { return std::clamp(v, 0, count - 1); };
    const OutlineRowMap::Place here = rows.at(current);
    switch (key) {
    case OutlineKey::Up: return {clamp(current - 1)};
    case OutlineKey::Down: return {clamp(current + 1)};
    case OutlineKey::PageUp: return {clamp(current - std::max(1, pageRows))};
    case OutlineKey::PageDown: return {clamp(current + std::max(1, pageRows))};
    case OutlineKey::Home: return {0};
    case OutlineKey::End: return {count - 1};
    case OutlineKey::Right:
        if (folder && !here.expanded)
            return {current, OutlineMove::Folder::Expand};
        if (here.expanded && current + 1 < count && rows.at(current + 1).depth > here.depth)
            return {current + 1};
        return {current};
    case OutlineKey::Left:
        if (here.expanded)
            return {current, OutlineMove::Folder::Collapse};
        if (here.parent.isValid())
            return {rows.visualRow(here.parent)};
        return {current};
    }
    return {current};
}

template <typename Rows>
void outlineSearchOn(OutlineSearch& search, const Rows& rows, const QAbstractItemModel& model, int budget)
{
    const int count = rows.rowCount();
    if (search.prefix.isEmpty() || count == 0)
        search.searched = std::max(search.searched, count);
    // Run by run: the rows of one parent that follow each other are read straight from
    // the model, without a look-up per row.
    while (!search.finished(rows) && budget > 0) {
        const int v = int((qint64(std::max(search.start, 0)) + search.searched) % count);
        const OutlineRowMap::Place at = rows.at(v);
        const int last = std::min({rows.runEnd(v), v + budget - 1, v + (count - search.searched) - 1});
        for (int row = at.row; row <= at.row + (last - v); ++row) {
            const QModelIndex index = model.index(row, 0, at.parent);
            if ((index.flags() & Qt::ItemIsSelectable)
                && index.data().toString().startsWith(search.prefix, Qt::CaseInsensitive)) {
                search.found = v + (row - at.row);
                return;
            }
        }
        search.searched += last - v + 1;
        budget -= last - v + 1;
    }
}

template void outlineSearchOn(OutlineSearch&, const OutlineRowMap&, const QAbstractItemModel&, int);
template void outlineSearchOn(OutlineSearch&, const FlatRows&, const QAbstractItemModel&, int);
