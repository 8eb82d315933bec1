#pragma once
// The options of one configurable card and its small text file, cards/<key>.toml.
// Parsing and formatting are pure; load and save do the I/O. Nothing is cached: every
// build of a card and every menu reads the file again.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct CardConfig {
    std::string layout;          // layout key; "" = the family's first layout
    std::string group = "auto";  // "auto", "none", "date", "kind"
    std::string sort;            // "" = the window's sort, or date/name/size/kind/keep
    bool ascending = false;
    bool thumbs = true;
    double iconSize = 48;        // 16…128
    bool collapsed = true;
    std::vector<std::string> hidden; // titles of groups not shown
    int64_t legendRows = 8;      // 1…30
    double tileWidth = 220;      // 140…600

    // The defaults of a family: "drives", or "files" for anything else.
    static CardConfig defaults(std::string_view family);

    bool operator==(const CardConfig&) const = default;
};

// The card's file: "cards/<key>.toml" beside the settings file.
std::string cardConfigPath(const std::string& key);

// Applies one file key and value (shared by the file reader and `card … set`). False for
// an unknown key, which changes nothing. Numbers that do not parse keep the old value;
// numbers out of range are clamped.
bool cardConfigSet(CardConfig& config, std::string_view field, std::string_view value);

// The family's defaults overlaid with every line of `text`; later lines win.
CardConfig cardConfigParse(std::string_view text, std::string_view family);

// Whether rewriting the file from what cardConfigParse made of `text` loses something:
// a line without "=", an unknown or repeated key, a number that does not parse.
bool cardConfigLossy(std::string_view text);

// The whole file in its fixed eleven-line layout.
std::string cardConfigFormat(const std::string& key, const CardConfig& config);

// The card's configuration as its file says now (the defaults when it cannot be read).
CardConfig cardConfigLoad(const std::string& key, std::string_view family);

// Rewrites the whole file atomically (see configRewrite); failures are absorbed.
void cardConfigSave(const std::string& key, const CardConfig& config);

// The grouper key the card uses: `group` unless it is "auto", which follows the card's
// sort, or the window's `windowSortBy` when the card sorts like the window.
std::string cardGroupKey(const CardConfig& config, std::string_view windowSortBy);
