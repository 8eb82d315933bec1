#pragma once
// What the views that draw their own items share in telling assistive technology about
// them: the items' interfaces, made only when a client asks for one and kept by key
// until the view's interface forgets them, and the factory that makes a view's
// interface, installed when the library loads.

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAbstractScrollArea>
#include <QPointer>
#include <QWidget>

#include <map>

// An item of `View` (a scroll area): it has no children and no object of its own, and
// its parent is the view's interface. `viewRect` turns a rectangle of the view's
// viewport into the screen's.
template <typename View>
class AccessibleViewItem : public QAccessibleInterface {
public:
    explicit AccessibleViewItem(View* view)
        : m_view(view)
    {
    }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(m_view.data()); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    void setText(QAccessible::Text, const QString&) override {}

protected:
    QRect viewRect(const QRect& local) const
    {
        return QRect(m_view->viewport()->mapToGlobal(local.topLeft()), local.size());
    }

    QPointer<View> m_view;
};

template <typename Key>
class AccessibleItems {
public:
    AccessibleItems() = default;
    AccessibleItems(const AccessibleItems&) = delete;
    AccessibleItems& operator=(const AccessibleItems&) = delete;
    ~AccessibleItems() { clear(); }

    // The item's interface, made by `make()` (a new interface) the first time.
    template <typename Make>
    QAccessibleInterface* get(const Key& key, const Make& make)
    {
        auto it = m_ids.find(key);
        if (it == m_ids.end())
            it = m_ids.emplace(key, QAccessible::registerAccessibleInterface(make())).first;
        return QAccessible::accessibleInterface(it->second);
    }

    void clear()
    {
        for (const auto& [key, id] : m_ids)
            QAccessible::deleteAccessibleInterface(id);
        m_ids.clear();
    }

private:
    std::map<Key, QAccessible::Id> m_ids;
};

template <typename View, typename Interface>
QAccessibleInterface* accessibleMake(const QString& className, QObject* object)
{
    if (object && object->isWidgetType() && className == QLatin1String(View::staticMetaObject.className()))
        return new Interface(static_cast<View*>(object));
    return nullptr;
}

// Installs the factory of `View`'s interface; meant for a namespace-scope constant, so
// that it runs when the library loads, before any view asks for an interface.
template <typename View, typename Interface>
bool accessibleFactoryInstall()
{
    QAccessible::installFactory(&accessibleMake<View, Interface>);
    return true;
}
