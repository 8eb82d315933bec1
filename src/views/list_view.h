#pragma once
// The list mode's outline view: a header of columns over rows of a uniform height, each
// folder with a disclosure arrow that expands its children in place, group rows for the
// favourites sections, a usage-bar size column, and size texts refreshed for the visible
// rows when sizes arrive.
//
// Its own view rather than a tree view's: what it keeps grows with the expanded folders
// (OutlineRowMap), never with the rows, so a folder of a million entries opens, scrolls
// and selects in constant time. Drawing is in outline_paint, keys and selection in
// outline_input, assistive technology's view of it in outline_accessible.

#include "views/content_hooks.h"
#include "views/list_source.h"
#include "views/outline_input.h"
#include "views/outline_row_map.h"

#include <QAbstractItemView>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QPersistentModelIndex>

#include <array>
#include <memory>

class QHeaderView;

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

class BrondelOutlineView : public QAbstractItemView {
    Q_OBJECT
public:
    BrondelOutlineView(ListSource* source, const BrowserContext& context, ContentHooks hooks, QWidget* parent = nullptr);
    ~BrondelOutlineView() override;

    ListSource* source() const { return m_source; }
    QHeaderView* header() const { return m_header; }
    const OutlineRowMap& rowMap() const { return m_rows; }

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

    // A folder's children shown below it (read first when they are not yet); the
    // folders above it are expanded too.
    void expand(const QModelIndex& index);
    void collapse(const QModelIndex& index);
    bool isExpanded(const QModelIndex& index) const { return m_rows.isExpanded(index); }

    int rowHeight() const;
    int indentation() const { return m_indent; }
    // Whether `index`'s row is a section header, drawn across all columns.
    bool spansRow(const QModelIndex& index) const;
    // The row's rectangle across all columns, in viewport coordinates.
    QRect rowRect(int visual) const;
    // The visible row under viewport height `y`, or -1.
    int visualRowAt(int y) const;

    QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QModelIndex indexAt(const QPoint& point) const override;
    void keyboardSearch(const QString& search) override;
    void selectAll() override;
    void reset() override;

signals:
    void expandedChanged(const QModelIndex& index, bool expanded);

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override;
    int verticalOffset() const override;
    bool isIndexHidden(const QModelIndex& index) const override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void followModel();
    // The rows changed: scroll range, row height, the rows drawn, assistive technology.
    void rowsChanged();
    // Whether `pos` (viewport) is on a folder's disclosure arrow; the index when it is.
    QModelIndex arrowAt(QPoint pos) const;
    // Lays the columns out for the viewport's width (listColumnsFit).
    void fitColumns();
    // A column the user resized keeps that width; a drag of Name's edge moves the
    // border with Date, as a splitter would.
    void columnResized(int column, int oldWidth, int newWidth);
    // Shows the settings' sort key and direction on the header.
    void showSortIndicator(const BrondelSettings& settings);
    void searchOn(int generation);

    ListSource* m_source;
    ContentHooks m_hooks;
    QHeaderView* m_header;
    OutlineRowMap m_rows;
    std::shared_ptr<ListColumnWidths> m_widths;
    mutable int m_rowHeight = 0; // measured on first use
    int m_indent = 20;
    bool m_fitting = false;
    // Spring-loaded folders: the folder row hovered during a drag, opened after a pause.
    QBasicTimer m_springTimer;
    QPersistentModelIndex m_springRow;
    QRect m_dropRect; // where the drop indicator is drawn
    // Type-ahead: the keys typed in quick succession, and the search for them, which
    // goes on a slice at a time (a newer search ends an older one).
    QString m_typed;
    QElapsedTimer m_typedAt;
    OutlineSearch m_search;
    int m_searchGeneration = 0;
};
