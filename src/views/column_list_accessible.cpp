// A column draws its rows itself, so it tells assistive technology about them itself:
// the column is a list whose children are its rows, each made only when asked for (a
// column of a million rows costs nothing until a client walks it). An item stands for a
// row number and reads the row's index afresh each time, so rows that change under it
// never leave it pointing at a gone entry. The interface factory is installed when the
// library loads.

#include "views/accessible_items.h"
#include "views/column_list.h"

#include <QAccessibleWidget>
#include <QPointer>

namespace {

// One row of a column.
class ColumnItemAccessible : public AccessibleViewItem<ColumnList> {
public:
    ColumnItemAccessible(ColumnList* view, int row)
        : AccessibleViewItem(view)
        , m_row(row)
    {
    }

    QModelIndex index() const
    {
        if (!m_view || !m_view->model())
            return {};
        return m_view->model()->index(m_row, 0, m_view->rootIndex());
    }

    bool isValid() const override { return index().isValid(); }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Name && isValid() ? index().data(Qt::DisplayRole).toString() : QString();
    }

    QAccessible::State state() const override
    {
        QAccessible::State s;
        const QModelIndex at = index();
        if (!at.isValid())
            return s;
        s.selectable = at.flags().testFlag(Qt::ItemIsSelectable);
        s.selected = m_view->selectionModel() && m_view->selectionModel()->isSelected(at);
        s.focusable = true;
        s.focused = m_view->hasFocus() && m_view->currentIndex() == at;
        s.invisible = !m_view->viewport()->rect().intersects(m_view->visualRect(at));
        return s;
    }

    QRect rect() const override
    {
        return isValid() ? viewRect(m_view->visualRect(index())) : QRect();
    }

    int row() const { return m_row; }

private:
    int m_row;
};

class ColumnListAccessible : public QAccessibleWidget {
public:
    explicit ColumnListAccessible(ColumnList* view)
        : QAccessibleWidget(view, QAccessible::List)
    {
    }
    ColumnList* view() const { return static_cast<ColumnList*>(widget()); }

    QAccessible::State state() const override
    {
        QAccessible::State s = QAccessibleWidget::state();
        s.multiSelectable = true;
        s.extSelectable = true;
        return s;
    }

    int childCount() const override
    {
        return view()->model() ? view()->model()->rowCount(view()->rootIndex()) : 0;
    }

    QAccessibleInterface* child(int index) const override
    {
        return index >= 0 && index < childCount() ? item(index) : nullptr;
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (!child || child->parent() != this || !child->isValid())
            return -1;
        return static_cast<const ColumnItemAccessible*>(child)->row();
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QModelIndex index = view()->indexAt(view()->viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? item(index.row()) : nullptr;
    }

private:
    QAccessibleInterface* item(int row) const
    {
        return m_items.get(row, [&] { return new ColumnItemAccessible(view(), row); });
    }

    mutable AccessibleItems<int> m_items;
};

const bool kFactoryInstalled = accessibleFactoryInstall<ColumnList, ColumnListAccessible>();

} // namespace
