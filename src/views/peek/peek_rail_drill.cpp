// Rail Drill: the folders opened stack up on a rail at the left as small plates, and
// the deepest one's contents pour out to the right. A plate on the rail goes back to
// its folder.

#include "views/peek/peek_style_view.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

class PeekRailDrill final : public PeekStyleView {
public:
    explicit PeekRailDrill(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        auto* rail = new QWidget;
        m_rail = new QVBoxLayout(rail);
        m_rail->setContentsMargins(PeekPlateGrid::kMargin, PeekPlateGrid::kMargin, PeekPlateGrid::kMargin, 0);
        m_rail->setSpacing(4);
        m_rail->addStretch(1);
        QScrollArea* railArea = scrollArea(Qt::Vertical, rail);
        railArea->setFixedWidth(PeekPlate::kWidth + 2 * PeekPlateGrid::kMargin + 12);
        railArea->setBackgroundRole(QPalette::AlternateBase);
        m_area = scrollArea(Qt::Vertical);
        auto* box = new QHBoxLayout(this);
        box->setContentsMargins(0, 0, 0, 0);
        box->setSpacing(0);
        box->addWidget(railArea);
        box->addWidget(m_area, 1);
    }

protected:
    void showLevel(int index) override
    {
        LabItem folder;
        folder.name = level(index).title.toStdString();
        folder.path = level(index).path;
        folder.isDir = true;
        folder.count = level(index).total;
        auto* stop = new PeekPlate(folder, PeekPlate::Size::Small);
        stop->setOpened(true);
        connect(stop, &QAbstractButton::clicked, this, [this, index] { climbTo(index); });
        m_rail->insertWidget(m_rail->count() - 1, stop);
        m_stops.push_back(stop);
        growIn(stop, Qt::Vertical, PeekPlate::kSmallHeight, duration(200));
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr);
        swapInto(m_area, plates);
        fadeIn(plates, duration(240));
    }

    void dropLevels(int from) override
    {
        dropTail(m_stops, from);
        deleteGrids(from);
        if (PeekPlateGrid* back = grid(from - 1))
            swapInto(m_area, back);
    }

private:
    QVBoxLayout* m_rail;
    QScrollArea* m_area;
    std::vector<PeekPlate*> m_stops;
};

} // namespace

PEEK_STYLE("rail-drill", PeekRailDrill)
