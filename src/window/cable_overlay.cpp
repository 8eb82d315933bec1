#include "window/cable_overlay.h"

#include <QPainter>
#include <QPainterPath>

CableOverlay::CableOverlay(const BrondelWindow::Cables& cables, std::function<QPoint(BrondelWindow*)> jackCentre,
    QWidget* parent)
    : QWidget(parent)
    , m_cables(cables)
    , m_jackCentre(std::move(jackCentre))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    m_fadeWork.setSingleShot(true);
    connect(&m_fadeWork, &QTimer::timeout, this, [this] { animateTo(0.0, 450); });
    connect(&m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_alpha = value.toDouble();
        update();
    });
}

QColor CableOverlay::cableColor(const BrondelWindow* from, const BrondelWindow* to)
{
    // Blue, indigo, purple, pink, orange.
    static const QColor palette[] = {QColor(0, 122, 255), QColor(88, 86, 214), QColor(175, 82, 222),
        QColor(255, 45, 85), QColor(255, 149, 0)};
    return palette[BrondelWindow::Cables::colorIndex(from, to)];
}

void CableOverlay::animateTo(double alpha, int milliseconds)
{
    m_fade.stop();
    m_fade.setStartValue(m_alpha);
    m_fade.setEndValue(alpha);
    m_fade.setDuration(milliseconds);
    m_fade.start();
}

void CableOverlay::fadeIn()
{
    m_fadeWork.stop();
    raise();
    show();
    animateTo(1.0, 180);
}

void CableOverlay::scheduleFade(double seconds)
{
    m_fadeWork.start(int(seconds * 1000));
}

void CableOverlay::setDrag(BrondelWindow* from, QPoint pointer)
{
    m_dragFrom = from;
    m_dragPointer = pointer;
    fadeIn();
    update();
}

void CableOverlay::clearDrag()
{
    m_dragFrom = nullptr;
    update();
}

void CableOverlay::paintEvent(QPaintEvent*)
{
    if (m_alpha <= 0.0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_alpha);
    auto drawCable = [&](QPoint a, QPoint b, QColor color) {
        QPainterPath path(a);
        const double sag = 40 + std::abs(b.x() - a.x()) * 0.15;
        path.cubicTo(QPointF(a.x(), a.y() + sag), QPointF(b.x(), b.y() + sag), b);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, 3.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawPath(path);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(QPointF(a), 4.5, 4.5);
        painter.drawEllipse(QPointF(b), 4.5, 4.5);
    };
    for (const auto& [from, to] : m_cables.cables())
        drawCable(m_jackCentre(from), m_jackCentre(to), cableColor(from, to));
    if (m_dragFrom)
        drawCable(m_jackCentre(m_dragFrom), m_dragPointer, palette().color(QPalette::Highlight));
}
