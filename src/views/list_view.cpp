#include "views/list_view.h"

#include "views/list_size_cell.h"
#include "views/outline_paint.h"
#include "views/row_info_cache.h"
#include "services/drop_action.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <climits>

namespace {

// Below these a column's text is mostly ellipsis.
constexpr std::array<int, ListSource::ColumnCount> kMinWidths{120, 90, 60, 50};
// Name gets at least this much (or half a narrow view) before it is squeezed too.
constexpr int kNameReadable = 220;

constexpr std::array<const char*, ListSource::ColumnCount> kSortKeys{"name", "date", "size", "kind"};

// A folder hovered this long during a drag opens (spring-loaded).
constexpr int kSpringDelayMs = 800;

} // namespace

std::array<int, ListSource::ColumnCount> listColumnsFit(int available, const ListColumnWidths& widths)
{
    std::array<int, ListSource::ColumnCount> out = widths.preferred;
    const int readable = std::max(kMinWidths[ListSource::Name], std::min(kNameReadable, available / 2));
    int name = available - (out[ListSource::Date] + out[ListSource::Size] + out[ListSource::Kind]);
    for (int column : {ListSource::Kind, ListSource::Size, ListSource::Date}) {
        if (name >= readable)
            break;
        const int give = std::min(readable - name, out[column] - kMinWidths[column]);
        if (give > 0) {
            out[column] -= give;
            name += give;
        }
    }
    out[ListSource::Name] = std::max(kMinWidths[ListSource::Name], name);
    return out;
}

BrondelOutlineView::BrondelOutlineView(ListSource* source, const BrowserContext& context, ContentHooks hooks,
    QWidget* parent)
    : QAbstractItemView(parent)
    , m_source(source)
    , m_hooks(std::move(hooks))
    , m_header(new QHeaderView(Qt::Horizontal, this))
    , m_rows(source)
    , m_widths(m_hooks.listWidths ? m_hooks.listWidths : std::make_shared<ListColumnWidths>())
{
    source->setParent(this);
    followModel(); // before the view's own handlers: the row map is current when they run
    setModel(source);
    m_header->setModel(source);
    m_indent = style()->pixelMetric(QStyle::PM_TreeViewIndentation, nullptr, this);
    setItemDelegateForColumn(ListSource::Size, new ListSizeCell(*source, *context.settings, this));
    setItemDelegateForColumn(ListSource::Name, contentRenameEditor(*source, m_hooks, this));
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    contentDragDropSetUp(*this, *source, m_hooks);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_header->setStretchLastSection(false);
    m_header->setSectionResizeMode(QHeaderView::Interactive);
    m_header->setMinimumSectionSize(kMinWidths[ListSource::Kind]);
    m_header->setSectionsClickable(true);
    m_header->setSectionsMovable(false);
    m_header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    showSortIndicator(*context.settings);
    fitColumns();
    connect(m_header, &QHeaderView::sectionResized, this, [this](int column, int oldWidth, int newWidth) {
        columnResized(column, oldWidth, newWidth);
        updateGeometries();
        viewport()->update();
    });
    connect(m_header, &QHeaderView::sectionClicked, this, [this](int column) {
        if (column >= 0 && column < ListSource::ColumnCount && m_hooks.sortBy)
            m_hooks.sortBy(kSortKeys[size_t(column)]);
    });
    connect(this, &QAbstractItemView::activated, this,
        [this](const QModelIndex& index) { contentActivate(m_source->nodeAt(index), m_hooks); });
    connect(&RowInfoCache::shared(), &RowInfoCache::changed, this, &BrondelOutlineView::infoChanged);
    // Sizes and dates of a names-first folder: the rows on screen are drawn again (no
    // per-row notification: a million rows would be a million of them), and whatever
    // scrolls into sight is read first.
    connect(source, &NodeTreeModel::metaArrived, viewport(), qOverload<>(&QWidget::update));
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &BrondelOutlineView::noteVisible);
    connect(source, &QAbstractItemModel::rowsInserted, this, &BrondelOutlineView::noteVisible);
    connect(source, &QAbstractItemModel::layoutChanged, this, &BrondelOutlineView::noteVisible);
    rowsChanged();
}

BrondelOutlineView::~BrondelOutlineView() = default;

void BrondelOutlineView::followModel()
{
    connect(m_source, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent, int first, int last) {
        m_rows.rowsInserted(parent, first, last);
        rowsChanged();
    });
    connect(m_source, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex& parent, int first, int last) {
        m_rows.rowsRemoved(parent, first, last);
        rowsChanged();
    });
    // A move or a new order (a sort made again, a folder read again): the expanded
    // folders are found again through their persistent indexes.
    auto relayout = [this] {
        m_rows.layoutChanged();
        rowsChanged();
    };
    connect(m_source, &QAbstractItemModel::rowsMoved, this, relayout);
    connect(m_source, &QAbstractItemModel::layoutChanged, this, relayout);
}

void BrondelOutlineView::reset()
{
    m_rows.reset();
    m_rowHeight = 0;
    QAbstractItemView::reset();
    rowsChanged();
}

void BrondelOutlineView::rowsChanged()
{
    Q_ASSERT(m_rows.expandedCount() > 64 || m_rows.isConsistent()); // checked while it is cheap
    updateGeometries();
    viewport()->update();
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&event);
    }
}

int BrondelOutlineView::rowHeight() const
{
    if (m_rowHeight > 0)
        return m_rowHeight;
    // Every row is as high as the first entry's tallest cell (the group rows use a
    // smaller font); measured once there is a row to measure.
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    int height = std::max(fontMetrics().height(), option.decorationSize.height()) + 4;
    const int rows = std::min(m_source->rowCount(), 64);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex first = m_source->index(row, 0);
        if (spansRow(first))
            continue;
        for (int column = 0; column < ListSource::ColumnCount; ++column) {
            const QModelIndex cell = m_source->index(row, column);
            height = std::max(height, itemDelegateForIndex(cell)->sizeHint(option, cell).height());
        }
        m_rowHeight = height;
        break;
    }
    return height;
}

bool BrondelOutlineView::spansRow(const QModelIndex& index) const
{
    return index.isValid() && !index.parent().isValid() && m_source->factsAt(index.siblingAtColumn(0)).header;
}

QRect BrondelOutlineView::rowRect(int visual) const
{
    const int left = m_header->sectionViewportPosition(0);
    return QRect(left, visual * rowHeight() - verticalOffset(), std::max(m_header->length(), viewport()->width() - left),
        rowHeight());
}

int BrondelOutlineView::visualRowAt(int y) const
{
    const qint64 at = qint64(y) + verticalOffset();
    if (at < 0)
        return -1;
    const qint64 visual = at / rowHeight();
    return visual < m_rows.rowCount() ? int(visual) : -1;
}

void BrondelOutlineView::updateGeometries()
{
    if (isVisible()) { // laid out once shown (a view built for a pane is shown after)
        const int headerHeight = m_header->isHidden() ? 0 : m_header->sizeHint().height();
        if (viewportMargins() != QMargins(0, headerHeight, 0, 0))
            setViewportMargins(0, headerHeight, 0, 0);
        const QRect area = viewport()->geometry();
        m_header->setGeometry(area.left(), area.top() - headerHeight, area.width(), headerHeight);
    }
    const int height = rowHeight();
    const qint64 content = qint64(m_rows.rowCount()) * height;
    QScrollBar* vertical = verticalScrollBar();
    vertical->setSingleStep(height);
    vertical->setPageStep(std::max(height, viewport()->height()));
    vertical->setRange(0, int(std::clamp<qint64>(content - viewport()->height(), 0, INT_MAX)));
    QScrollBar* horizontal = horizontalScrollBar();
    horizontal->setSingleStep(20);
    horizontal->setPageStep(viewport()->width());
    horizontal->setRange(0, std::max(0, m_header->length() - viewport()->width()));
    QAbstractItemView::updateGeometries();
}

void BrondelOutlineView::scrollContentsBy(int dx, int dy)
{
    if (dx)
        m_header->setOffset(horizontalScrollBar()->value());
    QAbstractItemView::scrollContentsBy(dx, dy);
}

int BrondelOutlineView::horizontalOffset() const
{
    return horizontalScrollBar()->value();
}

int BrondelOutlineView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

bool BrondelOutlineView::isIndexHidden(const QModelIndex&) const
{
    return false; // no row or column is ever hidden (rows in a collapsed folder are not)
}

QRect BrondelOutlineView::visualRect(const QModelIndex& index) const
{
    if (!index.isValid() || index.model() != m_source)
        return {};
    int depth = 0;
    const int visual = m_rows.visualRow(index, &depth);
    if (visual < 0)
        return {};
    const bool span = spansRow(index);
    const int column = span ? 0 : index.column();
    QRect rect(m_header->sectionViewportPosition(column), visual * rowHeight() - verticalOffset(),
        span ? m_header->length() : m_header->sectionSize(column), rowHeight());
    if (column == 0)
        rect.setLeft(rect.left() + (depth + 1) * m_indent);
    return rect;
}

QModelIndex BrondelOutlineView::indexAt(const QPoint& point) const
{
    const int visual = visualRowAt(point.y());
    if (visual < 0)
        return {};
    const OutlineRowMap::Place place = m_rows.at(visual);
    const QModelIndex first = m_source->index(place.row, 0, place.parent);
    if (spansRow(first))
        return first;
    const int column = m_header->logicalIndexAt(point.x());
    if (column <= 0)
        return column == 0 ? first : QModelIndex();
    return m_source->index(place.row, column, place.parent);
}

QModelIndex BrondelOutlineView::arrowAt(QPoint pos) const
{
    const int visual = visualRowAt(pos.y());
    if (visual < 0)
        return {};
    const OutlineRowMap::Place place = m_rows.at(visual);
    const QModelIndex index = m_source->index(place.row, 0, place.parent);
    const int left = m_header->sectionViewportPosition(0) + place.depth * m_indent;
    if (pos.x() < left || pos.x() >= left + m_indent || !m_source->hasChildren(index))
        return {};
    return index;
}

void BrondelOutlineView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid() || index.model() != m_source)
        return;
    if (index.parent().isValid() && !isExpanded(index.parent()))
        expand(index.parent()); // the folders above it open
    const int visual = m_rows.visualRow(index);
    if (visual < 0)
        return;
    const int height = rowHeight();
    const int area = viewport()->height();
    const qint64 top = qint64(visual) * height;
    qint64 value = verticalOffset();
    switch (hint) {
    case PositionAtTop: value = top; break;
    case PositionAtBottom: value = top + height - area; break;
    case PositionAtCenter: value = top - (area - height) / 2; break;
    case EnsureVisible:
        if (top < value)
            value = top;
        else if (top + height > value + area)
            value = top + height - area;
        break;
    }
    verticalScrollBar()->setValue(int(std::clamp<qint64>(value, 0, INT_MAX)));
    if (index.column() > 0) { // the column in sight too
        const int left = m_header->sectionPosition(index.column());
        const int right = left + m_header->sectionSize(index.column());
        QScrollBar* horizontal = horizontalScrollBar();
        if (left < horizontal->value())
            horizontal->setValue(left);
        else if (right > horizontal->value() + viewport()->width())
            horizontal->setValue(right - viewport()->width());
    }
}

void BrondelOutlineView::expand(const QModelIndex& index)
{
    if (!index.isValid() || index.model() != m_source)
        return;
    const QModelIndex folder = index.siblingAtColumn(0);
    if (folder.parent().isValid() && !isExpanded(folder.parent()))
        expand(folder.parent());
    if (!m_source->hasChildren(folder) || !m_rows.expand(folder))
        return;
    if (m_source->canFetchMore(folder))
        m_source->fetchMore(folder); // the rows arrive later, inserted under it
    rowsChanged();
    emit expandedChanged(folder, true);
}

void BrondelOutlineView::collapse(const QModelIndex& index)
{
    const QModelIndex folder = index.siblingAtColumn(0);
    if (!m_rows.collapse(folder))
        return;
    // A current row inside it is hidden now: the folder takes over.
    for (QModelIndex at = currentIndex().parent(); at.isValid(); at = at.parent())
        if (at == folder) {
            selectionModel()->setCurrentIndex(folder, QItemSelectionModel::NoUpdate);
            break;
        }
    rowsChanged();
    emit expandedChanged(folder, false);
}

void BrondelOutlineView::setSelection(const QRect& corners, QItemSelectionModel::SelectionFlags command)
{
    const QRect rect = corners.normalized(); // from the anchor row to the new one, either way
    const int height = rowHeight();
    const qint64 top = std::max<qint64>(0, qint64(rect.top()) + verticalOffset()) / height;
    const qint64 bottom = (qint64(rect.bottom()) + verticalOffset()) / height;
    const int last = int(std::min<qint64>(bottom, m_rows.rowCount() - 1));
    QItemSelection selection;
    if (rect.bottom() + verticalOffset() >= 0 && top <= last)
        selection = m_rows.selection(int(top), last, m_source->columnCount() - 1);
    selectionModel()->select(selection, command);
}

void BrondelOutlineView::selectAll()
{
    if (selectionMode() != ExtendedSelection && selectionMode() != MultiSelection)
        return;
    selectionModel()->select(m_rows.selection(0, m_rows.rowCount() - 1, m_source->columnCount() - 1),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

QRegion BrondelOutlineView::visualRegionForSelection(const QItemSelection& selection) const
{
    QRegion region;
    const QRect area = viewport()->rect();
    for (const QItemSelectionRange& range : selection) {
        const int top = m_rows.visualRow(range.topLeft());
        const int bottom = m_rows.visualRow(range.bottomRight());
        if (top < 0 || bottom < 0)
            continue; // inside a collapsed folder
        const QRect rows = rowRect(top).united(rowRect(bottom));
        region += rows.intersected(area);
    }
    return region;
}

QModelIndex BrondelOutlineView::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    const QModelIndex current = currentIndex();
    int visual = current.isValid() ? m_rows.visualRow(current) : -1;
    OutlineKey key = OutlineKey::Down;
    switch (action) {
    case MoveUp:
    case MovePrevious: key = OutlineKey::Up; break;
    case MoveDown:
    case MoveNext: key = OutlineKey::Down; break;
    case MovePageUp: key = OutlineKey::PageUp; break;
    case MovePageDown: key = OutlineKey::PageDown; break;
    case MoveHome: key = OutlineKey::Home; break;
    case MoveEnd: key = OutlineKey::End; break;
    case MoveLeft: key = isRightToLeft() ? OutlineKey::Right : OutlineKey::Left; break;
    case MoveRight: key = isRightToLeft() ? OutlineKey::Left : OutlineKey::Right; break;
    }
    const QModelIndex here = current.siblingAtColumn(0);
    const int page = std::max(1, viewport()->height() / rowHeight() - 1);
    const OutlineMove move = outlineKeyMove(m_rows, visual, key, page, visual >= 0 && m_source->hasChildren(here));
    if (move.folder == OutlineMove::Folder::Expand)
        expand(here);
    else if (move.folder == OutlineMove::Folder::Collapse)
        collapse(here);
    const OutlineRowMap::Place place = m_rows.at(move.visual);
    return place.valid() ? m_source->index(place.row, std::max(0, current.column()), place.parent) : QModelIndex();
}

void BrondelOutlineView::keyboardSearch(const QString& search)
{
    if (search.isEmpty())
        return;
    const bool fresh = !m_typedAt.isValid() || m_typedAt.elapsed() > QApplication::keyboardInputInterval();
    m_typed = fresh ? search : m_typed + search;
    m_typedAt.start();
    // A new search starts below the current row; a longer prefix may stay on it.
    const int current = std::max(0, m_rows.visualRow(currentIndex()));
    m_search = {m_typed, m_typed.size() == 1 ? current + 1 : current};
    searchOn(++m_searchGeneration);
}

void BrondelOutlineView::searchOn(int generation)
{
    constexpr int kRowsPerSlice = 20000; // well under a frame
    if (generation != m_searchGeneration)
        return; // a newer search took over
    outlineSearchOn(m_search, m_rows, *m_source, kRowsPerSlice);
    if (!m_search.finished(m_rows)) {
        QTimer::singleShot(0, this, [this, generation] { searchOn(generation); });
        return;
    }
    const OutlineRowMap::Place place = m_rows.at(m_search.found);
    if (!place.valid())
        return;
    const QModelIndex index = m_source->index(place.row, 0, place.parent);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index);
}

void BrondelOutlineView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QAbstractItemView::currentChanged(current, previous);
    // The focus frame goes around the whole row.
    for (const QModelIndex& index : {previous, current})
        if (const int visual = m_rows.visualRow(index); visual >= 0)
            viewport()->update(rowRect(visual));
    // Assistive technology hears of the cell by its place among the view's children
    // (the column headers first, then each visible row's cells).
    const int visual = m_rows.visualRow(current);
    if (QAccessible::isActive() && hasFocus() && visual >= 0) {
        QAccessibleEvent event(this, QAccessible::Focus);
        event.setChild((visual + 1) * ListSource::ColumnCount + current.column());
        QAccessible::updateAccessibility(&event);
    }
}

void BrondelOutlineView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    OutlinePaintFrame frame;
    frame.view = this;
    frame.model = m_source;
    frame.rows = &m_rows;
    frame.header = m_header;
    initViewItemOption(&frame.option);
    frame.rowHeight = rowHeight();
    frame.indentation = m_indent;
    frame.verticalOffset = verticalOffset();
    frame.spans = [this](const QModelIndex& index) { return spansRow(index); };
    if (state() == DraggingState && showDropIndicator())
        frame.dropRect = m_dropRect;
    outlinePaint(painter, frame, event->rect());
}

void BrondelOutlineView::mousePressEvent(QMouseEvent* event)
{
    // A click on a disclosure arrow opens or closes the folder and selects nothing.
    const QModelIndex arrow = event->button() == Qt::LeftButton ? arrowAt(event->position().toPoint()) : QModelIndex();
    if (arrow.isValid()) {
        if (isExpanded(arrow))
            collapse(arrow);
        else
            expand(arrow);
        event->accept();
        return;
    }
    QAbstractItemView::mousePressEvent(event);
}

void BrondelOutlineView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (arrowAt(event->position().toPoint()).isValid()) {
        mousePressEvent(event); // two quick clicks on an arrow: open, then close
        return;
    }
    QAbstractItemView::mouseDoubleClickEvent(event);
}

void BrondelOutlineView::dragMoveEvent(QDragMoveEvent* event)
{
    QAbstractItemView::dragMoveEvent(event);
    const QPoint pos = event->position().toPoint();
    const QModelIndex index = indexAt(pos).siblingAtColumn(0);
    const QRect before = m_dropRect;
    m_dropRect = dropIndicatorPosition() == OnItem && index.isValid() ? rowRect(m_rows.visualRow(index)) : QRect();
    if (m_dropRect != before)
        viewport()->update();
    // A collapsed folder hovered for a moment opens.
    if (index.isValid() && m_source->isFolder(index) && !isExpanded(index)) {
        if (index != m_springRow) {
            m_springRow = index;
            m_springTimer.start(kSpringDelayMs, this);
        }
    } else {
        m_springTimer.stop();
        m_springRow = QPersistentModelIndex();
    }
}

void BrondelOutlineView::dragLeaveEvent(QDragLeaveEvent* event)
{
    m_springTimer.stop();
    m_dropRect = QRect();
    QAbstractItemView::dragLeaveEvent(event);
    viewport()->update();
}

void BrondelOutlineView::dropEvent(QDropEvent* event)
{
    m_springTimer.stop();
    m_dropRect = QRect();
    DropKeysNote keys(event->modifiers()); // the drop's own keys, not the keyboard's now
    QAbstractItemView::dropEvent(event);
    viewport()->update();
}

void BrondelOutlineView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_springTimer.timerId()) {
        QAbstractItemView::timerEvent(event);
        return;
    }
    m_springTimer.stop();
    if (state() == DraggingState && m_springRow.isValid())
        expand(m_springRow);
    m_springRow = QPersistentModelIndex();
}

void BrondelOutlineView::noteVisible()
{
    // The rows on screen, run by run under each parent they belong to (the top level
    // mostly; an expanded folder's rows when it fills the view).
    const int first = visualRowAt(0);
    if (first < 0)
        return;
    const int last = std::min(m_rows.rowCount() - 1, first + viewport()->height() / rowHeight() + 1);
    for (int visual = first; visual <= last;) {
        const OutlineRowMap::Place place = m_rows.at(visual);
        const int end = std::min(m_rows.runEnd(visual), last);
        m_source->noteVisibleRows(place.parent, place.row, place.row + (end - visual));
        visual = end + 1;
    }
}

void BrondelOutlineView::resizeEvent(QResizeEvent* event)
{
    QAbstractItemView::resizeEvent(event);
    fitColumns();
    noteVisible();
}

void BrondelOutlineView::fitColumns()
{
    const std::array<int, ListSource::ColumnCount> widths = listColumnsFit(viewport()->width(), *m_widths);
    m_fitting = true;
    for (int column = 0; column < ListSource::ColumnCount; ++column)
        if (m_header->sectionSize(column) != widths[size_t(column)])
            m_header->resizeSection(column, widths[size_t(column)]);
    m_fitting = false;
}

void BrondelOutlineView::columnResized(int column, int oldWidth, int newWidth)
{
    if (m_fitting || column < 0 || column >= ListSource::ColumnCount)
        return;
    auto& preferred = m_widths->preferred;
    if (column == ListSource::Name)
        preferred[ListSource::Date] = std::max(kMinWidths[ListSource::Date], preferred[ListSource::Date] - (newWidth - oldWidth));
    else
        preferred[size_t(column)] = std::max(kMinWidths[size_t(column)], newWidth);
    fitColumns();
}

void BrondelOutlineView::showSortIndicator(const BrondelSettings& settings)
{
    const auto key = std::find(kSortKeys.begin(), kSortKeys.end(), settings.sortBy);
    m_header->setSortIndicatorShown(key != kSortKeys.end());
    if (key != kSortKeys.end())
        m_header->setSortIndicator(int(key - kSortKeys.begin()), settings.ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

QModelIndexList BrondelOutlineView::visibleRows() const
{
    QModelIndexList rows;
    const int first = visualRowAt(0);
    if (first < 0)
        return rows;
    const int last = std::min(m_rows.rowCount() - 1, visualRowAt(viewport()->height() - 1) < 0
            ? m_rows.rowCount() - 1 : visualRowAt(viewport()->height() - 1));
    for (int visual = first; visual <= last; ++visual) {
        const OutlineRowMap::Place place = m_rows.at(visual);
        rows << m_source->index(place.row, 0, place.parent);
    }
    return rows;
}

void BrondelOutlineView::infoChanged()
{
    // Only the painted texts change: a repaint, not dataChanged.
    if (isVisible() && m_source->rowCount() > 0)
        viewport()->update();
}

std::unique_ptr<QMenu> BrondelOutlineView::menuAt(QPoint pos)
{
    return contentMenuAt(*this, pos, m_hooks);
}

void BrondelOutlineView::contextMenuEvent(QContextMenuEvent* event)
{
    if (auto menu = menuAt(event->pos()))
        contentMenuPopup(std::move(menu), *this, event->globalPos());
}
