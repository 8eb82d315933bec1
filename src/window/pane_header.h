#pragma once
// The strip above each pane: its title, its view mode, the cable jack and badge, and
// the split and close buttons. Dragging the header moves the pane (the frame tracks the
// drag once the pointer has gone more than 6 pixels).

#include "app/view_mode.h"

#include <QPoint>
#include <QWidget>

#include <optional>

class QButtonGroup;
class QLabel;
class QToolButton;
class JackView;

class PaneHeader : public QWidget {
    Q_OBJECT
public:
    explicit PaneHeader(QWidget* parent = nullptr);

    JackView* jack() const { return m_jack; }
    QString label() const;
    void setLabel(const QString& text);
    void setMode(ViewMode mode);
    void setActive(bool active);
    void setBadge(const QString& text);
    bool isDragging() const { return m_dragging; }

    static constexpr double kDragThreshold = 6.0;

signals:
    void splitRight();
    void splitDown();
    void closeTapped();
    void modeChosen(ViewMode mode);
    void pressed();
    void dragMoved(QPoint globalPos);
    void dragEnded(QPoint globalPos);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_label;
    QLabel* m_badge;
    JackView* m_jack;
    QButtonGroup* m_seg;
    std::optional<QPoint> m_dragFrom;
    bool m_dragging = false;
    bool m_active = false;
};
