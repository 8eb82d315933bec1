#pragma once
// The window's toolbar, icon only: Back, Forward, the "View" mode segments, a flexible
// space, Split, Info and Trash. Items are found by their identifiers ("back",
// "forward", "viewmode", "split", "info", "trash") as object names.

#include "app/view_mode.h"

#include <QToolBar>

class QActionGroup;
class QMenu;

class BrowserToolbar : public QToolBar {
    Q_OBJECT
public:
    explicit BrowserToolbar(QWidget* parent = nullptr);

    QAction* item(const char* identifier) const;
    // Checks the segment of `mode` without emitting modeChosen.
    void syncMode(ViewMode mode);
    ViewMode selectedMode() const;
    // Gives an item a menu that opens at once when the item is clicked.
    void setItemMenu(const char* identifier, QMenu* menu);
    // The Trash item shows whether the Trash holds anything.
    void setTrashFull(bool full);
    bool trashFull() const { return m_trashFull; }

signals:
    void backTriggered();
    void forwardTriggered();
    void modeChosen(ViewMode mode);
    void splitTriggered();
    void trashTriggered();

private:
    bool m_trashFull = false;
    QAction* addItem(const char* identifier, const QString& label, const QString& tip, const QString& description,
        const char* symbol);
    // Names the button of `action` for screen readers.
    void describe(QAction* action, const QString& label, const QString& description);
    QActionGroup* m_modes;
};
