#pragma once
// Where the keys move the current row of an outline, and what a typed prefix finds:
// pure functions of the row map, so the view only carries them out.

#include "views/outline_row_map.h"

#include <QString>

class QAbstractItemModel;

enum class OutlineKey { Up, Down, PageUp, PageDown, Home, End, Left, Right };

struct OutlineMove {
    enum class Folder { Keep, Expand, Collapse };
    int visual = -1;               // the new current row
    Folder folder = Folder::Keep; // what happens to the current row's folder first
};

// The move from visible row `current` (-1: none) for `key`: Up, Down, Page keys (by
// `pageRows`), Home and End along the visible rows; Right expands a collapsed folder,
// then goes to its first child; Left collapses an expanded folder, else goes to the
// row's folder. `folder` says whether the current row can expand.
OutlineMove outlineKeyMove(const OutlineRowMap& rows, int current, OutlineKey key, int pageRows, bool folder);

// The rows of one parent with no folder opened among them, as an outline's rows are
// read (a column of the column view): one run.
struct FlatRows {
    QModelIndex parent;
    int count = 0;
    int rowCount() const { return count; }
    OutlineRowMap::Place at(int visual) const { return {parent, visual}; }
    int runEnd(int) const { return count - 1; }
};

// Type-ahead: the first visible row from `start` on (wrapping around) whose name
// (column 0) starts with `prefix`, ignoring case, and can be selected (not a section
// header). The search goes a slice at a time, so that a folder of a million rows never
// holds up the UI thread: each call looks at up to `budget` more rows. `Rows` is an
// OutlineRowMap or FlatRows.
struct OutlineSearch {
    QString prefix;
    int start = 0;
    int searched = 0; // rows looked at so far
    int found = -1;   // the visible row, once found
    template <typename Rows>
    bool finished(const Rows& rows) const { return found >= 0 || searched >= rows.rowCount(); }
};
template <typename Rows>
void outlineSearchOn(OutlineSearch& search, const Rows& rows, const QAbstractItemModel& model, int budget);
