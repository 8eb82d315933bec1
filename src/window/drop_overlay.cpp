#include "window/drop_overlay.h"

#include "window/pane_area.h"
#include "window/pane_header.h"
#include "window/pane_view.h"

#include <QPainter>

DropOverlay::DropOverlay(PaneArea* area)
    : QWidget(area)
    , m_area(area)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    hide();
}

void DropOverlay::track(PaneView* source, QPoint pointer)
{
    m_active = true;
    m_title = source->header()->label();
    m_pointer = pointer;
    m_target = m_area->paneAt(pointer);
    if (m_target)
        m_zone = dropZone(pointer, m_area->rectOf(m_target));
    setGeometry(m_area->rect());
    raise();
    show();
    update();
}

void DropOverlay::deactivate()
{
    m_active = false;
    m_target = nullptr;
    hide();
    update();
}

void DropOverlay::paintEvent(QPaintEvent*)
{
    if (!m_active)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor accent = palette().color(QPalette::Highlight);
    if (m_target) {
        QRect paneRect = m_area->rectOf(m_target);
        QRectF zoneRect = dropZoneRect(m_zone, paneRect);
        QColor fill = accent;
        fill.setAlphaF(0.22f);
        painter.setPen(QPen(accent, 2));
        painter.setBrush(fill);
        painter.drawRoundedRect(zoneRect.adjusted(2, 2, -2, -2), 6, 6);
    }
    // The dragged pane's title follows the pointer.
    QFontMetrics metrics(font());
    QRect label = metrics.boundingRect(m_title).adjusted(-8, -4, 8, 4);
    label.moveCenter(m_pointer + QPoint(0, -label.height()));
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(label, 6, 6);
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(label, Qt::AlignCenter, m_title);
}
