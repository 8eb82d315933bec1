#pragma once
// The column mode's browser: one list per folder level, the favourites above the root
// column's contents; size texts of every column refresh when sizes arrive.

#include "views/column_source.h"
#include "views/content_view.h"

#include <QColumnView>

class BrondelBrowser : public QColumnView {
    Q_OBJECT
public:
    BrondelBrowser(ColumnSource* source, const BrowserContext& context, ContentHooks hooks, QWidget* parent = nullptr);

    ColumnSource* source() const { return m_source; }
    // The list views of the columns, first to last.
    QList<QAbstractItemView*> columns() const;

    void infoChanged();

protected:
    QAbstractItemView* createColumn(const QModelIndex& rootIndex) override;

private:
    ColumnSource* m_source;
    ContentHooks m_hooks;
};
