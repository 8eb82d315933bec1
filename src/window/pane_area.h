#pragma once
// The tree of splitters whose leaves are pane views: splitting next to a pane, taking a
// pane out, swapping two panes, placing one beside another, and equal sizes.
// Axis::SideBySide is a horizontal QSplitter (children left to right); Axis::Stacked a
// vertical one (top to bottom).

#include "window/drop_zone.h"

#include <QList>
#include <QWidget>

class PaneView;
class QSplitter;

enum class Axis { SideBySide, Stacked };

class PaneArea : public QWidget {
    Q_OBJECT
public:
    explicit PaneArea(QWidget* parent = nullptr);

    // The pane views in tree order (left to right, top to bottom).
    QList<PaneView*> paneViews() const;
    // The pane view under a point of this widget, or none.
    PaneView* paneAt(QPoint point) const;
    // The rectangle of a pane view in this widget's coordinates.
    QRect rectOf(const PaneView* view) const;

    // The first pane of an empty area.
    void setFirst(PaneView* view);
    // Puts `added` right after `existing` along `axis`: into the existing pane's splitter
    // when it runs that way, else into a new splitter that takes the existing pane's place.
    // Returns the splitter that received it (equalised).
    QSplitter* insertAfter(PaneView* existing, PaneView* added, Axis axis);
    // Takes a pane view out of the tree (not deleted); a splitter left with one child
    // gives its place to that child.
    void detach(PaneView* view);
    // Swaps the places of two pane views.
    void swap(PaneView* a, PaneView* b);
    // Moves `source` to the side `zone` of `target` (an edge zone).
    void placeBeside(PaneView* source, PaneView* target, DropZone zone);

    // Puts `replacement` where `old` is (old is taken out, not deleted).
    void paneReplace(QWidget* old, QWidget* replacement);

private:
    QSplitter* newSplitter(Axis axis) const;
    QWidget* root() const;

    class QVBoxLayout* m_layout;
};

// Places the dividers so that every child of the splitter gets the same length.
void paneEqualize(QSplitter* splitter);

// The axis a splitter runs along.
Axis splitterAxis(const QSplitter* splitter);
