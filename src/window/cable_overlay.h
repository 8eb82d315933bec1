#pragma once
// Draws the cables between panes above the pane area. Normally invisible, it fades in
// while the pointer is over a jack or a cable is dragged, and fades out shortly after.

#include "window/brondel_window.h"

#include <QPointer>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

#include <functional>

class CableOverlay : public QWidget {
    Q_OBJECT
public:
    // `jackCentre` gives a pane's jack centre in overlay coordinates.
    CableOverlay(const BrondelWindow::Cables& cables, std::function<QPoint(BrondelWindow*)> jackCentre,
        QWidget* parent);

    // A loose cable from `from`'s jack to `pointer` (overlay coordinates); none ends it.
    void setDrag(BrondelWindow* from, QPoint pointer);
    void clearDrag();
    void fadeIn();
    // Fades out `seconds` from now, cancelling any earlier plan.
    void scheduleFade(double seconds);
    double alpha() const { return m_alpha; }

    static QColor cableColor(const BrondelWindow* from, const BrondelWindow* to);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void animateTo(double alpha, int milliseconds);

    const BrondelWindow::Cables& m_cables;
    std::function<QPoint(BrondelWindow*)> m_jackCentre;
    QPointer<BrondelWindow> m_dragFrom;
    QPoint m_dragPointer;
    double m_alpha = 0.0;
    QVariantAnimation m_fade;
    QTimer m_fadeWork;
};
