#pragma once
// The records of the icon view's cards: what one configurable card is built from
// (CardCtx) and the sections the view draws (IconSec). Plain values, no widgets.

#include "fs/dir_node.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One configurable card (a Downloads card, the Drives card) before it is laid out.
struct CardCtx {
    std::string key;              // names the card's file
    std::string title;            // header text
    std::vector<DirNodePtr> nodes; // unsorted content
    int64_t card = 0;             // position of the card in the view, from 0
    std::string family;           // "files" or "drives"
    bool collapsible = false;
};

// One section of the icon view. The sections of one card share `card`; only the first
// carries the card's header text in `group`.
struct IconSec {
    int64_t card = 0;
    std::string group;
    std::string title;             // the group's sub-header with its count, "" for none
    std::optional<double> hue;
    std::vector<DirNodePtr> nodes;
    std::optional<std::string> pinned;  // a Favorites section: the favourites section's title
    std::optional<std::string> cardKey; // absent for Favorites and a folder's own items
    std::string family;
    bool collapsible = false;
    bool collapsed = false;
    std::optional<std::string> showAll; // key of a strip's expanded state in cardShowAll
    bool strip = false;
    bool list = false;
    bool breakdown = false;
    bool thumbs = false;
    double iconSize = 48;
    int64_t legendRows = 8;
    double tileWidth = 220;
    double topPad = 0;
};
