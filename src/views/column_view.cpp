#include "views/column_view.h"

#include "views/row_info_cache.h"

#include <QContextMenuEvent>
#include <QListView>
#include <QScrollBar>
#include <QMenu>

namespace {
constexpr int kLayoutBatch = 20000;
} // namespace

BrondelBrowser::BrondelBrowser(ColumnSource* source, const BrowserContext&, ContentHooks hooks, QWidget* parent)
    : QColumnView(parent)
    , m_source(source)
    , m_hooks(std::move(hooks))
{
    source->setParent(this);
    // Every column takes the view's delegate, edit triggers and drag and drop settings
    // when it is made, the first one with the model: they come first.
    setItemDelegate(contentRenameEditor(*source, m_hooks, this));
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    contentDragDropSetUp(*this, *source, m_hooks);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setModel(source);
    setResizeGripsVisible(true);
    connect(this, &QAbstractItemView::doubleClicked, this,
        [this](const QModelIndex& index) { contentActivate(m_source->nodeAt(index), m_hooks); });
    connect(&RowInfoCache::shared(), &RowInfoCache::changed, this, &BrondelBrowser::infoChanged);
    connect(source, &NodeTreeModel::metaArrived, this, &BrondelBrowser::infoChanged);
}

void BrondelBrowser::noteVisible(QAbstractItemView* column)
{
    const QModelIndex top = column->indexAt(QPoint(1, 1));
    if (!top.isValid())
        return;
    QModelIndex bottom = column->indexAt(QPoint(1, column->viewport()->height() - 2));
    const int last = bottom.isValid() ? bottom.row() : m_source->rowCount(column->rootIndex()) - 1;
    m_source->noteVisibleRows(column->rootIndex(), top.row(), last);
}

QAbstractItemView* BrondelBrowser::createColumn(const QModelIndex& rootIndex)
{
    QAbstractItemView* column = QColumnView::createColumn(rootIndex);
    if (auto* list = qobject_cast<QListView*>(column)) {
        list->setUniformItemSizes(true);
        // A column of a million rows is laid out a slice at a time between events, never
        // in one pass that holds the window up.
        list->setLayoutMode(QListView::Batched);
        list->setBatchSize(kLayoutBatch);
        list->setTextElideMode(Qt::ElideRight);
    }
    column->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(column, &QWidget::customContextMenuRequested, this, [this, column](QPoint pos) {
        if (auto menu = menuAt(column, pos))
            contentMenuPopup(std::move(menu), *column, column->viewport()->mapToGlobal(pos));
    });
    // Whatever scrolls into sight has its sizes and dates read first.
    connect(column->verticalScrollBar(), &QScrollBar::valueChanged, this, [this, column] { noteVisible(column); });
    connect(m_source, &QAbstractItemModel::rowsInserted, column, [this, column] { noteVisible(column); });
    // Return opens a folder in place of a double-click.
    connect(column, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        if (!index.isValid())
            return;
        DirNodePtr node = m_source->nodeAt(index);
        if (node && !node->isDir)
            contentActivate(node, m_hooks);
    });
    return column;
}

QList<QAbstractItemView*> BrondelBrowser::columns() const
{
    QList<QAbstractItemView*> list;
    for (QObject* child : viewport()->children())
        if (auto* view = qobject_cast<QAbstractItemView*>(child))
            list << view;
    return list;
}

void BrondelBrowser::infoChanged()
{
    // Every column draws its rows afresh, which recomputes their texts (and with them the
    // sizes). A repaint rather than dataChanged: a list view lays out all its rows again
    // on dataChanged, which for a folder of 100,000 entries costs a tenth of a second.
    // Selection and scroll position stay.
    for (QAbstractItemView* column : columns())
        column->viewport()->update();
}

std::unique_ptr<QMenu> BrondelBrowser::menuAt(QAbstractItemView* column, QPoint pos)
{
    // Beside the columns the browser itself finds no row: the menu of empty space.
    return contentMenuAt(column ? *column : static_cast<QAbstractItemView&>(*this), pos, m_hooks);
}

void BrondelBrowser::contextMenuEvent(QContextMenuEvent* event)
{
    // Only the space beside the columns gets here: the columns answer for themselves.
    if (auto menu = menuAt(nullptr, event->pos()))
        contentMenuPopup(std::move(menu), *this, event->globalPos());
}
