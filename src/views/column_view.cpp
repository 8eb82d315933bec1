#include "views/column_view.h"

#include "window/core_bridge.h"

#include <QListView>

BrondelBrowser::BrondelBrowser(ColumnSource* source, const BrowserContext&, ContentHooks hooks, QWidget* parent)
    : QColumnView(parent)
    , m_source(source)
    , m_hooks(std::move(hooks))
{
    source->setParent(this);
    setModel(source);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setResizeGripsVisible(true);
    connect(this, &QAbstractItemView::doubleClicked, this,
        [this](const QModelIndex& index) { contentActivate(m_source->nodeAt(index), m_hooks); });
    connect(&InfoChangedHub::instance(), &InfoChangedHub::infoChanged, this, &BrondelBrowser::infoChanged);
}

QAbstractItemView* BrondelBrowser::createColumn(const QModelIndex& rootIndex)
{
    QAbstractItemView* column = QColumnView::createColumn(rootIndex);
    if (auto* list = qobject_cast<QListView*>(column)) {
        list->setUniformItemSizes(true);
        list->setTextElideMode(Qt::ElideRight);
    }
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
    // Every column's rows: their texts carry the sizes. Selection and scroll stay.
    for (QAbstractItemView* column : columns()) {
        QModelIndex root = column->rootIndex();
        const int rows = m_source->rowCount(root);
        const QRect area = column->viewport()->rect();
        QModelIndexList shown;
        QModelIndex first = column->indexAt(area.topLeft() + QPoint(1, 1));
        for (int row = first.isValid() ? first.row() : 0; row < rows; ++row) {
            QModelIndex index = m_source->index(row, 0, root);
            if (column->visualRect(index).top() > area.bottom())
                break;
            shown << index;
        }
        m_source->reloadRows(shown, 0);
    }
}
