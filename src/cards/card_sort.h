#pragma once
// The order of a card's nodes before they are grouped.

#include "cards/card_config.h"
#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <vector>

// By config.sort: "date", "name", "size" or "kind" sort stably on that key alone
// (ascending, then the whole result reversed unless config.ascending); "keep" leaves
// the incoming order; anything else is the window's folder sort from `settings`.
std::vector<DirNodePtr> cardSort(std::vector<DirNodePtr> nodes, const CardConfig& config,
                                 const BrondelSettings& settings);
