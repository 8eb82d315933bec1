#include "window/pane_area.h"

#include "window/pane_view.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace {

Qt::Orientation orientationOf(Axis axis)
{
    return axis == Axis::SideBySide ? Qt::Horizontal : Qt::Vertical;
}

void collectViews(QWidget* widget, QList<PaneView*>& out)
{
    if (auto* view = qobject_cast<PaneView*>(widget)) {
        out << view;
        return;
    }
    if (auto* splitter = qobject_cast<QSplitter*>(widget))
        for (int i = 0; i < splitter->count(); ++i)
            collectViews(splitter->widget(i), out);
}

} // namespace

Axis splitterAxis(const QSplitter* splitter)
{
    return splitter->orientation() == Qt::Horizontal ? Axis::SideBySide : Axis::Stacked;
}

void paneEqualize(QSplitter* splitter)
{
    const int n = splitter->count();
    if (n == 0)
        return;
    int length = splitter->orientation() == Qt::Horizontal ? splitter->width() : splitter->height();
    length -= splitter->handleWidth() * (n - 1);
    if (length < n)
        length = n * 100; // not laid out yet: equal weights keep the proportion
    QList<int> sizes;
    for (int i = 0; i < n; ++i) {
        sizes << length * (i + 1) / n - length * i / n;
        splitter->setStretchFactor(i, 1);
    }
    splitter->setSizes(sizes);
}

PaneArea::PaneArea(QWidget* parent)
    : QWidget(parent)
    , m_layout(new QVBoxLayout(this))
{
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
}

QWidget* PaneArea::root() const
{
    return m_layout->count() ? m_layout->itemAt(0)->widget() : nullptr;
}

QList<PaneView*> PaneArea::paneViews() const
{
    QList<PaneView*> views;
    if (QWidget* top = root())
        collectViews(top, views);
    return views;
}

QRect PaneArea::rectOf(const PaneView* view) const
{
    return QRect(view->mapTo(this, QPoint(0, 0)), view->size());
}

PaneView* PaneArea::paneAt(QPoint point) const
{
    for (PaneView* view : paneViews())
        if (rectOf(view).contains(point))
            return view;
    return nullptr;
}

void PaneArea::setFirst(PaneView* view)
{
    m_layout->addWidget(view);
}

QSplitter* PaneArea::newSplitter(Axis axis) const
{
    auto* splitter = new QSplitter(orientationOf(axis));
    splitter->setHandleWidth(1); // the thin divider
    splitter->setChildrenCollapsible(false);
    return splitter;
}

void PaneArea::paneReplace(QWidget* old, QWidget* replacement)
{
    if (auto* parent = qobject_cast<QSplitter*>(old->parentWidget())) {
        const QList<int> sizes = parent->sizes();
        parent->replaceWidget(parent->indexOf(old), replacement);
        parent->setSizes(sizes);
    } else if (old == root()) {
        delete m_layout->replaceWidget(old, replacement); // the old widget's layout item is ours to free
        replacement->setParent(this);
        replacement->show();
    }
    old->setParent(nullptr);
}

QSplitter* PaneArea::insertAfter(PaneView* existing, PaneView* added, Axis axis)
{
    auto* parent = qobject_cast<QSplitter*>(existing->parentWidget());
    if (parent && splitterAxis(parent) == axis) {
        int index = parent->indexOf(existing);
        parent->insertWidget(index < 0 ? 1 : index + 1, added);
        paneEqualize(parent);
        return parent;
    }
    QSplitter* splitter = newSplitter(axis);
    paneReplace(existing, splitter);
    splitter->addWidget(existing);
    splitter->addWidget(added);
    existing->show();
    paneEqualize(splitter);
    return splitter;
}

void PaneArea::detach(PaneView* view)
{
    auto* parent = qobject_cast<QSplitter*>(view->parentWidget());
    view->hide();
    view->setParent(nullptr);
    if (!parent || parent->count() != 1)
        return;
    // A splitter with a single child is no split: the child takes its place.
    QWidget* only = parent->widget(0);
    paneReplace(parent, only);
    only->show();
    parent->deleteLater();
}

void PaneArea::swap(PaneView* a, PaneView* b)
{
    QWidget placeholder;
    paneReplace(b, &placeholder);
    paneReplace(a, b);
    paneReplace(&placeholder, a);
    a->show();
    b->show();
}

void PaneArea::placeBeside(PaneView* source, PaneView* target, DropZone zone)
{
    detach(source);
    const Axis axis = zone == DropZone::Left || zone == DropZone::Right ? Axis::SideBySide : Axis::Stacked;
    const bool after = zone == DropZone::Right || zone == DropZone::Bottom;
    auto* parent = qobject_cast<QSplitter*>(target->parentWidget());
    if (parent && splitterAxis(parent) == axis) {
        int index = parent->indexOf(target);
        parent->insertWidget((index < 0 ? 0 : index) + (after ? 1 : 0), source);
        source->show();
        paneEqualize(parent);
        return;
    }
    QSplitter* splitter = newSplitter(axis);
    paneReplace(target, splitter);
    splitter->addWidget(after ? target : source);
    splitter->addWidget(after ? source : target);
    target->show();
    source->show();
    paneEqualize(splitter);
}
