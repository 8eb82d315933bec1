// The icon view draws its items itself, so it tells assistive technology about them
// itself: the view is a list, each item a list item with its name, its selected and
// focused state, and press and focus actions. The interface factory is installed when
// the library loads; items are addressed by their place in the view's flat order, so a
// rebuild (announced by the view) needs nothing from here.

#include "views/icon_card_view.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <map>

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
class IconItemAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    IconItemAccessible(IconCardView* view, size_t flat)
        : m_view(view)
        , m_flat(flat)
    {
    }

    bool isValid() const override { return m_view && m_flat < totalItems(*m_view); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(m_view.data()); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

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
        if (!isValid())
            return {};
        const QRect local = m_view->itemRect(spotOfFlat(*m_view, m_flat));
        return QRect(m_view->viewport()->mapToGlobal(local.topLeft()), local.size());
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
    QPointer<IconCardView> m_view;
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
        auto it = m_items.find(size_t(index));
        if (it == m_items.end()) {
            auto* item = new IconItemAccessible(view(), size_t(index));
            it = m_items.emplace(size_t(index), QAccessible::registerAccessibleInterface(item)).first;
        }
        return QAccessible::accessibleInterface(it->second);
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
    void clear()
    {
        for (const auto& [flat, id] : m_items)
            QAccessible::deleteAccessibleInterface(id);
        m_items.clear();
    }

private:
    mutable std::map<size_t, QAccessible::Id> m_items;
};

QAccessibleInterface* factory(const QString& className, QObject* object)
{
    if (className == QLatin1String("IconCardView") && object && object->isWidgetType())
        return new IconViewAccessible(static_cast<IconCardView*>(object));
    return nullptr;
}

} // namespace

// The factory joins when the library loads, before any view asks for an interface.
const bool kFactoryInstalled = [] {
    QAccessible::installFactory(factory);
    return true;
}();
