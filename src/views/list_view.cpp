#include "views/list_view.h"

#include "views/list_size_cell.h"
#include "views/row_info_cache.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QMenu>

BrondelOutlineView::BrondelOutlineView(ListSource* source, const BrowserContext& context, ContentHooks hooks,
    QWidget* parent)
    : QTreeView(parent)
    , m_source(source)
    , m_hooks(std::move(hooks))
{
    source->setParent(this);
    setUniformRowHeights(true); // a folder of 100,000 rows lays out in constant time
    setModel(source);
    setItemDelegateForColumn(ListSource::Size, new ListSizeCell(*source, *context.settings, this));
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setTextElideMode(Qt::ElideRight);
    setAllColumnsShowFocus(true);
    setExpandsOnDoubleClick(false);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(ListSource::Name, QHeaderView::Stretch);
    header()->resizeSection(ListSource::Date, 170);
    header()->resizeSection(ListSource::Size, 190);
    header()->resizeSection(ListSource::Kind, 110);
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
    noteVisible();
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
    QModelIndexList rows;
    const int height = viewport()->height();
    for (QModelIndex index = indexAt(QPoint(1, 1)); index.isValid(); index = indexBelow(index)) {
        if (visualRect(index).top() >= height)
            break;
        rows << index;
    }
    return rows;
}

void BrondelOutlineView::infoChanged()
{
    if (!isVisible() || m_source->rowCount() == 0)
        return;
    m_source->reloadRows(visibleRows(), ListSource::Size);
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
