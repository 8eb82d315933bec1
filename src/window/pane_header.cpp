#include "window/pane_header.h"

#include "services/view_modes.h"
#include "window/jack_view.h"
#include "services/shortcuts.h"
#include "services/theme_icons.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineF>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>

namespace {

QToolButton* toolButton(QWidget* parent, const char* symbol, const QString& name, const QString& tip,
    const QString& description)
{
    auto* button = new QToolButton(parent);
    button->setIcon(iconSymbol(symbol));
    button->setToolTip(tip);
    button->setAccessibleName(name);
    button->setAccessibleDescription(description);
    button->setAutoRaise(true);
    button->setIconSize(QSize(14, 14));
    return button;
}

} // namespace

PaneHeader::PaneHeader(QWidget* parent)
    : QWidget(parent)
{
    setAutoFillBackground(false);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 1, 4, 1);
    row->setSpacing(2);
    m_jack = new JackView(this);
    row->addWidget(m_jack);
    m_badge = new QLabel(this);
    m_badge->setVisible(false);
    row->addWidget(m_badge);
    m_label = new QLabel(this);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setMinimumWidth(20);
    row->addWidget(m_label, 1);

    m_seg = new QButtonGroup(this);
    m_seg->setExclusive(true);
    for (const ViewModeItem& mode : viewModeItems()) {
        const QString shown = viewModeName(mode);
        auto* button = toolButton(this, mode.symbol, tr("View as %1").arg(shown), shortcutTip(shown, mode.key),
            tr("Shows this pane as %1").arg(shown));
        button->setCheckable(true);
        m_seg->addButton(button, int(mode.mode));
        row->addWidget(button);
    }
    connect(m_seg, &QButtonGroup::idClicked, this, [this](int id) { emit modeChosen(ViewMode(id)); });
    row->addSpacing(6);

    // The keys in the tips are those of the active pane's commands, which these buttons
    // do for this pane.
    auto* right = toolButton(this, "rectangle.split.2x1", tr("Split right"),
        shortcutTip(tr("Split right"), Shortcut::SplitRight), tr("Splits this pane side by side"));
    auto* down = toolButton(this, "rectangle.split.1x2", tr("Split down"),
        shortcutTip(tr("Split down"), Shortcut::SplitDown), tr("Splits this pane into two, one above the other"));
    auto* close = toolButton(this, "xmark.circle.fill", tr("Close pane"),
        shortcutTip(tr("Close pane"), Shortcut::CloseSplit), tr("Closes this split"));
    close->setWhatsThis(shortcutTip(tr("Close this split"), Shortcut::CloseSplit));
    close->setStatusTip(shortcutTip(tr("Close this split"), Shortcut::CloseSplit));
    row->addWidget(right);
    row->addWidget(down);
    row->addWidget(close);
    connect(right, &QToolButton::clicked, this, &PaneHeader::splitRight);
    connect(down, &QToolButton::clicked, this, &PaneHeader::splitDown);
    connect(close, &QToolButton::clicked, this, &PaneHeader::closeTapped);
    setActive(false);
}

QString PaneHeader::label() const
{
    return m_label->text();
}

void PaneHeader::setLabel(const QString& text)
{
    m_label->setText(text);
}

void PaneHeader::setMode(ViewMode mode)
{
    if (auto* button = m_seg->button(int(mode)))
        button->setChecked(true);
}

void PaneHeader::setBadge(const QString& text)
{
    m_badge->setText(text);
    m_badge->setVisible(!text.isEmpty());
}

void PaneHeader::setActive(bool active)
{
    m_active = active;
    QPalette pal = m_label->palette();
    pal.setColor(QPalette::WindowText,
        palette().color(active ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    m_label->setPalette(pal);
    update();
}

void PaneHeader::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor line = palette().color(QPalette::Mid);
    if (m_active) {
        QColor accent = palette().color(QPalette::Highlight);
        accent.setAlphaF(0.1f);
        painter.fillRect(rect(), accent);
    }
    painter.setPen(line);
    painter.drawLine(rect().bottomLeft(), rect().bottomRight());
}

void PaneHeader::mousePressEvent(QMouseEvent* event)
{
    emit pressed();
    if (event->button() != Qt::LeftButton)
        return;
    m_dragFrom = event->globalPosition().toPoint();
    m_dragging = false;
}

void PaneHeader::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_dragFrom)
        return;
    QPoint at = event->globalPosition().toPoint();
    if (!m_dragging) {
        if (QLineF(*m_dragFrom, at).length() <= kDragThreshold)
            return;
        m_dragging = true;
        setCursor(Qt::ClosedHandCursor);
    }
    emit dragMoved(at);
}

void PaneHeader::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_dragFrom)
        return;
    const bool wasDragging = m_dragging;
    m_dragFrom.reset();
    m_dragging = false;
    if (wasDragging) {
        unsetCursor();
        emit dragEnded(event->globalPosition().toPoint());
    }
}
