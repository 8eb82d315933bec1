#include "views/peek/peek_plate.h"

#include "fs/paths.h"
#include "services/file_icons.h"
#include "services/theme_icons.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

PeekPlate::PeekPlate(const LabItem& item, Size size, QWidget* parent)
    : QAbstractButton(parent)
    , m_item(item)
    , m_size(size)
{
    m_name = QString::fromStdString(item.name);
    m_meta = QString::fromStdString(labMeta(item));
    if (item.capacity > 0 || item.kind == "Volume")
        m_icon = iconSymbol("externaldrive");
    else if (item.isDir)
        m_icon = iconSymbol(item.path == homeDir() ? "house" : "folder");
    else
        m_icon = FileIcons::shared().iconFor(item.name);
    setUp();
}

PeekPlate::PeekPlate(int64_t more, const std::string& folder, Size size, QWidget* parent)
    : QAbstractButton(parent)
    , m_more(more)
    , m_size(size)
{
    m_item.path = folder;
    m_item.isDir = true;
    m_name = tr("+ %n more", nullptr, int(std::min<int64_t>(more, INT32_MAX)));
    m_meta = tr("show all in the list");
    setUp();
}

void PeekPlate::setUp()
{
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    setText(m_name);
    setAccessibleName(m_name);
    setAccessibleDescription(m_meta);
    setToolTip(m_name + QLatin1Char('\n') + m_meta);
    setFixedSize(sizeHint());
}

void PeekPlate::setCurrent(bool current)
{
    if (m_current == current)
        return;
    m_current = current;
    update();
}

void PeekPlate::setOpened(bool opened)
{
    if (m_opened == opened)
        return;
    m_opened = opened;
    update();
}

QSize PeekPlate::sizeHint() const
{
    return {kWidth, m_size == Size::Small ? kSmallHeight : kHeight};
}

void PeekPlate::paintEvent(QPaintEvent*)
{
    const qreal ratio = devicePixelRatioF();
    const quint32 state = quint32(m_current) | quint32(m_opened) << 1 | quint32(isDown()) << 2
        | quint32(underMouse()) << 3 | quint32(isEnabled()) << 4;
    if (m_drawn.isNull() || m_drawnState != state || m_drawn.size() != size() * ratio) {
        m_drawn = QPixmap(size() * ratio);
        m_drawn.setDevicePixelRatio(ratio);
        m_drawn.fill(Qt::transparent);
        QPainter onto(&m_drawn);
        draw(onto);
        m_drawnState = state;
    }
    QPainter(this).drawPixmap(0, 0, m_drawn);
}

void PeekPlate::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange
        || event->type() == QEvent::StyleChange)
        m_drawn = QPixmap(); // drawn again in the new look
    QAbstractButton::changeEvent(event);
}

void PeekPlate::draw(QPainter& p) const
{
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette& pal = palette();
    const QRectF frame = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    QColor fill = pal.color(QPalette::Base);
    if (m_opened || isDown())
        fill = pal.color(QPalette::Highlight).lighter(185);
    else if (underMouse())
        fill = pal.color(QPalette::AlternateBase);
    p.setPen(QPen(m_current ? pal.color(QPalette::Highlight) : pal.color(QPalette::Mid), m_current ? 2.0 : 1.0));
    p.setBrush(fill);
    p.drawRoundedRect(frame, 7, 7);

    const bool small = m_size == Size::Small;
    const int iconSide = small ? 18 : 32;
    const int pad = small ? 6 : 9;
    int x = pad;
    if (!m_more) {
        m_icon.paint(&p, QRect(x, (height() - iconSide) / 2, iconSide, iconSide));
        x += iconSide + pad;
    }
    const int textWidth = width() - x - pad;
    QFont nameFont = font();
    nameFont.setBold(m_more > 0);
    p.setFont(nameFont);
    p.setPen(pal.color(QPalette::Text));
    const QFontMetrics nameMetrics(nameFont);
    const QString name = nameMetrics.elidedText(m_name, Qt::ElideMiddle, textWidth);
    if (small) {
        p.drawText(QRect(x, 0, textWidth, height()), Qt::AlignVCenter | Qt::AlignLeft, name);
        return;
    }
    p.drawText(QRect(x, 7, textWidth, nameMetrics.height()), Qt::AlignLeft, name);
    QFont metaFont = font();
    metaFont.setPointSizeF(std::max(6.0, metaFont.pointSizeF() * 0.85));
    p.setFont(metaFont);
    p.setPen(pal.color(QPalette::PlaceholderText));
    const QFontMetrics metaMetrics(metaFont);
    const int metaTop = 9 + nameMetrics.height();
    p.drawText(QRect(x, metaTop, textWidth, metaMetrics.height()), Qt::AlignLeft,
        metaMetrics.elidedText(m_meta, Qt::ElideRight, textWidth));
    if (m_item.capacity > 0) { // a drive: how full it is
        const double used = std::clamp(double(m_item.bytes) / double(m_item.capacity), 0.0, 1.0);
        const QRectF bar(x, height() - 8, textWidth, 3);
        p.setPen(Qt::NoPen);
        p.setBrush(pal.color(QPalette::Midlight));
        p.drawRoundedRect(bar, 1.5, 1.5);
        p.setBrush(used > 0.9 ? QColor(214, 69, 65) : pal.color(QPalette::Highlight));
        p.drawRoundedRect(QRectF(bar.x(), bar.y(), bar.width() * used, bar.height()), 1.5, 1.5);
    }
}
