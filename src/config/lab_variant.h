#pragma once
// Peek styles: the interchangeable ways Peek mode drills into folders. The core knows
// each style as a descriptor (key, title, blurb, order); how a style draws and
// navigates belongs to Peek mode in the GUI, which looks a style up by its key.
// A style joins by being defined: a subclass passes its descriptor to the constructor
// and its .cpp says BRONDEL_REGISTER(LabVariant, ThatStyle).

#include "fs/registry.h"

#include <cstdint>
#include <string>
#include <vector>

class LabVariant {
public:
    virtual ~LabVariant() = default;

    const std::string& key() const { return m_key; }     // stable identifier, e.g. "zoom-fill"
    const std::string& title() const { return m_title; } // shown, saved in the order file and the user default
    const std::string& blurb() const { return m_blurb; } // one-line description
    int64_t order() const { return m_order; }            // rank in the default order, lowest first

protected:
    LabVariant(std::string key, std::string title, std::string blurb, int64_t order)
        : m_key(std::move(key)), m_title(std::move(title)), m_blurb(std::move(blurb)), m_order(order)
    {
    }

private:
    std::string m_key;
    std::string m_title;
    std::string m_blurb;
    int64_t m_order;
};

// Every registered style in default order (by order, then key).
std::vector<const LabVariant*> labVariantTypes();
