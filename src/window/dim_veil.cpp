#include "window/dim_veil.h"

#include <QEvent>
#include <QPainter>
#include <QVariantAnimation>

DimVeil::DimVeil(QWidget* parent, int fadeMs)
    : QWidget(parent)
    , m_fade(new QVariantAnimation(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    m_fade->setDuration(fadeMs);
    connect(m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) { apply(value.toDouble()); });
    parent->installEventFilter(this); // follows the parent's size
    setGeometry(parent->rect());
    hide();
}

void DimVeil::setStrength(double strength, bool animated)
{
    m_fade->stop();
    if (!animated) {
        apply(strength);
        return;
    }
    m_fade->setStartValue(m_strength);
    m_fade->setEndValue(strength);
    m_fade->start();
}

void DimVeil::apply(double strength)
{
    m_strength = strength;
    if (strength <= 0) {
        hide();
        return;
    }
    raise(); // above a content view built since
    show();
    update();
}

bool DimVeil::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parent() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void DimVeil::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor ground = palette().color(QPalette::Window);
    ground.setAlphaF(float(m_strength));
    painter.fillRect(rect(), ground);
}
