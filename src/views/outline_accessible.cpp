// The outline view draws its rows itself, so it tells assistive technology about them
// itself: the view is a tree table whose children are the column headers, then one cell
// per column of each visible row, made only when asked for (a folder of a million rows
// costs nothing until a client walks it). Cells are addressed by their visible row and
// column; any change of the rows (announced by the view as a model change) forgets them.
// The interface factory is installed when the library loads.

#include "views/accessible_items.h"
#include "views/list_view.h"

#include <QAccessibleWidget>
#include <QHeaderView>
#include <QPointer>

#include <algorithm>

namespace {

class OutlineAccessible;

// A column header (row -1) or one cell of a visible row.
class OutlineCellAccessible : public AccessibleViewItem<BrondelOutlineView>, public QAccessibleTableCellInterface {
public:
    OutlineCellAccessible(BrondelOutlineView* view, int row, int column)
        : AccessibleViewItem(view)
        , m_row(row)
        , m_column(column)
    {
    }

    QModelIndex index() const
    {
        if (!m_view || m_row < 0)
            return {};
        const OutlineRowMap::Place place = m_view->rowMap().at(m_row);
        return place.valid() ? m_view->source()->index(place.row, m_column, place.parent) : QModelIndex();
    }

    bool isValid() const override
    {
        return m_view && m_column >= 0 && m_column < ListSource::ColumnCount && (m_row < 0 || index().isValid());
    }

    QAccessible::Role role() const override
    {
        if (m_row < 0)
            return QAccessible::ColumnHeader;
        return m_column == 0 ? QAccessible::TreeItem : QAccessible::Cell;
    }

    QString text(QAccessible::Text t) const override
    {
        if (!isValid() || t != QAccessible::Name)
            return {};
        if (m_row < 0)
            return m_view->source()->headerData(m_column, Qt::Horizontal, Qt::DisplayRole).toString();
        return index().data(Qt::DisplayRole).toString();
    }

    QAccessible::State state() const override
    {
        QAccessible::State s;
        if (!isValid() || m_row < 0)
            return s;
        const QModelIndex at = index();
        const QModelIndex first = at.siblingAtColumn(0);
        const Qt::ItemFlags flags = at.flags();
        s.selectable = flags.testFlag(Qt::ItemIsSelectable);
        s.selected = m_view->selectionModel()->isSelected(first);
        s.focusable = true;
        const QModelIndex current = m_view->currentIndex();
        s.focused = m_view->hasFocus() && current.row() == at.row() && current.parent() == at.parent();
        if (m_column == 0 && m_view->source()->hasChildren(first)) {
            s.expandable = true;
            s.expanded = m_view->isExpanded(first);
            s.collapsed = !s.expanded;
        }
        s.invisible = !m_view->viewport()->rect().intersects(m_view->visualRect(at));
        return s;
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        if (m_row < 0) {
            QHeaderView* header = m_view->header();
            const QRect local(header->sectionViewportPosition(m_column), 0, header->sectionSize(m_column), header->height());
            return QRect(header->viewport()->mapToGlobal(local.topLeft()), local.size());
        }
        return viewRect(m_view->visualRect(index()));
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableCellInterface && m_row >= 0 ? static_cast<QAccessibleTableCellInterface*>(this)
                                                                      : nullptr;
    }

    bool isSelected() const override { return state().selected; }
    QList<QAccessibleInterface*> columnHeaderCells() const override;
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return m_column; }
    int rowIndex() const override { return m_row; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

    int row() const { return m_row; }

private:
    int m_row;
    int m_column;
};

// The view: a tree table over the visible rows.
class OutlineAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit OutlineAccessible(BrondelOutlineView* view)
        : QAccessibleWidget(view, QAccessible::Tree)
    {
    }
    ~OutlineAccessible() override { forget(); }

    BrondelOutlineView* view() const { return static_cast<BrondelOutlineView*>(widget()); }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TableInterface)
            return static_cast<QAccessibleTableInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QAccessible::State state() const override
    {
        QAccessible::State s = QAccessibleWidget::state();
        s.multiSelectable = true;
        s.extSelectable = true;
        return s;
    }

    int childCount() const override { return (rowCount() + 1) * columnCount(); }

    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        return cell(index / columnCount() - 1, index % columnCount());
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (!child || child->parent() != this)
            return -1;
        const auto* cell = static_cast<const OutlineCellAccessible*>(child);
        return cell->isValid() ? (cell->row() + 1) * columnCount() + cell->columnIndex() : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QPoint local = view()->viewport()->mapFromGlobal(QPoint(x, y));
        const QModelIndex index = view()->indexAt(local);
        if (!index.isValid())
            return nullptr;
        return cell(view()->rowMap().visualRow(index), index.column());
    }

    // The table.
    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override
    {
        return row >= 0 && row < rowCount() && column >= 0 && column < columnCount() ? cell(row, column) : nullptr;
    }
    int columnCount() const override { return ListSource::ColumnCount; }
    int rowCount() const override { return view()->rowMap().rowCount(); }
    QString columnDescription(int column) const override
    {
        return view()->source()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    }
    QString rowDescription(int) const override { return {}; }
    // What is selected, read from the selection's ranges (never a list of every row):
    // at most kListed rows are named.
    int selectedRowCount() const override
    {
        qsizetype count = 0;
        for (const QItemSelectionRange& range : view()->selectionModel()->selection())
            count += range.height();
        return int(std::min<qsizetype>(count, INT_MAX));
    }
    QList<int> selectedRows() const override
    {
        QList<int> rows;
        for (const QItemSelectionRange& range : view()->selectionModel()->selection()) {
            const int top = view()->rowMap().visualRow(range.topLeft());
            for (int row = 0; top >= 0 && row < range.height() && rows.size() < kListed; ++row)
                rows << view()->rowMap().visualRow(view()->source()->index(range.top() + row, 0, range.parent()));
        }
        rows.removeAll(-1);
        return rows;
    }
    int selectedCellCount() const override { return selectedRowCount() * columnCount(); }
    QList<QAccessibleInterface*> selectedCells() const override
    {
        QList<QAccessibleInterface*> cells;
        for (int row : selectedRows())
            for (int column = 0; column < columnCount(); ++column)
                cells << cell(row, column);
        return cells;
    }
    int selectedColumnCount() const override { return 0; }
    QList<int> selectedColumns() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override
    {
        const OutlineRowMap::Place place = view()->rowMap().at(row);
        return place.valid() && view()->selectionModel()->isSelected(view()->source()->index(place.row, 0, place.parent));
    }
    bool selectRow(int row) override { return changeRow(row, QItemSelectionModel::Select); }
    bool unselectRow(int row) override { return changeRow(row, QItemSelectionModel::Deselect); }
    bool selectColumn(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent*) override { forget(); }

private:
    static constexpr int kListed = 1000;

    QAccessibleInterface* cell(int row, int column) const
    {
        return m_cells.get({row, column}, [&] { return new OutlineCellAccessible(view(), row, column); });
    }

    bool changeRow(int row, QItemSelectionModel::SelectionFlag how)
    {
        const OutlineRowMap::Place place = view()->rowMap().at(row);
        if (!place.valid())
            return false;
        view()->selectionModel()->select(view()->source()->index(place.row, 0, place.parent),
            how | QItemSelectionModel::Rows);
        return true;
    }

    void forget()
    {
        m_cells.clear();
    }

    mutable AccessibleItems<std::pair<int, int>> m_cells;

    friend class OutlineCellAccessible;
};

QList<QAccessibleInterface*> OutlineCellAccessible::columnHeaderCells() const
{
    auto* table = static_cast<OutlineAccessible*>(parent());
    return table ? QList<QAccessibleInterface*>{table->child(m_column)} : QList<QAccessibleInterface*>{};
}

const bool kFactoryInstalled = accessibleFactoryInstall<BrondelOutlineView, OutlineAccessible>();

} // namespace

