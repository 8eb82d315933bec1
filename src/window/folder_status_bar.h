#pragma once
// The status bar of a browser window: how many items the active pane's folder holds,
// how many are selected with their total size, and the free space of the folder's
// drive. Everything that asks the disk (the drive's free space, the cached folder sizes)
// runs in the background; late answers for a folder or a selection the user has left
// are dropped. Selection changes are counted once per burst, from the selection's
// ranges, so selecting a hundred thousand rows costs one pass over them.

#include "services/browser_context.h"

#include <QPointer>
#include <QStatusBar>
#include <QTimer>

#include <cstdint>

class BrondelWindow;
class QItemSelectionModel;
class QLabel;

class FolderStatusBar : public QStatusBar {
    Q_OBJECT
public:
    // At most this many selected folders are asked of the size cache.
    static constexpr int64_t kFolderSizeAsks = 1000;

    explicit FolderStatusBar(const BrowserContext& context, QWidget* parent = nullptr);

    // Follows `pane`: its location, its rebuilt views and their selection.
    void setPane(BrondelWindow* pane);

    // Counts now instead of after the burst (tests).
    void recountNow();

    QString itemsText() const;
    QString selectionText() const;
    QString spaceText() const;

private:
    void watchView();
    void scheduleRecount();
    void recount();
    void readSpace();

    const BrowserContext& m_context;
    QPointer<BrondelWindow> m_pane;
    QPointer<QItemSelectionModel> m_selection;
    QMetaObject::Connection m_selectionLink;
    QMetaObject::Connection m_metaLink;
    QList<QMetaObject::Connection> m_paneLinks;
    QLabel* m_items = nullptr;
    QLabel* m_selected = nullptr;
    QLabel* m_space = nullptr;
    QTimer m_coalesce;
    int64_t m_sizeGeneration = 0;
    int64_t m_spaceGeneration = 0;
    bool m_partial = false; // the shown total lacks folder sizes still being computed
};

// "1 item", "12 items" (translated).
QString statusItemCount(int64_t count);
