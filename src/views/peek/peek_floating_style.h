#pragma once
// The styles whose root folder fills the view as a grid while every deeper level floats
// above it in a panel of its own (popovers, panels springing open): the root and the
// going of panels are handled here, a style only makes and places the panel of a level.

#include "views/peek/peek_style_view.h"

#include <QFrame>
#include <QScrollArea>

class PeekFloatingStyle : public PeekStyleView {
public:
    explicit PeekFloatingStyle(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_area = fillArea();
    }

protected:
    // The floating panel of level `index` (1 and deeper), to be shown and placed.
    virtual QFrame* showFloating(int index) = 0;
    const std::vector<QFrame*>& floating() const { return m_floating; }

    void showLevel(int index) override
    {
        if (index == 0)
            m_area->setWidget(makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr));
        else
            m_floating.push_back(showFloating(index));
    }

    void dropLevels(int from) override
    {
        dropTail(m_floating, from - 1); // panel i holds level i + 1
        deleteGrids(from);
    }

    // Where the plate that opened level `index` is, in this view's coordinates.
    QRect openerRect(int index) const
    {
        PeekPlateGrid* above = grid(index - 1);
        PeekPlate* plate = above ? above->plate(above->current()) : nullptr;
        return plate ? QRect(plate->mapTo(this, QPoint(0, 0)), plate->size()) : QRect(rect().center(), QSize(1, 1));
    }

private:
    QScrollArea* m_area;
    std::vector<QFrame*> m_floating;
};
