// Popover Chain: opening a plate shows its folder in a popover beside it; opening a
// folder inside cascades the next popover to its right, like submenus. Escape closes
// the last popover.

#include "views/peek/peek_floating_style.h"

#include <QVBoxLayout>

namespace {

class PeekPopoverChain final : public PeekFloatingStyle {
public:
    using PeekFloatingStyle::PeekFloatingStyle;

protected:
    QFrame* showFloating(int index) override
    {
        QFrame* popover = panel(this, QPalette::Window);
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Column, PeekPlate::Size::Normal, nullptr);
        popover->layout()->addWidget(scrollArea(Qt::Vertical, plates));

        // Beside the plate that opened it: under a plate of the root, to the right of
        // one in a popover (to its left when there is no room).
        const QRect anchor = openerRect(index);
        const int width = PeekPlate::kWidth + 2 * PeekPlateGrid::kMargin + 16;
        const int height = std::min(plates->sizeHint().height() + 4, std::max(120, this->height() - 16));
        const int besideX = index >= 2 && int(floating().size()) >= index - 1 ? floating()[size_t(index - 2)]->geometry().right() + 4
                                                                                : anchor.right() + 6;
        QPoint at = index == 1 ? anchor.bottomLeft() + QPoint(0, 4) : QPoint(besideX, anchor.top() - PeekPlateGrid::kMargin);
        if (at.x() + width > this->width())
            at.setX(std::max(0, index == 1 ? this->width() - width : anchor.left() - width - 6));
        at.setY(std::clamp(at.y(), 0, std::max(0, this->height() - height)));
        const QRect target(at, QSize(width, height));
        popover->show();
        popover->raise();
        if (noPopoverAnimation() || duration() == 0) {
            popover->setGeometry(target);
            return popover;
        }
        const QRect seed(anchor.center(), QSize(1, 1));
        popover->setGeometry(seed);
        run(tween(popover, "geometry", seed, target, duration(200)));
        return popover;
    }

    void escape() override { climb(); }
};

} // namespace

PEEK_STYLE("popover-chain", PeekPopoverChain)
