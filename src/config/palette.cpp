#include "config/palette.h"

#include "config/config_file.h"
#include "config/config_text.h"

#include <algorithm>
#include <unicode/utf8.h>

const std::string_view kPaletteDefaultText =
    "# Brondel section colors: Name = hue (0 red \u2026 0.33 green \u2026 0.58 blue \u2026 0.75 purple \u2026 1 red)\n"
    "Blue = 0.58\n"
    "Orange = 0.08\n"
    "Green = 0.33\n"
    "Purple = 0.75\n"
    "Pink = 0.93\n"
    "Teal = 0.5\n"
    "Yellow = 0.14\n"
    "Red = 0.0\n";

Palette paletteParse(std::string_view text)
{
    Palette palette;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        size_t eq = line.find('=');
        if (line.starts_with('#') || eq == std::string_view::npos)
            continue;
        const std::string_view name = configTrim(line.substr(0, eq));
        if (name.empty()) // "= 0.5" names no colour: malformed
            continue;
        if (auto hue = configParseDouble(configTrim(line.substr(eq + 1))))
            palette.push_back({std::string(name), *hue});
    }
    return palette;
}

namespace {

std::string_view paletteHeaderLine()
{
    return kPaletteDefaultText.substr(0, kPaletteDefaultText.find('\n') + 1);
}

bool paletteEntryLine(std::string_view line)
{
    return !paletteParse(line).empty();
}

} // namespace

bool paletteLossy(std::string_view text)
{
    bool first = true;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        const bool keptHeader = first && line.starts_with('#');
        first = false;
        if (line.empty() || keptHeader)
            continue;
        if (line.starts_with('#') || !paletteEntryLine(line))
            return true;
    }
    return false;
}

std::string paletteFormat(const Palette& palette)
{
    std::string out(paletteHeaderLine());
    for (const PaletteEntry& entry : palette)
        out += entry.name + " = " + configFormatDouble(entry.hue) + "\n";
    return out;
}

std::optional<std::string> paletteUnstorableName(std::string_view name)
{
    if (configTrim(name).empty())
        return "nothing at all";
    if (name.find('=') != std::string_view::npos)
        return "an equals sign";
    if (configTrim(name).starts_with('#'))
        return "a number sign";
    if (name.find_first_of("\r\n") != std::string_view::npos)
        return "a line break";
    return std::nullopt;
}

bool paletteWrite(const Palette& palette)
{
    for (const PaletteEntry& entry : palette)
        if (paletteUnstorableName(entry.name))
            return false;
    Palette trimmed = palette;
    for (PaletteEntry& entry : trimmed)
        entry.name = std::string(configTrim(entry.name));
    return configRewrite(palettePath(), paletteFormat(trimmed), {ConfigBytes::Utf8Only, paletteLossy}).status
        == ConfigWriteStatus::Written;
}

Palette pinnedPalette()
{
    const std::string path = palettePath();
    if (!configExists(path))
        configRewrite(path, kPaletteDefaultText, {});
    Palette palette;
    if (auto text = configRead(path))
        palette = paletteParse(*text);
    if (palette.empty())
        palette.push_back({"Blue", 0.58});
    return palette;
}

uint32_t paletteTitleHash(std::string_view title)
{
    uint32_t hash = 2166136261u;
    int32_t i = 0, length = int32_t(title.size());
    while (i < length) {
        UChar32 c;
        U8_NEXT(title.data(), i, length, c);
        if (c < 0)
            c = 0xFFFD;
        hash ^= uint32_t(c);
        hash *= 16777619u;
    }
    return hash;
}

double paletteHueForTitle(std::string_view title, const Palette& palette)
{
    return palette[paletteTitleHash(title) % palette.size()].hue;
}

std::map<std::string, double> pinnedAssignHues(const std::vector<PinnedSec>& secs, const Palette& palette)
{
    std::vector<double> used;
    for (const PinnedSec& sec : secs)
        if (sec.color)
            used.push_back(*sec.color);
    std::map<std::string, double> hues;
    for (const PinnedSec& sec : secs) {
        if (hues.contains(sec.title))
            continue;
        if (sec.color) {
            hues[sec.title] = *sec.color;
            continue;
        }
        auto free = std::find_if(palette.begin(), palette.end(), [&](const PaletteEntry& entry) {
            return std::find(used.begin(), used.end(), entry.hue) == used.end();
        });
        if (free != palette.end()) {
            hues[sec.title] = free->hue;
            used.push_back(free->hue);
        } else {
            hues[sec.title] = paletteHueForTitle(sec.title, palette);
        }
    }
    return hues;
}
