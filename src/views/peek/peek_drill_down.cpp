// Drill Down: every level stays on screen, one under the other; opening a plate slides
// its folder's contents open below the level it is in.

#include "views/peek/peek_style_view.h"

#include <QLabel>
#include <QScrollArea>

namespace {

class PeekDrillDown final : public PeekStyleView {
public:
    explicit PeekDrillDown(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_levels = fillStrip(QBoxLayout::TopToBottom, &m_area);
    }

protected:
    void showLevel(int index) override
    {
        auto* section = new QWidget;
        auto* box = new QVBoxLayout(section);
        box->setContentsMargins(12 * index, 0, 0, 0); // deeper levels step in
        box->setSpacing(0);
        if (index > 0) {
            auto* title = new QLabel(QStringLiteral("▾ ") + level(index).title);
            title->setContentsMargins(PeekPlateGrid::kMargin, 2, 0, 0);
            QFont bold = title->font();
            bold.setBold(true);
            title->setFont(bold);
            box->addWidget(title);
        }
        box->addWidget(makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr));
        m_levels->insertWidget(m_levels->count() - 1, section);
        m_sections.push_back(section);
        if (index > 0) {
            growIn(section, Qt::Vertical, section->heightForWidth(m_area->viewport()->width()), duration(250));
            keepInView(m_area, section);
        }
    }

    void dropLevels(int from) override
    {
        dropTail(m_sections, from);
        deleteGrids(from);
    }

private:
    QScrollArea* m_area = nullptr;
    QBoxLayout* m_levels;
    std::vector<QWidget*> m_sections;
};

} // namespace

PEEK_STYLE("drill-down", PeekDrillDown)
