#pragma once
// The cables between the panes of one window, as a plain graph: each pane has at most
// one FROM and any number of TO panes (in linking order); chains are allowed, cycles
// are not. Knows nothing of widgets: the window reacts to a new cable through the
// `linked` callback (the TO pane goes to the FROM pane's location) and redraws.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <vector>

template <typename Pane>
class CableGraph {
public:
    using Linked = std::function<void(Pane* from, Pane* to)>;

    void onLinked(Linked linked) { m_linked = std::move(linked); }

    Pane* from(const Pane* pane) const
    {
        auto it = m_nodes.find(pane);
        return it == m_nodes.end() ? nullptr : it->second.from;
    }
    const std::vector<Pane*>& to(const Pane* pane) const
    {
        static const std::vector<Pane*> none;
        auto it = m_nodes.find(pane);
        return it == m_nodes.end() ? none : it->second.to;
    }
    bool mirror(const Pane* pane) const
    {
        auto it = m_nodes.find(pane);
        return it != m_nodes.end() && it->second.mirror;
    }
    void setMirror(Pane* pane, bool on) { m_nodes[pane].mirror = on; }
    bool isTo(const Pane* from, const Pane* to) const
    {
        const auto& list = this->to(from);
        return std::find(list.begin(), list.end(), to) != list.end();
    }
    bool empty() const
    {
        return std::none_of(m_nodes.begin(), m_nodes.end(), [](const auto& n) { return n.second.from; });
    }

    // Makes a cable; false (and nothing changes) for a pane to itself, a cable that
    // exists, or one that would close a loop. A TO pane leaves its previous FROM.
    bool link(Pane* from, Pane* to)
    {
        if (from == to || isTo(from, to))
            return false;
        for (const Pane* up = from; up; up = this->from(up))
            if (up == to)
                return false;
        if (Pane* previous = this->from(to))
            erase(m_nodes[previous].to, to);
        m_nodes[from].to.push_back(to);
        m_nodes[to].from = from;
        m_nodes[to].mirror = false;
        if (m_linked)
            m_linked(from, to);
        return true;
    }

    // Removes every cable at the pane; mirroring goes off on it and its former TO panes.
    void unlinkAll(Pane* pane)
    {
        if (Pane* up = from(pane))
            erase(m_nodes[up].to, pane);
        Node& node = m_nodes[pane];
        node.from = nullptr;
        for (Pane* down : node.to) {
            m_nodes[down].from = nullptr;
            m_nodes[down].mirror = false;
        }
        node.to.clear();
        node.mirror = false;
    }

    // Forgets a pane that is going away.
    void remove(Pane* pane)
    {
        unlinkAll(pane);
        m_nodes.erase(pane);
    }

    // Reverses the single cable of a pane with exactly one TO pane: that one becomes
    // its FROM. False when the pane has no or several TO panes.
    bool swap(Pane* pane)
    {
        if (to(pane).size() != 1)
            return false;
        Pane* other = to(pane).front();
        unlinkAll(pane);
        unlinkAll(other);
        return link(other, pane);
    }

    enum class Toggle { Nothing, Linked, Unlinked };

    // The menu's cable toggle: the active pane and the next one in `panes` (wrapping).
    Toggle toggle(const std::vector<Pane*>& panes, Pane* active)
    {
        auto it = std::find(panes.begin(), panes.end(), active);
        if (panes.size() < 2 || it == panes.end())
            return Toggle::Nothing;
        Pane* partner = std::next(it) == panes.end() ? panes.front() : *std::next(it);
        if (isTo(active, partner)) {
            unlinkAll(active);
            return Toggle::Unlinked;
        }
        return link(active, partner) ? Toggle::Linked : Toggle::Nothing;
    }

    // Every cable as (FROM, TO), FROM panes in no particular order.
    std::vector<std::pair<Pane*, Pane*>> cables() const
    {
        std::vector<std::pair<Pane*, Pane*>> list;
        for (const auto& [pane, node] : m_nodes)
            for (Pane* down : node.to)
                list.emplace_back(const_cast<Pane*>(pane), down);
        return list;
    }

    // Index into the five cable colours: stable for a pair during the run.
    static size_t colorIndex(const Pane* from, const Pane* to)
    {
        size_t h = std::hash<const Pane*>()(from) ^ std::hash<const Pane*>()(to);
        return h % 5;
    }

private:
    struct Node {
        Pane* from = nullptr;
        std::vector<Pane*> to;
        bool mirror = false;
    };

    static void erase(std::vector<Pane*>& list, Pane* pane) { std::erase(list, pane); }

    std::map<const Pane*, Node> m_nodes;
    Linked m_linked;
};
