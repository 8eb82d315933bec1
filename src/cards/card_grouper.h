#pragma once
// Groupers split a card's sorted nodes into titled groups before a layout draws them.
// A grouper joins by being defined: BRONDEL_REGISTER(CardGrouper, MyGrouper).

#include "fs/dir_node.h"
#include "fs/registry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct CardGroup {
    std::string title; // "" for the single group of an ungrouped card
    std::optional<double> hue;
    std::vector<DirNodePtr> nodes; // in the order they were given
};

class CardGrouper {
public:
    virtual ~CardGrouper() = default;
    virtual std::string key() const { return ""; }
    virtual std::string title() const { return ""; }
    virtual int64_t order() const { return 50; }
    // Every title this grouper can produce, in its order.
    virtual std::vector<std::string> titles() const { return {}; }
    // `now` (seconds since 1970) is the moment "today" is counted from. The base puts
    // everything into one untitled group.
    virtual std::vector<CardGroup> group(const std::vector<DirNodePtr>& nodes, int64_t now) const
    {
        return {CardGroup{"", std::nullopt, nodes}};
    }
};

// Every grouper in registry order, built once.
const std::vector<std::unique_ptr<CardGrouper>>& cardGroupers();

// The grouper with that key, or the base grouper (one untitled group) for any other.
const CardGrouper& cardGrouperFor(const std::string& key);

// The date bucket of a modification date: whole calendar days in the local time zone
// from the date's day to the day of `now`. 0 today or later, 1 yesterday, 2 for 2…7
// days, 3 for 8…30, 4 for 31 or more and for no date.
int cardDateBucket(std::optional<int64_t> date, int64_t now);
