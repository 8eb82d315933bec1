// Conveyor: two panes on a belt, the folder on the left and the contents of its pick on
// the right. Going deeper adds a pane and slides the belt one pane to the left.

#include "views/peek/peek_style_view.h"

#include <QLabel>
#include <QResizeEvent>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

class PeekConveyor final : public PeekStyleView {
public:
    explicit PeekConveyor(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_belt = new QWidget(this);
    }

protected:
    void showLevel(int index) override
    {
        QFrame* pane = panel(m_belt, QPalette::Base);
        QLayout* box = pane->layout();
        auto* title = new QLabel(level(index).title);
        title->setAlignment(Qt::AlignCenter);
        QFont bold = title->font();
        bold.setBold(true);
        title->setFont(bold);
        box->addWidget(title);
        box->addWidget(scrollArea(Qt::Vertical,
            makeGrid(index, PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal, nullptr)));
        m_panes.push_back(pane);
        placePanes();
        pane->show();
        slide();
    }

    void dropLevels(int from) override
    {
        dropTail(m_panes, from);
        deleteGrids(from);
        placePanes();
        slide();
    }

    void resizeEvent(QResizeEvent* event) override
    {
        PeekStyleView::resizeEvent(event);
        placePanes();
        m_belt->move(beltX(), 0);
    }

private:
    int paneWidth() const { return std::max(1, width() / 2); }
    // The last two panes are in view.
    int beltX() const { return -std::max(0, int(m_panes.size()) - 2) * paneWidth(); }

    void placePanes()
    {
        for (size_t i = 0; i < m_panes.size(); ++i)
            m_panes[i]->setGeometry(int(i) * paneWidth(), 0, paneWidth(), height());
        m_belt->resize(std::max<int>(2, int(m_panes.size())) * paneWidth(), height());
    }

    void slide()
    {
        const QPoint to(beltX(), 0);
        if (m_belt->pos() != to)
            run(tween(m_belt, "pos", m_belt->pos(), to, duration(300), QEasingCurve::InOutCubic));
    }

    QWidget* m_belt;
    std::vector<QFrame*> m_panes;
};

} // namespace

PEEK_STYLE("conveyor", PeekConveyor)
