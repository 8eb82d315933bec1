// Rows Drill: Columns Drill turned sideways. Each level is a shelf, one scrolling row of
// plates; opening a folder adds its shelf below.

#include "views/peek/peek_style_view.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>

namespace {

class PeekRowsDrill final : public PeekStyleView {
public:
    explicit PeekRowsDrill(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_shelves = fillStrip(QBoxLayout::TopToBottom, &m_area);
    }

protected:
    void showLevel(int index) override
    {
        auto* shelf = new QWidget;
        auto* box = new QVBoxLayout(shelf);
        box->setContentsMargins(0, 4, 0, 0);
        box->setSpacing(0);
        auto* title = new QLabel(level(index).title);
        title->setContentsMargins(PeekPlateGrid::kMargin, 0, 0, 0);
        box->addWidget(title);
        PeekPlateGrid* plates = makeGrid(index, PeekPlateGrid::Flow::Row, PeekPlate::Size::Normal, nullptr);
        QScrollArea* row = scrollArea(Qt::Horizontal, plates);
        row->setFixedHeight(plates->sizeHint().height() + row->horizontalScrollBar()->sizeHint().height());
        box->addWidget(row);
        m_shelves->insertWidget(m_shelves->count() - 1, shelf);
        m_rows.push_back(shelf);
        growIn(shelf, Qt::Vertical, shelf->sizeHint().height(), duration(230));
        keepInView(m_area, shelf);
    }

    void dropLevels(int from) override
    {
        dropTail(m_rows, from);
        deleteGrids(from);
    }

private:
    QScrollArea* m_area = nullptr;
    QBoxLayout* m_shelves;
    std::vector<QWidget*> m_rows;
};

} // namespace

PEEK_STYLE("rows-drill", PeekRowsDrill)
