#include "views/list_view.h"

#include "views/list_size_cell.h"
#include "views/row_info_cache.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QMenu>

#include <algorithm>

namespace {

// Below these a column's text is mostly ellipsis.
constexpr std::array<int, ListSource::ColumnCount> kMinWidths{120, 90, 60, 50};
// Name gets at least this much (or half a narrow view) before it is squeezed too.
constexpr int kNameReadable = 220;

constexpr std::array<const char*, ListSource::ColumnCount> kSortKeys{"name", "date", "size", "kind"};

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
    : QTreeView(parent)
    , m_source(source)
    , m_hooks(std::move(hooks))
    , m_widths(m_hooks.listWidths ? m_hooks.listWidths : std::make_shared<ListColumnWidths>())
{
    source->setParent(this);
    setUniformRowHeights(true); // a folder of 100,000 rows lays out in constant time
    setModel(source);
    setItemDelegateForColumn(ListSource::Size, new ListSizeCell(*source, *context.settings, this));
    setItemDelegateForColumn(ListSource::Name, contentRenameEditor(*source, m_hooks, this));
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    contentDragDropSetUp(*this, *source, m_hooks);
    setAutoExpandDelay(800); // a folder hovered during a drag opens (spring-loaded)
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setTextElideMode(Qt::ElideRight);
    setAllColumnsShowFocus(true);
    setExpandsOnDoubleClick(false);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Interactive);
    header()->setMinimumSectionSize(kMinWidths[ListSource::Kind]);
    header()->setSectionsClickable(true);
    header()->setSectionsMovable(false);
    showSortIndicator(*context.settings);
    fitColumns();
    connect(header(), &QHeaderView::sectionResized, this, &BrondelOutlineView::columnResized);
    connect(header(), &QHeaderView::sectionClicked, this, [this](int column) {
        if (column >= 0 && column < ListSource::ColumnCount && m_hooks.sortBy)
            m_hooks.sortBy(kSortKeys[size_t(column)]);
    });
    spanHeaders({}, 0, source->rowCount() - 1);
    connect(source, &QAbstractItemModel::rowsInserted, this, &BrondelOutlineView::spanHeaders);
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
}

void BrondelOutlineView::noteVisible()
{
    // The rows on screen under each parent they belong to (the top level mostly; an
    // expanded folder's rows when it fills the view).
    const QModelIndexList rows = visibleRows();
    for (qsizetype i = 0; i < rows.size();) {
        const QModelIndex parent = rows[i].parent();
        qsizetype j = i;
        while (j + 1 < rows.size() && rows[j + 1].parent() == parent)
            ++j;
        m_source->noteVisibleRows(parent, rows[i].row(), rows[j].row());
        i = j + 1;
    }
}

void BrondelOutlineView::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    fitColumns();
    noteVisible();
}

void BrondelOutlineView::fitColumns()
{
    const std::array<int, ListSource::ColumnCount> widths = listColumnsFit(viewport()->width(), *m_widths);
    m_fitting = true;
    for (int column = 0; column < ListSource::ColumnCount; ++column)
        if (header()->sectionSize(column) != widths[size_t(column)])
            header()->resizeSection(column, widths[size_t(column)]);
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
    header()->setSortIndicatorShown(key != kSortKeys.end());
    if (key != kSortKeys.end())
        header()->setSortIndicator(int(key - kSortKeys.begin()), settings.ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void BrondelOutlineView::spanHeaders(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return; // headers live at the top level only
    for (int row = first; row <= last; ++row) {
        DirNodePtr node = m_source->nodeAt(m_source->index(row, 0));
        if (!node || !node->isSectionHeader)
            break; // the headers come first
        setFirstColumnSpanned(row, parent, true);
    }
}

QModelIndexList BrondelOutlineView::visibleRows() const
{
    // Found by position: the tree's lookup of a row from its index (indexBelow,
    // visualRect) searches its row list outward from the last row it looked at, which in
    // a folder of a million rows can be most of the list.
    QModelIndexList rows;
    const int height = viewport()->height();
    constexpr int kStep = 4; // rows are never this short
    for (int y = 1; y < height; y += kStep) {
        const QModelIndex index = indexAt(QPoint(1, y));
        if (!index.isValid())
            break;
        if (rows.isEmpty() || rows.back() != index)
            rows << index;
    }
    return rows;
}

void BrondelOutlineView::infoChanged()
{
    // Only the painted texts change: a repaint, not dataChanged, which makes the tree look
    // each row up in its row list (see visibleRows).
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
