#pragma once
// The column mode's browser: one list per folder level, the favourites above the root
// column's contents; size texts of every column refresh when sizes arrive. A folder
// hovered for a moment during a drag opens its column (spring-loaded), so that a drop
// can go deeper.

#include "views/column_source.h"
#include "views/content_hooks.h"

#include <QColumnView>
#include <QPersistentModelIndex>
#include <QTimer>

class BrondelBrowser : public QColumnView {
    Q_OBJECT
public:
    BrondelBrowser(ColumnSource* source, const BrowserContext& context, ContentHooks hooks, QWidget* parent = nullptr);

    ColumnSource* source() const { return m_source; }
    // The list views of the columns, first to last.
    QList<QAbstractItemView*> columns() const;

    void infoChanged();

    // The context menu at `pos` (viewport coordinates) of `column`, or of the empty space
    // beside the columns when `column` is null: a header's section menu, a row's menu
    // (that row selected in its column first) or the menu of empty space.
    std::unique_ptr<QMenu> menuAt(QAbstractItemView* column, QPoint pos);

    // Tells the model which rows of `column` are on screen.
    void noteVisible(QAbstractItemView* column);

    // How long a folder is hovered during a drag before it opens.
    static constexpr int kSpringDelayMs = 800;

protected:
    QAbstractItemView* createColumn(const QModelIndex& rootIndex) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // A drag over `column` at `pos` (viewport coordinates): the folder under it opens
    // once hovered long enough; anything else, or leaving, stops the wait.
    void springHover(QAbstractItemView* column, QPoint pos);

    ColumnSource* m_source;
    ContentHooks m_hooks;
    QTimer m_spring;
    QPersistentModelIndex m_springFolder;
};
