#include "views/column_list.h"

#include "services/drop_action.h"

#include <QAccessible>
#include <QApplication>
#include <QDragMoveEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>

ColumnList::ColumnList(QWidget* parent)
    : QAbstractItemView(parent)
{
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void ColumnList::setModel(QAbstractItemModel* model)
{
    if (this->model())
        disconnect(this->model(), nullptr, this, nullptr);
    QAbstractItemView::setModel(model);
    if (model) // insertions come through rowsInserted(); removals only here
        connect(model, &QAbstractItemModel::rowsRemoved, this, [this] { doItemsLayout(); });
    m_rowHeight = 0;
}

void ColumnList::setRootIndex(const QModelIndex& index)
{
    QAbstractItemView::setRootIndex(index);
    m_rowHeight = 0;
    ++m_searchGeneration; // a search on its way was for the old rows
    doItemsLayout();
}

void ColumnList::reset()
{
    QAbstractItemView::reset();
    m_rowHeight = 0;
    ++m_searchGeneration;
    doItemsLayout();
}

void ColumnList::doItemsLayout()
{
    updateGeometries();
    viewport()->update();
}

int ColumnList::count() const
{
    return model() ? model()->rowCount(rootIndex()) : 0;
}

QModelIndex ColumnList::rowIndex(int row) const
{
    return model() && row >= 0 ? model()->index(row, 0, rootIndex()) : QModelIndex();
}

int ColumnList::rowHeight() const
{
    if (m_rowHeight > 0)
        return m_rowHeight;
    // Every row is as high as the first (the delegate's height for a name and an icon).
    const int text = fontMetrics().height() + 4;
    const QModelIndex first = rowIndex(0);
    if (!first.isValid())
        return text; // measured again once there are rows
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    m_rowHeight = std::max({text, iconSize().height() + 4, itemDelegateForIndex(first)->sizeHint(option, first).height()});
    return m_rowHeight;
}

int ColumnList::rowAtY(int y) const
{
    if (y < 0)
        return -1;
    const int row = int((int64_t(y) + verticalOffset()) / rowHeight());
    return row < count() ? row : -1;
}

QRect ColumnList::rowRect(int row) const
{
    const int64_t top = int64_t(row) * rowHeight() - verticalOffset();
    return QRect(0, int(std::clamp<int64_t>(top, INT_MIN / 2, INT_MAX / 2)), viewport()->width(), rowHeight());
}

QRect ColumnList::visualRect(const QModelIndex& index) const
{
    if (!index.isValid() || index.parent() != rootIndex() || index.column() != 0)
        return {};
    return rowRect(index.row());
}

void ColumnList::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    const QRect rect = visualRect(index);
    if (rect.isEmpty())
        return;
    QScrollBar* bar = verticalScrollBar();
    const int height = viewport()->height();
    switch (hint) {
    case EnsureVisible:
        if (rect.top() < 0)
            bar->setValue(bar->value() + rect.top());
        else if (rect.bottom() >= height)
            bar->setValue(bar->value() + rect.bottom() + 1 - height);
        break;
    case PositionAtTop:
        bar->setValue(bar->value() + rect.top());
        break;
    case PositionAtBottom:
        bar->setValue(bar->value() + rect.bottom() + 1 - height);
        break;
    case PositionAtCenter:
        bar->setValue(bar->value() + rect.center().y() - height / 2);
        break;
    }
}

QModelIndex ColumnList::indexAt(const QPoint& point) const
{
    if (point.x() < 0 || point.x() >= viewport()->width())
        return {};
    return rowIndex(rowAtY(point.y()));
}

QModelIndex ColumnList::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    const int rows = count();
    if (rows == 0)
        return {};
    const QModelIndex current = currentIndex();
    const int at = current.isValid() && current.parent() == rootIndex() ? current.row() : -1;
    const int page = std::max(1, viewport()->height() / rowHeight() - 1);
    int row = at;
    int step = 1; // the way to go past rows that cannot be selected (section headers)
    switch (action) {
    case MoveUp:
    case MovePrevious:
        row = at < 0 ? 0 : at - 1;
        step = -1;
        break;
    case MoveDown:
    case MoveNext:
        row = at + 1;
        break;
    case MovePageUp:
        row = at - page;
        step = -1;
        break;
    case MovePageDown:
        row = at + page;
        break;
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = rows - 1;
        step = -1;
        break;
    case MoveLeft:
    case MoveRight:
        return {}; // between columns: the browser's move
    }
    row = std::clamp(row, 0, rows - 1);
    for (int tries = 0; tries < 64 && row >= 0 && row < rows; ++tries, row += step)
        if (model()->flags(rowIndex(row)) & Qt::ItemIsSelectable)
            return rowIndex(row);
    return current;
}

int ColumnList::horizontalOffset() const
{
    return 0;
}

int ColumnList::verticalOffset() const
{
    return verticalScrollBar()->value();
}

bool ColumnList::isIndexHidden(const QModelIndex&) const
{
    return false;
}

void ColumnList::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    if (!selectionModel())
        return;
    const int rows = count();
    const QRect r = rect.normalized();
    const int top = std::max(0, int((int64_t(r.top()) + verticalOffset()) / rowHeight()));
    const int bottom = std::min(rows - 1, int((int64_t(r.bottom()) + verticalOffset()) / rowHeight()));
    QItemSelection selection;
    if (rows > 0 && top <= bottom && r.bottom() >= 0)
        selection.select(rowIndex(top), rowIndex(bottom)); // one range, however many rows
    selectionModel()->select(selection, command);
}

QRegion ColumnList::visualRegionForSelection(const QItemSelection& selection) const
{
    // Only what is on screen matters: a range is clipped to the visible rows.
    const int first = std::max(0, verticalOffset() / rowHeight());
    const int last = std::min(count() - 1, (verticalOffset() + viewport()->height()) / rowHeight());
    QRegion region;
    for (const QItemSelectionRange& range : selection) {
        if (range.parent() != rootIndex())
            continue;
        const int top = std::max(range.top(), first);
        const int bottom = std::min(range.bottom(), last);
        if (top <= bottom)
            region += rowRect(top).united(rowRect(bottom));
    }
    return region;
}

void ColumnList::updateGeometries()
{
    const int height = viewport()->height();
    const int64_t content = int64_t(count()) * rowHeight();
    QScrollBar* bar = verticalScrollBar();
    bar->setSingleStep(rowHeight());
    bar->setPageStep(height);
    bar->setRange(0, int(std::clamp<int64_t>(content - height, 0, INT_MAX)));
    QAbstractItemView::updateGeometries();
}

void ColumnList::scrollContentsBy(int dx, int dy)
{
    QAbstractItemView::scrollContentsBy(dx, dy);
    viewport()->scroll(dx, dy);
}

void ColumnList::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QAbstractItemView::rowsInserted(parent, start, end);
    if (parent == rootIndex())
        doItemsLayout();
}

void ColumnList::keyboardSearch(const QString& search)
{
    if (search.isEmpty() || !model())
        return;
    const bool fresh = !m_typedAt.isValid() || m_typedAt.elapsed() > QApplication::keyboardInputInterval();
    m_typed = fresh ? search : m_typed + search;
    m_typedAt.start();
    // A new search starts below the current row; a longer prefix may stay on it.
    const QModelIndex current = currentIndex();
    const int at = current.isValid() && current.parent() == rootIndex() ? current.row() : 0;
    m_search = {m_typed, m_typed.size() == 1 ? at + 1 : at};
    searchOn(++m_searchGeneration);
}

void ColumnList::searchOn(int generation)
{
    constexpr int kRowsPerSlice = 20000; // well under a frame
    if (generation != m_searchGeneration || !model())
        return; // a newer search took over
    const FlatRows rows{rootIndex(), count()};
    outlineSearchOn(m_search, rows, *model(), kRowsPerSlice);
    if (!m_search.finished(rows)) {
        QTimer::singleShot(0, this, [this, generation] { searchOn(generation); });
        return;
    }
    const QModelIndex found = rowIndex(m_search.found);
    if (!found.isValid())
        return;
    selectionModel()->setCurrentIndex(found, QItemSelectionModel::ClearAndSelect);
    scrollTo(found);
}

void ColumnList::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QAbstractItemView::currentChanged(current, previous);
    if (QAccessible::isActive() && current.isValid() && current.parent() == rootIndex() && hasFocus()) {
        QAccessibleEvent event(this, QAccessible::Focus);
        event.setChild(current.row()); // the list's children are its rows
        QAccessible::updateAccessibility(&event);
    }
}

void ColumnList::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QAbstractItemView::selectionChanged(selected, deselected);
    if (!QAccessible::isActive())
        return;
    auto announce = [this](const QItemSelection& ranges, QAccessible::Event kind) {
        if (ranges.isEmpty() || ranges.first().parent() != rootIndex())
            return;
        QAccessibleEvent event(this, kind);
        event.setChild(ranges.first().top());
        QAccessible::updateAccessibility(&event);
    };
    announce(deselected, QAccessible::SelectionRemove);
    announce(selected, QAccessible::SelectionAdd);
}

void ColumnList::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const int rows = count();
    if (rows == 0)
        return;
    QStyleOptionViewItem base;
    initViewItemOption(&base);
    const QRect exposed = event->rect();
    const int first = std::max(0, int((int64_t(exposed.top()) + verticalOffset()) / rowHeight()));
    const int last = std::min(rows - 1, int((int64_t(exposed.bottom()) + verticalOffset()) / rowHeight()));
    const QItemSelectionModel* selection = selectionModel();
    const QModelIndex current = currentIndex();
    const bool focused = hasFocus();
    for (int row = first; row <= last; ++row) {
        const QModelIndex index = rowIndex(row);
        if (!index.isValid())
            continue;
        QStyleOptionViewItem option = base;
        option.rect = rowRect(row);
        if (selection && selection->isSelected(index))
            option.state |= QStyle::State_Selected;
        if (focused && index == current)
            option.state |= QStyle::State_HasFocus;
        if (!(model()->flags(index) & Qt::ItemIsEnabled))
            option.state &= ~QStyle::State_Enabled;
        itemDelegateForIndex(index)->paint(&painter, option, index);
    }
    if (!m_dropRect.isEmpty()) {
        QStyleOption drop;
        drop.initFrom(this);
        drop.rect = m_dropRect;
        style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemDrop, &drop, &painter, this);
    }
}

void ColumnList::resizeEvent(QResizeEvent* event)
{
    QAbstractItemView::resizeEvent(event);
    updateGeometries();
}

void ColumnList::setDropRect(const QRect& rect)
{
    if (rect == m_dropRect)
        return;
    m_dropRect = rect;
    viewport()->update();
}

void ColumnList::dragMoveEvent(QDragMoveEvent* event)
{
    QAbstractItemView::dragMoveEvent(event);
    const QModelIndex index = indexAt(event->position().toPoint());
    setDropRect(dropIndicatorPosition() == OnItem && index.isValid() ? visualRect(index) : QRect());
}

void ColumnList::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDropRect({});
    QAbstractItemView::dragLeaveEvent(event);
}

void ColumnList::dropEvent(QDropEvent* event)
{
    setDropRect({});
    DropKeysNote keys(event->modifiers()); // the drop's own keys, not the keyboard's now
    QAbstractItemView::dropEvent(event);
}
