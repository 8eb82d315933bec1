#pragma once
// The list mode's outline view: group rows for the favourites sections, a usage-bar size
// column, and size texts refreshed for the visible rows when sizes arrive.

#include "views/content_hooks.h"
#include "views/list_source.h"

#include <QTreeView>

#include <array>
#include <memory>

// The widths of the list's columns that the user chose. The pane keeps them for the
// life of its window, so a view rebuilt on navigation lays its columns out the same.
// Name has no width of its own: it takes whatever the others leave.
struct ListColumnWidths {
    std::array<int, ListSource::ColumnCount> preferred{0, 170, 190, 110};
};

// The columns' widths in `available` pixels: Date, Size and Kind at their preferred
// widths and Name the rest; when that leaves Name too narrow to read, Kind, Size and
// Date give way in that order, down to their minimum widths.
std::array<int, ListSource::ColumnCount> listColumnsFit(int available, const ListColumnWidths& widths);

class BrondelOutlineView : public QTreeView {
    Q_OBJECT
public:
    BrondelOutlineView(ListSource* source, const BrowserContext& context, ContentHooks hooks, QWidget* parent = nullptr);

    ListSource* source() const { return m_source; }

    // Reloads the size cells of the rows on screen; rows out of sight are drawn afresh
    // when they scroll in.
    void infoChanged();
    // The rows intersecting the visible area, top to bottom.
    QModelIndexList visibleRows() const;

    // The context menu at `pos` (viewport coordinates): a header's section menu, a row's
    // menu (the row alone selected first) or the menu of empty space.
    std::unique_ptr<QMenu> menuAt(QPoint pos);

    // Tells the model which rows are on screen (their sizes and dates are read first).
    void noteVisible();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void spanHeaders(const QModelIndex& parent, int first, int last);
    // Lays the columns out for the viewport's width (listColumnsFit).
    void fitColumns();
    // A column the user resized keeps that width; a drag of Name's edge moves the
    // border with Date, as a splitter would.
    void columnResized(int column, int oldWidth, int newWidth);
    // Shows the settings' sort key and direction on the header.
    void showSortIndicator(const BrondelSettings& settings);

    ListSource* m_source;
    ContentHooks m_hooks;
    std::shared_ptr<ListColumnWidths> m_widths;
    bool m_fitting = false;
};
