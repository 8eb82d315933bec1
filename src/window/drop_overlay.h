#pragma once
// Drawn over the pane area while a pane is dragged by its header: the zone of the pane
// under the pointer where the dragged pane would land.

#include "window/drop_zone.h"

#include <QPointer>
#include <QWidget>

class PaneArea;
class PaneView;

class DropOverlay : public QWidget {
    Q_OBJECT
public:
    // A child of the pane area, covering it.
    explicit DropOverlay(PaneArea* area);

    // Follows the pointer (in pane-area coordinates) for the dragged pane `source`.
    void track(PaneView* source, QPoint pointer);
    void deactivate();

    bool isActive() const { return m_active; }
    PaneView* target() const { return m_target; }
    DropZone zone() const { return m_zone; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PaneArea* m_area;
    QString m_title;
    QPoint m_pointer;
    QPointer<PaneView> m_target;
    DropZone m_zone = DropZone::Center;
    bool m_active = false;
};
