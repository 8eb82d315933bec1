#include "cards/card_menu.h"

#include "cards/card_grouper.h"
#include "cards/card_layout.h"
#include "fs/sys_calls.h"

#include <algorithm>

CardMenuItem cardMenuItem(std::string title, bool on, CardChange change)
{
    CardMenuItem item;
    item.title = std::move(title);
    item.on = on;
    item.change = std::move(change);
    return item;
}

CardMenuItem cardSubmenu(std::string title, std::vector<CardMenuItem> items)
{
    CardMenuItem item;
    item.title = std::move(title);
    item.submenu = std::move(items);
    return item;
}

CardMenuItem cardMenuSeparator()
{
    CardMenuItem item;
    item.separator = true;
    return item;
}

namespace {

template <typename T>
using Choices = std::vector<std::pair<std::string, T>>;

// One item per (title, value) that sets `field` to the value, checked on an exact match.
template <typename T>
std::vector<CardMenuItem> choices(const CardConfig& config, T CardConfig::*field, const Choices<T>& values)
{
    std::vector<CardMenuItem> items;
    for (const auto& [title, value] : values)
        items.push_back(cardMenuItem(title, config.*field == value, [field, to = value](CardConfig& c) { c.*field = to; }));
    return items;
}

CardMenuItem toggle(const char* title, const CardConfig& config, bool CardConfig::*field)
{
    return cardMenuItem(title, config.*field, [field](CardConfig& c) { c.*field = !(c.*field); });
}

std::string sortTitle(const std::string& sortBy)
{
    if (sortBy == "date")
        return "Date Modified";
    if (sortBy == "size")
        return "Size";
    if (sortBy == "kind")
        return "Kind";
    return "Name";
}

// Checked titles are shown; choosing one hides it, choosing a hidden one shows it again.
std::vector<CardMenuItem> groupVisibility(const CardConfig& config, const std::vector<std::string>& titles)
{
    std::vector<CardMenuItem> items;
    for (const std::string& title : titles) {
        const bool shown = std::find(config.hidden.begin(), config.hidden.end(), title) == config.hidden.end();
        items.push_back(cardMenuItem(title, shown, [title, shown](CardConfig& c) {
            const bool listed = std::find(c.hidden.begin(), c.hidden.end(), title) != c.hidden.end();
            if (shown && !listed)
                c.hidden.push_back(title);
            else if (!shown)
                std::erase(c.hidden, title);
        }));
    }
    return items;
}

} // namespace

std::vector<CardMenuItem> cardMenuFiles(const CardConfig& config, const std::string& windowSortBy)
{
    Choices<std::string> sorts{{"Same as Window (" + sortTitle(windowSortBy) + ")", ""}};
    for (const char* key : {"date", "name", "size", "kind"})
        sorts.emplace_back(sortTitle(key), key);
    return {
        cardSubmenu("Sort by", choices(config, &CardConfig::sort, sorts)),
        toggle("Ascending", config, &CardConfig::ascending),
        cardSubmenu("Icon size", choices<double>(config, &CardConfig::iconSize,
                                                 {{"Small", 32}, {"Medium", 48}, {"Large", 64}, {"Extra Large", 96}})),
        toggle("Real previews", config, &CardConfig::thumbs),
    };
}

std::vector<CardMenuItem> cardMenuDrives(const CardConfig& config)
{
    return {
        cardSubmenu("Breakdown rows",
                    choices<int64_t>(config, &CardConfig::legendRows, {{"4", 4}, {"6", 6}, {"8", 8}, {"12", 12}})),
        cardSubmenu("Breakdown width",
                    choices<double>(config, &CardConfig::tileWidth, {{"Narrow", 180}, {"Medium", 220}, {"Wide", 280}})),
        cardSubmenu("Icon size",
                    choices<double>(config, &CardConfig::iconSize, {{"Small", 32}, {"Medium", 48}, {"Large", 64}})),
    };
}

std::vector<CardMenuItem> cardMenuWith(const CardConfig& config, const std::string& family,
                                       const std::string& windowSortBy)
{
    std::vector<CardMenuItem> menu;

    Choices<std::string> layouts;
    for (const CardLayout* layout : cardLayoutsOf(family))
        layouts.emplace_back(layout->title(), layout->key());
    std::vector<CardMenuItem> layoutItems = choices(config, &CardConfig::layout, layouts);
    // The checked layout is the one in effect, so "" and unknown keys check the default.
    const std::string inEffect = cardLayout(config.layout, family).key();
    for (size_t i = 0; i < layoutItems.size(); ++i)
        layoutItems[i].on = layouts[i].second == inEffect;
    menu.push_back(cardSubmenu("Layout", std::move(layoutItems)));

    Choices<std::string> groups{{"Match Sort", "auto"}};
    for (const auto& grouper : cardGroupers())
        groups.emplace_back(grouper->title(), grouper->key());
    menu.push_back(cardSubmenu("Group by", choices(config, &CardConfig::group, groups)));

    const std::vector<std::string> titles = cardGrouperFor(cardGroupKey(config, windowSortBy)).titles();
    if (!titles.empty())
        menu.push_back(cardSubmenu("Show groups", groupVisibility(config, titles)));

    for (CardMenuItem& item : family == "drives" ? cardMenuDrives(config) : cardMenuFiles(config, windowSortBy))
        menu.push_back(std::move(item));
    menu.push_back(cardMenuSeparator());
    CardMenuItem open = cardMenuItem("Open Card Settings File", false, {});
    open.opensFile = true;
    menu.push_back(std::move(open));
    return menu;
}

std::vector<CardMenuItem> cardMenu(const std::string& key, const std::string& family, const BrondelSettings& settings)
{
    return cardMenuWith(cardConfigLoad(key, family), family, settings.sortBy);
}

void cardUpdate(const std::string& key, const std::string& family, const CardChange& change)
{
    CardConfig config = cardConfigLoad(key, family);
    change(config);
    cardConfigSave(key, config);
}

std::optional<std::string> cardMenuChoose(const CardMenuItem& item, const std::string& key, const std::string& family)
{
    if (item.opensFile) {
        const std::string path = cardConfigPath(key);
        struct stat st;
        if (sysCalls().stat(path.c_str(), &st) != 0)
            cardConfigSave(key, cardConfigLoad(key, family));
        return path;
    }
    if (item.change)
        cardUpdate(key, family, item.change);
    return std::nullopt;
}
