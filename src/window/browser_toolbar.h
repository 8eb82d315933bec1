#pragma once
// The window's toolbar, icon only: Back, Forward, the "View" mode segments, a flexible
// space, Split, Info and Trash. Items are found by their identifiers ("back",
// "forward", "viewmode", "split", "info", "trash") as object names.

#include "app/view_mode.h"

#include <QToolBar>

class QActionGroup;

class BrowserToolbar : public QToolBar {
    Q_OBJECT
public:
    explicit BrowserToolbar(QWidget* parent = nullptr);

    QAction* item(const char* identifier) const;
    // Checks the segment of `mode` without emitting modeChosen.
    void syncMode(ViewMode mode);
    ViewMode selectedMode() const;

signals:
    void backTriggered();
    void forwardTriggered();
    void modeChosen(ViewMode mode);
    void splitTriggered();
    void infoTriggered();
    void trashTriggered();

private:
    QAction* addItem(const char* identifier, const QString& label, const char* symbol);
    QActionGroup* m_modes;
};
