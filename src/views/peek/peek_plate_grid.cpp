#include "views/peek/peek_plate_grid.h"

#include <QEvent>

PeekPlateGrid::PeekPlateGrid(const std::vector<LabItem>& items, int64_t total, const std::string& folder,
    Flow flow, PeekPlate::Size size, QWidget* parent)
    : QWidget(parent)
    , m_flow(flow)
    , m_size(size)
{
    m_plates.reserve(items.size());
    for (size_t i = 0; i < items.size(); ++i) {
        auto* plate = new PeekPlate(items[i], size, this);
        connect(plate, &QAbstractButton::clicked, this, [this, i] { emit pressed(int(i)); });
        m_plates.push_back(plate);
    }
    if (total > int64_t(items.size())) {
        m_more = new PeekPlate(total - int64_t(items.size()), folder, size, this);
        connect(m_more, &QAbstractButton::clicked, this, &PeekPlateGrid::moreRequested);
    }
    setSizePolicy(flow == Flow::Wrap ? QSizePolicy::Expanding : QSizePolicy::Fixed,
        flow == Flow::Row ? QSizePolicy::Fixed : QSizePolicy::Preferred);
    if (flow == Flow::Wrap) {
        QSizePolicy policy = sizePolicy();
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }
    if (!m_plates.empty())
        setCurrent(0);
    layoutHeight(width(), true);
}

PeekPlate* PeekPlateGrid::plate(int index) const
{
    return index >= 0 && index < count() ? m_plates[size_t(index)] : nullptr;
}

void PeekPlateGrid::setCurrent(int index)
{
    if (index < 0 || index >= count())
        return;
    if (PeekPlate* old = plate(m_current))
        old->setCurrent(false);
    m_current = index;
    m_plates[size_t(index)]->setCurrent(true);
}

void PeekPlateGrid::setOpened(int index)
{
    if (PeekPlate* old = plate(m_opened))
        old->setOpened(false);
    m_opened = index;
    if (PeekPlate* now = plate(index))
        now->setOpened(true);
}

int PeekPlateGrid::columnsFor(int width) const
{
    switch (m_flow) {
    case Flow::Column: return 1;
    case Flow::Row: return std::max(1, count() + (m_more ? 1 : 0));
    case Flow::Wrap: break;
    }
    return std::max(1, (width - 2 * kMargin + kSpacing) / (PeekPlate::kWidth + kSpacing));
}

int PeekPlateGrid::columns() const
{
    return columnsFor(width());
}

int PeekPlateGrid::expansionTop(int index) const
{
    const int cols = columns();
    const int plateHeight = m_plates.empty() ? 0 : m_plates.front()->height();
    return kMargin + (index / cols + 1) * (plateHeight + kSpacing);
}

// Places the plates (and the panel) for `width` when `place`; returns the height.
int PeekPlateGrid::layoutHeight(int width, bool place)
{
    const int cols = columnsFor(width);
    const int plateWidth = PeekPlate::kWidth;
    const int plateHeight = m_size == PeekPlate::Size::Small ? PeekPlate::kSmallHeight : PeekPlate::kHeight;
    const int all = count() + (m_more ? 1 : 0);
    const int expansionRow = m_expansion ? m_expansionIndex / cols : -1;
    // A panel opening grows through its maximum height.
    const int panelHeight = m_expansion ? std::min(m_expansion->maximumHeight(),
                                              std::max({m_expansion->heightForWidth(width - 2 * kMargin),
                                                  m_expansion->sizeHint().height(), m_expansion->minimumHeight()}))
                                        : 0;
    int y = kMargin;
    for (int row = 0; row * cols < all; ++row) {
        for (int col = 0; col < cols && row * cols + col < all; ++col) {
            const int index = row * cols + col;
            PeekPlate* p = index < count() ? m_plates[size_t(index)] : m_more;
            if (place)
                p->move(kMargin + col * (plateWidth + kSpacing), y);
        }
        y += plateHeight + kSpacing;
        if (row == expansionRow) {
            if (place)
                m_expansion->setGeometry(kMargin, y, std::max(0, width - 2 * kMargin), panelHeight);
            y += panelHeight + kSpacing;
        }
    }
    return y - kSpacing + kMargin;
}

void PeekPlateGrid::setExpansion(int index, QWidget* panel)
{
    if (m_expansion && m_expansion != panel)
        m_expansion->deleteLater();
    m_expansion = panel;
    m_expansionIndex = panel ? index : -1;
    if (panel) {
        panel->setParent(this);
        panel->show();
    }
    layoutHeight(width(), true);
    updateGeometry();
}

int PeekPlateGrid::heightForWidth(int width) const
{
    return const_cast<PeekPlateGrid*>(this)->layoutHeight(width, false);
}

QSize PeekPlateGrid::sizeHint() const
{
    const int all = count() + (m_more ? 1 : 0);
    switch (m_flow) {
    case Flow::Column:
        return {PeekPlate::kWidth + 2 * kMargin, heightForWidth(PeekPlate::kWidth + 2 * kMargin)};
    case Flow::Row:
        return {2 * kMargin + all * (PeekPlate::kWidth + kSpacing) - kSpacing,
            heightForWidth(0)};
    case Flow::Wrap: break;
    }
    const int w = std::max(width(), 3 * (PeekPlate::kWidth + kSpacing) + 2 * kMargin);
    return {w, heightForWidth(w)};
}

QSize PeekPlateGrid::minimumSizeHint() const
{
    if (m_flow == Flow::Wrap)
        return {PeekPlate::kWidth + 2 * kMargin, 0};
    return sizeHint();
}

void PeekPlateGrid::resizeEvent(QResizeEvent*)
{
    layoutHeight(width(), true);
}

bool PeekPlateGrid::event(QEvent* event)
{
    // A nested panel grew or shrank: make room for it, and tell whoever holds this grid.
    if (event->type() == QEvent::LayoutRequest && m_expansion) {
        layoutHeight(width(), true);
        updateGeometry();
    }
    return QWidget::event(event);
}
