#pragma once
// The plates of one folder level, laid out as a wrapping grid, a single column or a
// single row. It keeps which plate is current (the keys move it), says when a plate is
// pressed, and can open a panel under the row of one plate, pushing the rows after it
// down (the row-expanding style nests these).

#include "cards/lab_item.h"
#include "views/peek/peek_plate.h"

#include <QPointer>
#include <QWidget>

#include <vector>

class PeekPlateGrid : public QWidget {
    Q_OBJECT
public:
    enum class Flow { Wrap, Column, Row };
    static constexpr int kSpacing = 6;
    static constexpr int kMargin = 8;

    // `total` above items.size(): the folder was cut, and a "+ N more" plate ends it.
    PeekPlateGrid(const std::vector<LabItem>& items, int64_t total, const std::string& folder, Flow flow,
        PeekPlate::Size size, QWidget* parent = nullptr);

    int count() const { return int(m_plates.size()); } // item plates, the "more" plate not counted
    PeekPlate* plate(int index) const;
    PeekPlate* morePlate() const { return m_more; }
    int current() const { return m_current; }
    void setCurrent(int index);
    // Marks the plate of `index` as the open one (none: -1).
    void setOpened(int index);
    // Plates per row as laid out now (1 for a column).
    int columns() const;
    // A panel under the row of `index` (null: none). The grid owns it from now on.
    void setExpansion(int index, QWidget* panel);
    QWidget* expansion() const { return m_expansion; }
    // Where the panel of `index` would start (its top, in grid coordinates).
    int expansionTop(int index) const;

    // Puts every plate back in its place (after a style moved some away).
    void relayout() { layoutHeight(width(), true); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return m_flow == Flow::Wrap; }
    int heightForWidth(int width) const override;

signals:
    void pressed(int index);
    void moreRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    int columnsFor(int width) const;
    int layoutHeight(int width, bool place);

    Flow m_flow;
    PeekPlate::Size m_size;
    std::vector<PeekPlate*> m_plates;
    PeekPlate* m_more = nullptr;
    int m_current = -1;
    int m_opened = -1;
    QPointer<QWidget> m_expansion;
    int m_expansionIndex = -1;
};
