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

int outlineTypeAhead(const OutlineRowMap& rows, const QAbstractItemModel& model, int from, const QString& prefix)
{
    const int count = rows.rowCount();
    if (count == 0 || prefix.isEmpty())
        return -1;
    from = std::clamp(from, 0, count - 1);
    // Run by run: the rows of one parent that follow each other are read straight from
    // the model, without a look-up per row.
    for (int pass = 0; pass < 2; ++pass) {
        const int end = pass == 0 ? count - 1 : from - 1;
        for (int v = pass == 0 ? from : 0; v <= end;) {
            const OutlineRowMap::Place at = rows.at(v);
            const int last = std::min(rows.runEnd(v), end);
            for (int row = at.row; row <= at.row + (last - v); ++row) {
                const QModelIndex index = model.index(row, 0, at.parent);
                if ((index.flags() & Qt::ItemIsSelectable)
                    && index.data().toString().startsWith(prefix, Qt::CaseInsensitive))
                    return v + (row - at.row);
            }
            v = last + 1;
        }
    }
    return -1;
}
