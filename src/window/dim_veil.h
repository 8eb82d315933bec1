#pragma once
// What dims a pane while a slow load is on its way: the window's ground laid over the
// content at some opacity, fading in. A veil rather than an opacity effect on the
// content: Qt draws an ancestor's QGraphicsOpacityEffect when a widget is rendered into
// an image, but the backing store of a pane holding a scroll area never showed it on
// screen (checked under the offscreen platform). The veil also costs nothing while it
// is hidden, and lets every click through.

#include <QWidget>

class QVariantAnimation;

class DimVeil : public QWidget {
public:
    // Covers `parent` whole; hidden until dimmed.
    explicit DimVeil(QWidget* parent, int fadeMs);

    // 0 is clear (and hidden), 1 would hide the content; fades there when `animated`.
    void setStrength(double strength, bool animated);
    double strength() const { return m_strength; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void apply(double strength);

    double m_strength = 0;
    QVariantAnimation* m_fade = nullptr;
};
