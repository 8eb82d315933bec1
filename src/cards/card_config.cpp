#include "cards/card_config.h"

#include "config/config_file.h"
#include "config/config_text.h"
#include "fs/file_io.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace {

std::vector<std::string> splitBars(std::string_view value)
{
    std::vector<std::string> pieces;
    size_t start = 0;
    for (;;) {
        size_t bar = value.find('|', start);
        std::string_view piece = value.substr(start, bar == std::string_view::npos ? bar : bar - start);
        // Each title may be quoted on its own ("A"|"B"); the file writes all of them
        // inside one pair of quotes, so a title never begins or ends with one.
        while (piece.starts_with('"'))
            piece.remove_prefix(1);
        while (piece.ends_with('"'))
            piece.remove_suffix(1);
        if (!piece.empty())
            pieces.emplace_back(piece);
        if (bar == std::string_view::npos)
            return pieces;
        start = bar + 1;
    }
}

// Whole points, truncated towards zero as the file stores them.
std::string wholeNumber(double value)
{
    return std::to_string(int64_t(std::clamp(value, -9.2e18, 9.2e18)));
}

const char* boolText(bool value) { return value ? "true" : "false"; }

} // namespace

CardConfig CardConfig::defaults(std::string_view family)
{
    CardConfig config;
    if (family == "drives") {
        config.group = "none";
        config.sort = "keep";
        config.thumbs = false;
        config.collapsed = false;
    }
    return config;
}

std::string cardConfigPath(const std::string& key)
{
    const std::string dir = cardsDir();
    return dir.empty() ? std::string() : dir + "/" + key + ".toml";
}

bool cardConfigSet(CardConfig& config, std::string_view field, std::string_view value)
{
    if (field == "layout")
        config.layout = value;
    else if (field == "group")
        config.group = value;
    else if (field == "sort")
        config.sort = value;
    else if (field == "ascending")
        config.ascending = configBool(value);
    else if (field == "thumbs")
        config.thumbs = configBool(value);
    else if (field == "icon_size")
        config.iconSize = std::clamp(configParseDouble(value).value_or(config.iconSize), 16.0, 128.0);
    else if (field == "collapsed")
        config.collapsed = configBool(value);
    else if (field == "hidden")
        config.hidden = splitBars(value);
    else if (field == "legend_rows")
        config.legendRows = std::clamp<int64_t>(configParseInt(value).value_or(config.legendRows), 1, 30);
    else if (field == "tile_width")
        config.tileWidth = std::clamp(configParseDouble(value).value_or(config.tileWidth), 140.0, 600.0);
    else
        return false;
    return true;
}

CardConfig cardConfigParse(std::string_view text, std::string_view family)
{
    CardConfig config = CardConfig::defaults(family);
    for (std::string_view line : configSplitLines(text))
        if (auto kv = configCardKeyValue(line))
            cardConfigSet(config, kv->first, kv->second);
    return config;
}

std::string cardConfigFormat(const std::string& key, const CardConfig& c)
{
    std::string hidden;
    for (size_t i = 0; i < c.hidden.size(); ++i)
        hidden += (i ? "|" : "") + c.hidden[i];
    std::string text;
    text += "# Brondel card \"" + key + "\" \u2014 edited by the card's \u22ef menu, or by hand. Missing keys = defaults.\n";
    text += "layout = \"" + c.layout
        + "\"          # rows | grid | list (files) \u00b7 icons | breakdown (drives) \u00b7 \"\" = first\n";
    text += "group = \"" + c.group + "\"            # auto (match sort) | none | date | kind\n";
    text += "sort = \"" + c.sort + "\"              # \"\" = same as window | date | name | size | kind | keep\n";
    text += std::string("ascending = ") + boolText(c.ascending) + "\n";
    text += std::string("thumbs = ") + boolText(c.thumbs) + "            # real previews instead of generic icons\n";
    text += "icon_size = " + wholeNumber(c.iconSize) + "\n";
    text += std::string("collapsed = ") + boolText(c.collapsed) + "      # one sideways row until expanded\n";
    text += "hidden = \"" + hidden + "\"   # hidden group titles, | separated\n";
    text += "legend_rows = " + std::to_string(c.legendRows) + "   # breakdown: folders listed per drive\n";
    text += "tile_width = " + wholeNumber(c.tileWidth) + "\n";
    return text;
}

bool cardConfigLossy(std::string_view text)
{
    // A value that does not parse leaves its field as it was: set on two configurations
    // that differ in every field, it then leaves that field's written lines different.
    CardConfig other;
    other.layout = "-", other.group = "-", other.sort = "-", other.ascending = true, other.thumbs = false;
    other.iconSize = 17, other.collapsed = false, other.hidden = {"-"}, other.legendRows = 2, other.tileWidth = 141;
    auto lineOf = [](const CardConfig& config, const std::string& key) {
        const std::string text = cardConfigFormat("", config);
        size_t at = text.find("\n" + key + " = ");
        return text.substr(at, text.find('\n', at + 1) - at);
    };
    std::set<std::string> seen;
    for (std::string_view line : configSplitLines(text)) {
        if (configTrim(line.substr(0, line.find('#'))).empty())
            continue;
        auto kv = configCardKeyValue(line);
        if (!kv || !seen.insert(kv->first).second)
            return true;
        CardConfig a, b = other;
        if (!cardConfigSet(a, kv->first, kv->second) || !cardConfigSet(b, kv->first, kv->second))
            return true;
        if (lineOf(a, kv->first) != lineOf(b, kv->first))
            return true;
    }
    return false;
}

CardConfig cardConfigLoad(const std::string& key, std::string_view family)
{
    auto text = configRead(cardConfigPath(key));
    return text ? cardConfigParse(*text, family) : CardConfig::defaults(family);
}

void cardConfigSave(const std::string& key, const CardConfig& config)
{
    configRewrite(cardConfigPath(key), cardConfigFormat(key, config), {ConfigBytes::Utf8Only, cardConfigLossy});
}

std::string cardGroupKey(const CardConfig& config, std::string_view windowSortBy)
{
    if (config.group != "auto")
        return config.group;
    std::string_view sort = config.sort.empty() ? windowSortBy : std::string_view(config.sort);
    if (sort == "date" || sort == "kind")
        return std::string(sort);
    return "none";
}
