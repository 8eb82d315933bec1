#include "config/settings_file.h"

#include "config/config_file.h"
#include "config/config_text.h"

#include <algorithm>
#include <set>
#include <variant>

namespace {

// Each field is described once; reading and writing both walk this table, in the
// order the file lists them.
enum class Rule { Plain, SortKey, NonEmpty, RecentCount };

struct Field {
    const char* key;
    std::variant<bool BrondelSettings::*, std::string BrondelSettings::*, int64_t BrondelSettings::*> member;
    Rule rule = Rule::Plain;
    const char* comment = nullptr; // written after the value
};

const Field kFields[] = {
    {"show_hidden", &BrondelSettings::showHidden},
    {"sort_by", &BrondelSettings::sortBy, Rule::SortKey, "        # name | date | size | kind"},
    {"ascending", &BrondelSettings::ascending},
    {"folders_first", &BrondelSettings::foldersFirst},
    {"show_recent", &BrondelSettings::showRecent},
    {"recent_count", &BrondelSettings::recentCount, Rule::RecentCount},
    {"drives_title", &BrondelSettings::drivesTitle, Rule::NonEmpty},
    {"items_title", &BrondelSettings::itemsTitle, Rule::NonEmpty},
    {"favorites_title", &BrondelSettings::favoritesTitle, Rule::NonEmpty},
    {"recent_title", &BrondelSettings::recentTitle, Rule::NonEmpty},
    {"show_downloads", &BrondelSettings::showDownloads},
};

constexpr std::string_view kInfoPrefix = "info_";
constexpr int64_t kRecentDefault = 8;

void apply(BrondelSettings& s, const Field& field, const std::string& value)
{
    if (auto m = std::get_if<bool BrondelSettings::*>(&field.member)) {
        s.*(*m) = configBool(value);
    } else if (auto m = std::get_if<int64_t BrondelSettings::*>(&field.member)) {
        auto number = configParseInt(value);
        s.*(*m) = number ? std::clamp<int64_t>(*number, 0, 50) : kRecentDefault;
    } else if (auto m = std::get_if<std::string BrondelSettings::*>(&field.member)) {
        if (field.rule == Rule::SortKey && value != "name" && value != "date" && value != "size" && value != "kind")
            return;
        if (field.rule == Rule::NonEmpty && value.empty())
            return;
        // Only an unquoted or unterminated value can hold a quote, and the file has no
        // way to write one back: such a line is malformed, or the next save would turn
        // it into another value.
        if (value.find('"') != std::string::npos)
            return;
        s.*(*m) = value;
    }
}

// The field's value as the file writes it (strings without their quotes).
std::string valueText(const BrondelSettings& s, const Field& field)
{
    if (auto m = std::get_if<bool BrondelSettings::*>(&field.member))
        return s.*(*m) ? "true" : "false";
    if (auto m = std::get_if<int64_t BrondelSettings::*>(&field.member))
        return std::to_string(s.*(*m));
    return s.*std::get<std::string BrondelSettings::*>(field.member);
}

bool sameValue(const BrondelSettings& a, const BrondelSettings& b, const Field& field)
{
    return std::visit([&](auto member) { return a.*member == b.*member; }, field.member);
}

void copyValue(const BrondelSettings& from, BrondelSettings& to, const Field& field)
{
    std::visit([&](auto member) { to.*member = from.*member; }, field.member);
}

const Field* findField(std::string_view key)
{
    for (const Field& field : kFields)
        if (key == field.key)
            return &field;
    return nullptr;
}

} // namespace

BrondelSettings settingsParse(std::string_view text)
{
    BrondelSettings s;
    for (std::string_view line : configSplitLines(text)) {
        auto kv = configKeyValue(line);
        if (!kv)
            continue;
        const auto& [key, value] = *kv;
        if (std::string_view(key).starts_with(kInfoPrefix)) {
            s.infoOn[key.substr(kInfoPrefix.size())] = configBool(value);
            continue;
        }
        if (const Field* field = findField(key))
            apply(s, *field, value);
    }
    return s;
}

bool settingsLossy(std::string_view text)
{
    std::set<std::string> seen;
    for (std::string_view line : configSplitLines(text)) {
        std::string_view trimmed = configTrim(line);
        if (trimmed.empty() || trimmed.starts_with('#'))
            continue;
        auto kv = configKeyValue(line);
        if (!kv || !seen.insert(kv->first).second) // a repeated key: the earlier one is dropped
            return true;
        const auto& [key, value] = *kv;
        if (std::string_view(key).starts_with(kInfoPrefix)) {
            if (value != "true" && value != "false")
                return true;
            continue;
        }
        const Field* field = findField(key);
        if (!field)
            return true;
        // The value must be written back exactly as it stands (a quote inside would not).
        BrondelSettings applied;
        apply(applied, *field, value);
        if (valueText(applied, *field) != value || value.find('"') != std::string::npos)
            return true;
    }
    return false;
}

void settingsMerge(const BrondelSettings& before, const BrondelSettings& after, BrondelSettings& onto)
{
    for (const Field& field : kFields)
        if (!sameValue(before, after, field))
            copyValue(after, onto, field);
    for (const auto& [key, on] : after.infoOn)
        if (auto it = before.infoOn.find(key); it == before.infoOn.end() || it->second != on)
            onto.infoOn[key] = on;
    for (const auto& [key, on] : before.infoOn)
        if (!after.infoOn.contains(key))
            onto.infoOn.erase(key);
}

std::string settingsFormat(const BrondelSettings& s)
{
    std::string out = "# Brondel settings \u2014 edited by Brondel \u2192 Settings\u2026, or by hand.\n";
    for (const Field& field : kFields) {
        const bool quoted = std::holds_alternative<std::string BrondelSettings::*>(field.member);
        out += field.key;
        out += " = ";
        out += quoted ? "\"" + valueText(s, field) + "\"" : valueText(s, field);
        if (field.comment)
            out += field.comment;
        out += "\n";
    }
    bool first = true;
    for (const auto& [key, on] : s.infoOn) { // std::map: ascending by code point
        if (!first)
            out += "\n";
        first = false;
        out += std::string(kInfoPrefix) + key + " = " + (on ? "true" : "false");
    }
    out += "   # size info modules (brondel infos)\n";
    return out;
}

BrondelSettings settingsLoad()
{
    auto text = configRead(settingsPath());
    return text ? settingsParse(*text) : BrondelSettings{};
}

namespace {
const ConfigFormat kSettingsFormat{ConfigBytes::Utf8Only, settingsLossy};
}

bool settingsSave(const BrondelSettings& settings)
{
    return configRewrite(settingsPath(), settingsFormat(settings), kSettingsFormat).status
        == ConfigWriteStatus::Written;
}

bool settingsUpdate(const BrondelSettings& before, const BrondelSettings& after)
{
    BrondelSettings onDisk = settingsLoad();
    settingsMerge(before, after, onDisk);
    return settingsSave(onDisk);
}

BrondelSettings& Settings::current()
{
    static BrondelSettings current = settingsLoad();
    return current;
}
