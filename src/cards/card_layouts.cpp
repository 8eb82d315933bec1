// The five layouts and the common part of making sections.

#include "cards/card_layout.h"
#include "cards/card_show_all.h"

std::vector<IconSec> CardLayout::sections(const CardCtx& ctx, const CardConfig& config,
                                          const std::vector<CardGroup>& groups) const
{
    std::vector<IconSec> out;
    out.reserve(groups.size());
    for (const CardGroup& group : groups) {
        IconSec sec;
        sec.card = ctx.card;
        sec.hue = group.hue;
        sec.nodes = group.nodes;
        sec.cardKey = ctx.key;
        if (!group.title.empty())
            sec.title = group.title + " \u00b7 " + std::to_string(group.nodes.size());
        dress(sec, group, ctx, config);
        out.push_back(std::move(sec));
    }
    return out;
}

namespace {

class LayoutRows : public CardLayout {
public:
    std::string key() const override { return "rows"; }
    std::string title() const override { return "Rows"; }
    int64_t order() const override { return 10; }

protected:
    void dress(IconSec& sec, const CardGroup& group, const CardCtx& ctx, const CardConfig& config) const override
    {
        sec.thumbs = config.thumbs;
        sec.iconSize = config.iconSize;
        // An ungrouped Rows card wraps all its icons, with no "Show all" control.
        if (group.title.empty())
            return;
        sec.showAll = ctx.key + "/" + group.title;
        sec.strip = !cardShowAllHas(*sec.showAll);
    }
};

class LayoutGrid : public CardLayout {
public:
    std::string key() const override { return "grid"; }
    std::string title() const override { return "Grid"; }
    int64_t order() const override { return 20; }

protected:
    void dress(IconSec& sec, const CardGroup&, const CardCtx&, const CardConfig& config) const override
    {
        sec.thumbs = config.thumbs;
        sec.iconSize = config.iconSize;
    }
};

class LayoutList : public CardLayout {
public:
    std::string key() const override { return "list"; }
    std::string title() const override { return "List"; }
    int64_t order() const override { return 30; }

protected:
    void dress(IconSec& sec, const CardGroup&, const CardCtx&, const CardConfig& config) const override
    {
        sec.list = true;
        sec.thumbs = config.thumbs;
        sec.iconSize = 48; // list rows have a fixed icon, whatever the card's size
    }
};

class LayoutIcons : public CardLayout {
public:
    std::string key() const override { return "icons"; }
    std::string title() const override { return "Icons"; }
    int64_t order() const override { return 10; }
    std::string family() const override { return "drives"; }

protected:
    void dress(IconSec& sec, const CardGroup&, const CardCtx&, const CardConfig& config) const override
    {
        sec.iconSize = config.iconSize; // drives never show previews
    }
};

class LayoutBreakdown : public CardLayout {
public:
    std::string key() const override { return "breakdown"; }
    std::string title() const override { return "Breakdown"; }
    int64_t order() const override { return 20; }
    std::string family() const override { return "drives"; }

protected:
    void dress(IconSec& sec, const CardGroup&, const CardCtx&, const CardConfig& config) const override
    {
        sec.breakdown = true;
        sec.iconSize = 48;
        sec.legendRows = config.legendRows;
        sec.tileWidth = config.tileWidth;
    }
};

} // namespace

BRONDEL_REGISTER(CardLayout, LayoutRows)
BRONDEL_REGISTER(CardLayout, LayoutGrid)
BRONDEL_REGISTER(CardLayout, LayoutList)
BRONDEL_REGISTER(CardLayout, LayoutIcons)
BRONDEL_REGISTER(CardLayout, LayoutBreakdown)

const std::vector<std::unique_ptr<CardLayout>>& cardLayouts()
{
    return Registry<CardLayout>::all();
}

std::vector<const CardLayout*> cardLayoutsOf(const std::string& family)
{
    std::vector<const CardLayout*> out;
    for (const auto& layout : cardLayouts())
        if (layout->family() == family)
            out.push_back(layout.get());
    return out;
}

const CardLayout& cardLayout(const std::string& key, const std::string& family)
{
    const auto ofFamily = cardLayoutsOf(family);
    for (const CardLayout* layout : ofFamily)
        if (layout->key() == key)
            return *layout;
    if (!ofFamily.empty())
        return *ofFamily.front();
    static const CardLayout base;
    return base;
}
