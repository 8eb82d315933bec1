#pragma once
// One column of the column mode: the rows of one folder, one above the other, all of
// one height.
//
// Its own view rather than a list view's: a list view lays out every row (a position
// per row, in one pass when it is shown and in batches after), some 35 ms for a million
// rows in which the window does nothing else. Here a row's place is its number times
// the row height, so a column of a million rows opens, scrolls and selects in constant
// time. Keys Left and Right are left to the column browser, which moves between columns.
// Assistive technology sees a list of the rows (column_list_accessible).

#include "views/outline_input.h"

#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QPersistentModelIndex>

class ColumnList : public QAbstractItemView {
    Q_OBJECT
public:
    explicit ColumnList(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;
    void setRootIndex(const QModelIndex& index) override;
    void reset() override;
    QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QModelIndex indexAt(const QPoint& point) const override;
    void doItemsLayout() override;
    // Type-ahead, a slice of rows per turn of the event loop (never the whole column at once).
    void keyboardSearch(const QString& search) override;

    int rowHeight() const;

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override;
    int verticalOffset() const override;
    bool isIndexHidden(const QModelIndex& index) const override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    // Assistive technology hears of the current row and of selections (its first row).
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    int count() const;
    QModelIndex rowIndex(int row) const;
    // The row at viewport height `y`, or -1.
    int rowAtY(int y) const;
    QRect rowRect(int row) const;
    void setDropRect(const QRect& rect);
    void searchOn(int generation);

    mutable int m_rowHeight = 0; // measured on first use
    QRect m_dropRect;            // where the drop indicator is drawn
    // Type-ahead: the keys typed in quick succession, and the search for them (a newer
    // search ends an older one).
    QString m_typed;
    QElapsedTimer m_typedAt;
    OutlineSearch m_search;
    int m_searchGeneration = 0;
};
