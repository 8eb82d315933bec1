#pragma once
// cardShowAll: the strip sections the user has expanded with a card header's "Show all"
// control, by their showAll key ("<card key>/<group title>"). Process-wide, shared by
// every window, empty at start and never saved; keys of vanished cards simply stay.

#include <string>

bool cardShowAllHas(const std::string& key);

// Inserts the key, or removes it when present.
void cardShowAllToggle(const std::string& key);

// Empties the set.
void cardShowAllClear();
