// Zoom Open: a plate springs open into a panel over the view; plates in the panel open
// further panels, and the panel's Back button climbs.

#include "views/peek/peek_floating_style.h"

#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace {

class PeekZoomOpen final : public PeekFloatingStyle {
public:
    using PeekFloatingStyle::PeekFloatingStyle;

protected:
    QFrame* showFloating(int index) override
    {
        QFrame* opened = panel(this, QPalette::Base, 6);
        auto* box = static_cast<QVBoxLayout*>(opened->layout());
        auto* head = new QHBoxLayout;
        auto* back = new QPushButton(tr("‹ Back"));
        back->setFocusPolicy(Qt::NoFocus);
        connect(back, &QPushButton::clicked, this, [this] { climb(); });
        head->addWidget(back);
        auto* title = new QLabel(level(index).title);
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        head->addWidget(title, 1);
        box->addLayout(head);
        box->addWidget(scrollArea(Qt::Vertical,
            makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr)), 1);
        opened->show();
        opened->raise();
        // Springs out of the plate that opened it.
        const QRect seed = openerRect(index);
        opened->setGeometry(seed);
        run(tween(opened, "geometry", seed, rect(), duration(320), QEasingCurve::OutBack));
        return opened;
    }

    void resizeEvent(QResizeEvent* event) override
    {
        PeekFloatingStyle::resizeEvent(event);
        for (QFrame* opened : floating())
            opened->setGeometry(rect());
    }
};

} // namespace

PEEK_STYLE("zoom-open", PeekZoomOpen)
