#pragma once
// A card's "⋯" menu as a plain tree of items, built from the card's options as loaded
// now. The GUI pops it up; `brondel card <key> menu` prints it.

#include "cards/card_config.h"
#include "config/brondel_settings.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

using CardChange = std::function<void(CardConfig&)>;

struct CardMenuItem {
    std::string title;
    bool on = false;        // shown with a check mark
    bool separator = false;
    bool opensFile = false; // "Open Card Settings File"
    CardChange change;      // what choosing the item changes (empty: nothing)
    std::vector<CardMenuItem> submenu;
};

// An item whose choice applies `change` through the card update.
CardMenuItem cardMenuItem(std::string title, bool on, CardChange change);
CardMenuItem cardSubmenu(std::string title, std::vector<CardMenuItem> items);
CardMenuItem cardMenuSeparator();

// The items of the "files" and "drives" families. `windowSortBy` names the window's
// sort in "Same as Window (…)".
std::vector<CardMenuItem> cardMenuFiles(const CardConfig& config, const std::string& windowSortBy);
std::vector<CardMenuItem> cardMenuDrives(const CardConfig& config);

// The whole menu for a card with these options.
std::vector<CardMenuItem> cardMenuWith(const CardConfig& config, const std::string& family,
                                       const std::string& windowSortBy);

// The whole menu, from the card's file as it is now.
std::vector<CardMenuItem> cardMenu(const std::string& key, const std::string& family, const BrondelSettings& settings);

// The card update: reads the card's file again at this moment (so a change made
// meanwhile by hand or from the command line is kept), applies `change` and saves.
void cardUpdate(const std::string& key, const std::string& family, const CardChange& change);

// Carries out a chosen item. For "Open Card Settings File" the file is first written
// with the defaults when it does not exist, and its path is returned for the caller to
// open; every other item runs the card update and returns nothing. The caller then
// refreshes its windows.
std::optional<std::string> cardMenuChoose(const CardMenuItem& item, const std::string& key, const std::string& family);
