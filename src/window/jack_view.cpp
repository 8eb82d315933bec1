#include "window/jack_view.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>

JackView::JackView(QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(sizeHint());
    setCursor(Qt::OpenHandCursor);
    setToolTip(tr("Cable: drag from this jack to another pane's jack. This pane = FROM (browses), "
                  "target = TO (shows what you open). Click to detach; right-click for options."));
    setAccessibleName(tr("Cable jack"));
    setAccessibleDescription(tr("Links this pane to another one, which then shows what this pane opens"));
}

void JackView::setState(bool linked, QColor color)
{
    m_linked = linked;
    m_color = color;
    update();
}

void JackView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF ring = QRectF(rect()).adjusted(3, 3, -3, -3);
    QColor pen = m_linked ? m_color : palette().color(QPalette::Mid);
    painter.setPen(QPen(pen, 2));
    painter.setBrush(m_linked ? m_color.lighter(150) : Qt::transparent);
    painter.drawEllipse(ring);
    painter.setBrush(pen);
    painter.drawEllipse(ring.center(), 2, 2);
}

void JackView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_moved = false;
}

void JackView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    m_moved = true;
    emit dragged(event->globalPosition().toPoint());
}

void JackView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        emit released(event->globalPosition().toPoint(), m_moved);
}

void JackView::enterEvent(QEnterEvent*)
{
    emit hovered(true);
}

void JackView::leaveEvent(QEvent*)
{
    emit hovered(false);
}

void JackView::contextMenuEvent(QContextMenuEvent* event)
{
    emit menuRequested(event->globalPos());
}
