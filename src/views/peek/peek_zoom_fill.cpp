// Zoom Fill: the open folder fills the view. Opening a plate sends its neighbours flying
// out of the view, then the folder's contents pour out of the plate to fill it; a
// breadcrumb above climbs back to any level.

#include "views/peek/peek_style_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QParallelAnimationGroup>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

class PeekZoomFill final : public PeekStyleView {
public:
    explicit PeekZoomFill(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        m_crumbs = new QHBoxLayout;
        m_crumbs->setContentsMargins(8, 4, 8, 4);
        m_crumbs->setSpacing(2);
        column->addLayout(m_crumbs);
        m_area = scrollArea(Qt::Vertical);
        column->addWidget(m_area, 1);
    }

protected:
    void showLevel(int index) override
    {
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr);
        rebuildCrumbs();
        PeekPlateGrid* from = grid(index - 1);
        PeekPlate* opened = from ? from->plate(from->current()) : nullptr;
        if (!from || !opened || duration() == 0) {
            swapInto(m_area, plates);
            return;
        }
        // The folder's contents pour out of the plate that opened it and fill the view,
        // while its neighbours, lifted above, fly out of the way.
        const QPoint origin = from->mapTo(this, QPoint(0, 0));
        const QRect seed = opened->geometry();
        swapInto(m_area, plates);
        from->setParent(this);
        from->move(origin);
        from->show();
        from->raise();
        from->setAutoFillBackground(false); // see-through: the new level shows beneath
        opened->hide(); // it has become the view
        auto* motion = new QParallelAnimationGroup;
        const QPoint centre = seed.center();
        for (int i = 0; i < from->count(); ++i) {
            PeekPlate* plate = from->plate(i);
            if (plate == opened)
                continue;
            const QPoint offset = plate->geometry().center() - centre;
            const QPoint far = plate->pos() + offset * 3 + QPoint(offset.x() >= 0 ? 400 : -400, 0);
            motion->addAnimation(tween(plate, "pos", plate->pos(), far, duration(200), QEasingCurve::InQuad));
        }
        const int width = m_area->viewport()->width();
        const QRect full(0, 0, width, std::max(plates->heightForWidth(width), m_area->viewport()->height()));
        plates->setGeometry(seed);
        motion->addAnimation(tween(plates, "geometry", seed, full, duration(260)));
        QPointer<PeekPlateGrid> lifted(from);
        run(motion, [this, lifted, opened] {
            if (!lifted)
                return;
            opened->show();
            if (lifted->parentWidget() == this)
                lifted->hide(); // kept for the climb back (unless the climb came first)
        });
    }

    void dropLevels(int from) override
    {
        deleteGrids(from);
        if (PeekPlateGrid* back = grid(from - 1)) {
            swapInto(m_area, back);
            back->relayout();
            if (PeekPlate* opened = back->plate(back->current()))
                opened->show();
        }
        m_crumbCount = from;
        rebuildCrumbs();
    }

private:
    void rebuildCrumbs()
    {
        while (QLayoutItem* item = m_crumbs->takeAt(0)) {
            if (item->widget()) {
                item->widget()->hide();
                item->widget()->deleteLater();
            }
            delete item;
        }
        const int levels = std::min(levelCount(), m_crumbCount < 0 ? levelCount() : m_crumbCount);
        m_crumbCount = -1;
        for (int i = 0; i < levels; ++i) {
            if (i > 0)
                m_crumbs->addWidget(new QLabel(QStringLiteral("›")));
            auto* crumb = new QToolButton;
            crumb->setAutoRaise(true);
            crumb->setFocusPolicy(Qt::NoFocus);
            crumb->setText(level(i).title);
            crumb->setEnabled(i + 1 < levels);
            connect(crumb, &QToolButton::clicked, this, [this, i] { climbTo(i); });
            m_crumbs->addWidget(crumb);
        }
        m_crumbs->addStretch(1);
    }

    QHBoxLayout* m_crumbs;
    QScrollArea* m_area;
    int m_crumbCount = -1; // while levels are being dropped: how many stay
};

} // namespace

PEEK_STYLE("zoom-fill", PeekZoomFill)
