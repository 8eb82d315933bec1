// Row Expand: opening a plate opens its folder right below the plate's row, as a panel
// whose pointer marks the plate; the rows after it move down. Panels nest.

#include "views/peek/peek_style_view.h"

#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

// A nested level under a row, with a pointer up to the plate it belongs to.
class PointerPanel final : public QWidget {
public:
    static constexpr int kPointer = 9;

    explicit PointerPanel(int pointerX)
        : m_pointerX(pointerX)
    {
        auto* box = new QVBoxLayout(this);
        box->setContentsMargins(2, kPointer + 2, 2, 2);
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        const QRectF body = QRectF(rect()).adjusted(0.5, kPointer + 0.5, -0.5, -0.5);
        QPainterPath path;
        path.addRoundedRect(body, 8, 8);
        QPainterPath pointer;
        pointer.moveTo(m_pointerX - kPointer, kPointer + 1);
        pointer.lineTo(m_pointerX, 0.5);
        pointer.lineTo(m_pointerX + kPointer, kPointer + 1);
        pointer.closeSubpath();
        path = path.united(pointer);
        p.setPen(palette().color(QPalette::Mid));
        p.setBrush(palette().color(QPalette::AlternateBase));
        p.drawPath(path);
    }

private:
    int m_pointerX;
};

class PeekRowExpand final : public PeekStyleView {
public:
    explicit PeekRowExpand(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_area = fillArea();
    }

protected:
    void showLevel(int index) override
    {
        PeekPlateGrid* above = grid(index - 1);
        if (!above) {
            m_area->setWidget(makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr));
            return;
        }
        const int opened = above->current();
        PeekPlate* plate = above->plate(opened);
        const int pointerX = plate ? plate->x() + plate->width() / 2 - PeekPlateGrid::kMargin : 40;
        auto* panel = new PointerPanel(pointerX);
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, panel);
        panel->layout()->addWidget(plates);
        panel->setMaximumHeight(0);
        above->setExpansion(opened, panel);
        const int full = panel->heightForWidth(above->width() - 2 * PeekPlateGrid::kMargin);
        growIn(panel, Qt::Vertical, std::max(full, panel->sizeHint().height()), duration(240));
        if (plate)
            m_area->ensureWidgetVisible(plate, 0, 0);
    }

    void dropLevels(int from) override
    {
        deleteGrids(from); // the deeper levels live in the panel that goes with them
        if (PeekPlateGrid* above = grid(from - 1))
            above->setExpansion(-1, nullptr);
    }

private:
    QScrollArea* m_area;
};

} // namespace

PEEK_STYLE("row-expand", PeekRowExpand)
