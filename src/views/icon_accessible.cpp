// The icon view draws its items itself, so it tells assistive technology about them
// itself: the view is a list, each item a list item with its name, its selected and
// focused state, and press and focus actions. The interface factory is installed when
// the library loads; items are addressed by their place in the view's flat order, so a
// rebuild (announced by the view) needs nothing from here.

#include "views/accessible_items.h"
#include "views/icon_card_view.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <algorithm>

namespace {

size_t totalItems(const IconCardView& view)
{
    size_t total = 0;
    if (const IconCardData* data = view.data())
        for (const IconCardSection& s : data->sections)
            total += s.count();
    return total;
}

IconSpot spotOfFlat(const IconCardView& view, size_t flat)
{
    if (const IconCardData* data = view.data())
        for (size_t s = 0; s < data->sections.size(); ++s) {
            const size_t count = data->sections[s].count();
            if (flat < count)
                return {int(s), flat};
            flat -= count;
        }
    return {};
}

size_t flatOfSpot(const IconCardView& view, const IconSpot& spot)
{
    size_t flat = 0;
    for (int s = 0; s < spot.section; ++s)
        flat += view.data()->sections[size_t(s)].count();
    return flat + spot.index;
}

class IconViewAccessible;

// One item, by its place in the flat order of all sections' items.
class IconItemAccessible : public AccessibleViewItem<IconCardView>, public QAccessibleActionInterface {
public:
    IconItemAccessible(IconCardView* view, size_t flat)
        : AccessibleViewItem(view)
        , m_flat(flat)
    {
    }

    bool isValid() const override { return m_view && m_flat < totalItems(*m_view); }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text t) const override
    {
        if (!isValid() || (t != QAccessible::Name && t != QAccessible::Description))
            return {};
        const IconSpot spot = spotOfFlat(*m_view, m_flat);
        if (t == QAccessible::Name)
            return m_view->data()->name(spot.section, spot.index);
        return QString::fromStdString(m_view->data()->sections[size_t(spot.section)].sec.group);
    }

    QAccessible::State state() const override
    {
        QAccessible::State s;
        s.selectable = true;
        s.focusable = true;
        if (!isValid())
            return s;
        const IconSpot spot = spotOfFlat(*m_view, m_flat);
        s.selected = m_view->isSelected(spot);
        s.focused = m_view->hasFocus() && m_view->current() == spot;
        s.invisible = !m_view->viewport()->rect().intersects(m_view->itemRect(spot));
        return s;
    }

    QRect rect() const override
    {
        return isValid() ? viewRect(m_view->itemRect(spotOfFlat(*m_view, m_flat))) : QRect();
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override
    {
        if (!isValid())
            return;
        const IconSpot spot = spotOfFlat(*m_view, m_flat);
        if (name == pressAction())
            m_view->activate(spot);
        else if (name == setFocusAction())
            m_view->setCurrent(spot);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    size_t flat() const { return m_flat; }

private:
    size_t m_flat;
};

// The view: a list whose children are its items, made when asked and kept by id.
class IconViewAccessible : public QAccessibleWidget {
public:
    explicit IconViewAccessible(IconCardView* view)
        : QAccessibleWidget(view, QAccessible::List)
    {
    }
    ~IconViewAccessible() override { clear(); }

    IconCardView* view() const { return static_cast<IconCardView*>(widget()); }

    int childCount() const override { return int(std::min<size_t>(totalItems(*view()), INT32_MAX)); }

    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        return m_items.get(size_t(index), [&] { return new IconItemAccessible(view(), size_t(index)); });
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (!child || child->role() != QAccessible::ListItem)
            return -1;
        const auto* item = static_cast<const IconItemAccessible*>(child);
        return item->isValid() ? int(item->flat()) : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QPoint local = view()->viewport()->mapFromGlobal(QPoint(x, y));
        const IconSpot spot = view()->itemAt(local);
        return spot.valid() ? child(int(flatOfSpot(*view(), spot))) : nullptr;
    }

    // Forgets the items' interfaces.
    void clear() { m_items.clear(); }

private:
    mutable AccessibleItems<size_t> m_items;
};

const bool kFactoryInstalled = accessibleFactoryInstall<IconCardView, IconViewAccessible>();

} // namespace
