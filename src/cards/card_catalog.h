#pragma once
// The configurable cards that exist: one Downloads card per downloads folder, then the
// Drives card. The command line lists and edits these; the icon view shows them.

#include "config/brondel_settings.h"

#include <optional>
#include <string>
#include <vector>

struct CardEntry {
    std::string key;
    std::string title;
    std::string family; // "files" or "drives"

    bool operator==(const CardEntry&) const = default;
};

// The catalogue from the Downloads cards' titles (in order) and the Drives card's title.
std::vector<CardEntry> cardListFrom(const std::vector<std::string>& downloadsTitles, const std::string& drivesTitle);

// The catalogue now. The Downloads cards are listed even when the icon view hides them.
std::vector<CardEntry> cardList(const BrondelSettings& settings);

// The first entry of `cards` with that key.
std::optional<CardEntry> cardFind(const std::vector<CardEntry>& cards, const std::string& key);
