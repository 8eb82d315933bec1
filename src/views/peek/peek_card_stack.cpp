// Card Stack: each level is a card that slides up over the last; the cards behind peek
// out above it by their title strip, and a click on one goes back to it.

#include "views/peek/peek_style_view.h"

#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

class PeekCardStack final : public PeekStyleView {
public:
    static constexpr int kStrip = 30; // how much of a card behind shows

    explicit PeekCardStack(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
    }

protected:
    void showLevel(int index) override
    {
        QFrame* card = panel(this, index % 2 ? QPalette::AlternateBase : QPalette::Base);
        QLayout* box = card->layout();
        auto* strip = new QPushButton(level(index).title);
        strip->setFlat(true);
        strip->setFocusPolicy(Qt::NoFocus);
        strip->setFixedHeight(kStrip);
        strip->setStyleSheet(QStringLiteral("text-align: left; padding-left: 10px; font-weight: bold;"));
        connect(strip, &QPushButton::clicked, this, [this, index] { climbTo(index); });
        box->addWidget(strip);
        box->addWidget(scrollArea(Qt::Vertical,
            makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr)));
        m_cards.push_back(card);
        card->show();
        card->raise();
        const QRect target = place(index);
        if (index == 0) {
            card->setGeometry(target);
            return;
        }
        const QRect below = target.translated(0, height() - target.top());
        card->setGeometry(below);
        run(tween(card, "geometry", below, target, duration(280)));
    }

    void dropLevels(int from) override
    {
        dropTail(m_cards, from);
        deleteGrids(from);
    }

    void resizeEvent(QResizeEvent* event) override
    {
        PeekStyleView::resizeEvent(event);
        for (size_t i = 0; i < m_cards.size(); ++i)
            m_cards[i]->setGeometry(place(int(i)));
    }

private:
    // Each card starts one strip below the one behind it, a little narrower.
    QRect place(int index) const
    {
        const int inset = std::min(index, 6) * 4;
        return QRect(inset, index * kStrip, std::max(0, width() - 2 * inset), std::max(0, height() - index * kStrip));
    }

    std::vector<QFrame*> m_cards;
};

} // namespace

PEEK_STYLE("card-stack", PeekCardStack)
