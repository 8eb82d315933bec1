#pragma once
// The list mode's outline view: group rows for the favourites sections, a usage-bar size
// column, and size texts refreshed for the visible rows when sizes arrive.

#include "views/content_view.h"
#include "views/list_source.h"

#include <QTreeView>

class BrondelOutlineView : public QTreeView {
    Q_OBJECT
public:
    BrondelOutlineView(ListSource* source, const BrowserContext& context, ContentHooks hooks, QWidget* parent = nullptr);

    ListSource* source() const { return m_source; }

    // Reloads the size cells of the rows on screen; rows out of sight are drawn afresh
    // when they scroll in.
    void infoChanged();
    // The rows intersecting the visible area, top to bottom.
    QModelIndexList visibleRows() const;

    // The context menu at `pos` (viewport coordinates): a header's section menu, a row's
    // menu (the row alone selected first) or the menu of empty space.
    std::unique_ptr<QMenu> menuAt(QPoint pos);

    // Tells the model which rows are on screen (their sizes and dates are read first).
    void noteVisible();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void spanHeaders(const QModelIndex& parent, int first, int last);

    ListSource* m_source;
    ContentHooks m_hooks;
};
