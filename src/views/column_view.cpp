#include "views/column_view.h"

#include "views/column_list.h"
#include "views/row_info_cache.h"

#include <QContextMenuEvent>
#include <QDragMoveEvent>
#include <QScrollBar>
#include <QMenu>

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
    m_spring.setSingleShot(true);
    m_spring.setInterval(kSpringDelayMs);
    connect(&m_spring, &QTimer::timeout, this, [this] {
        if (m_springFolder.isValid())
            setCurrentIndex(m_springFolder); // its column opens beside
    });
}

void BrondelBrowser::springHover(QAbstractItemView* column, QPoint pos)
{
    const QModelIndex index = column ? column->indexAt(pos) : QModelIndex();
    if (!index.isValid() || !m_source->isFolder(index) || index == currentIndex()) {
        m_spring.stop();
        m_springFolder = QPersistentModelIndex();
        return;
    }
    if (index == m_springFolder && m_spring.isActive())
        return; // still on the same folder: the wait goes on
    m_springFolder = index;
    m_spring.start();
}

bool BrondelBrowser::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* column = qobject_cast<QAbstractItemView*>(watched->parent());
        springHover(column, static_cast<QDragMoveEvent*>(event)->position().toPoint());
        break;
    }
    case QEvent::DragLeave:
    case QEvent::Drop:
        springHover(nullptr, {});
        break;
    default:
        break;
    }
    return QColumnView::eventFilter(watched, event);
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
    // As QColumnView::createColumn, with our list.
    auto* column = new ColumnList(viewport());
    initializeColumn(column);
    column->setRootIndex(rootIndex);
    if (model()->canFetchMore(rootIndex))
        model()->fetchMore(rootIndex);
    column->setTextElideMode(Qt::ElideRight);
    column->viewport()->installEventFilter(this); // drags hovering its folders
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
