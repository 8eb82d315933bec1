// Columns Drill: each level is a column of plates; opening a folder slides its column
// in at the right of the one it came from.

#include "views/peek/peek_style_view.h"

#include <QScrollArea>
#include <QScrollBar>

namespace {

class PeekColumnsDrill final : public PeekStyleView {
public:
    explicit PeekColumnsDrill(PeekSetup setup)
        : PeekStyleView(std::move(setup))
    {
        m_columns = fillStrip(QBoxLayout::LeftToRight, &m_area);
    }

protected:
    void showLevel(int index) override
    {
        QScrollArea* column = scrollArea(Qt::Vertical);
        column->setWidget(makeGrid(index, PeekPlateGrid::Flow::Column, PeekPlate::Size::Normal, nullptr));
        const int width = PeekPlate::kWidth + 2 * PeekPlateGrid::kMargin + column->verticalScrollBar()->sizeHint().width();
        column->setFixedWidth(width);
        column->setMinimumWidth(0); // free to grow in from nothing
        m_columns->insertWidget(m_columns->count() - 1, column);
        m_shown.push_back(column);
        growIn(column, Qt::Horizontal, width, duration(260));
        keepInView(m_area, column);
    }

    void dropLevels(int from) override { dropTail(m_shown, from); }

private:
    QScrollArea* m_area = nullptr;
    QBoxLayout* m_columns;
    std::vector<QWidget*> m_shown;
};

} // namespace

PEEK_STYLE("columns-drill", PeekColumnsDrill)
