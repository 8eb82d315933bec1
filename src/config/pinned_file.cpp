#include "config/pinned_file.h"

#include "config/config_edit.h"
#include "config/config_file.h"
#include "config/config_paths.h"
#include "config/config_text.h"

#include <algorithm>

namespace {

bool isLineBreak(char c) { return c == '\n' || c == '\r'; }

bool isSectionLine(std::string_view raw) { return configTrim(raw) == "[[section]]"; }

// The header as kept: the text before the first section line, without blank lines at
// either end, plus one line break. A "\r" is only a line break at the ends of the
// header when dropping it cannot make a section line of "\r[[section]]" or
// "[[section]]\r", which the file read as header text.
std::string headerText(std::string_view text)
{
    size_t first = 0;
    while (first < text.size() && isLineBreak(text[first]))
        ++first;
    const size_t lastNewline = text.substr(0, first).rfind('\n');
    const size_t lineStart = lastNewline == std::string_view::npos ? 0 : lastNewline + 1;
    text.remove_prefix(isSectionLine(text.substr(first, text.find('\n', first) - first)) ? lineStart : first);
    size_t end = text.size();
    while (end > 0 && isLineBreak(text[end - 1]))
        --end;
    const size_t lastLine = text.substr(0, end).rfind('\n');
    const size_t tailStart = lastLine == std::string_view::npos ? 0 : lastLine + 1;
    const std::string_view tail = text.substr(tailStart, end - tailStart);
    if (end < text.size() && text[end] == '\r' && isSectionLine(tail))
        ++end;
    return std::string(text.substr(0, end)) + "\n";
}

void readSectionLine(PinnedSec& sec, std::string_view line)
{
    if (line.starts_with("title")) {
        auto strings = configQuotedStrings(line);
        if (!strings.empty())
            sec.title = strings.front();
    } else if (line.starts_with("color")) {
        size_t eq = line.find('=');
        sec.color = eq == std::string_view::npos ? std::nullopt : configParseDouble(configTrim(line.substr(eq + 1)));
    } else if (!line.starts_with('#')) {
        for (std::string& path : configQuotedStrings(line))
            sec.paths.push_back(std::move(path));
    }
}

// The index of the first section titled `title`.
std::optional<size_t> findSection(const std::vector<PinnedSec>& secs, const std::string& title)
{
    for (size_t i = 0; i < secs.size(); ++i)
        if (secs[i].title == title)
            return i;
    return std::nullopt;
}

struct Place {
    size_t section;
    size_t index;
};

// Where `path` is first pinned, comparing after tilde expansion.
std::optional<Place> findPath(const std::vector<PinnedSec>& secs, const std::string& path)
{
    for (size_t s = 0; s < secs.size(); ++s)
        for (size_t i = 0; i < secs[s].paths.size(); ++i)
            if (configSamePath(secs[s].paths[i], path))
                return Place{s, i};
    return std::nullopt;
}

// Read, change, write when `change` says it changed something.
template <typename Change>
bool edit(Change change)
{
    PinnedFile file = pinnedRead();
    if (!change(file.secs))
        return false;
    pinnedWrite(file.header, file.secs);
    return true;
}

// A section title that the file cannot store is refused with a notice.
bool titleStorable(const std::string& title)
{
    std::optional<std::string> what = configUnstorable(title);
    if (what)
        configNotice("The section title \u201c" + title + "\u201d holds " + *what
            + ", which pinned.toml cannot store; the favorites were left as they are.");
    return !what;
}

} // namespace

PinnedFile pinnedParse(std::string_view text)
{
    PinnedFile file;
    size_t headerEnd = text.size();
    PinnedSec* current = nullptr;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        if (isSectionLine(raw)) {
            if (!current)
                headerEnd = size_t(raw.data() - text.data());
            current = &file.secs.emplace_back();
        } else if (current) {
            readSectionLine(*current, line);
        }
    }
    file.header = headerText(text.substr(0, headerEnd));
    return file;
}

std::string pinnedFormat(const std::string& header, const std::vector<PinnedSec>& secs)
{
    std::string out = header;
    for (const PinnedSec& sec : secs) {
        out += "\n[[section]]\ntitle = \"" + sec.title + "\"\n";
        if (sec.color)
            out += "color = " + configFormatDouble(*sec.color) + "\n";
        out += "paths = [\n";
        for (const std::string& path : sec.paths)
            out += "  \"" + path + "\",\n";
        out += "]\n";
    }
    return out;
}

bool pinnedLossy(std::string_view text)
{
    bool inSection = false, titled = false;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        if (line == "[[section]]") {
            inSection = true;
            titled = false;
        } else if (!inSection || line.empty() || line.starts_with('#')) {
            continue; // the header is kept as it stands
        } else if (line.starts_with("title")) {
            if (titled || configTitleLineLossy(line))
                return true; // a second title replaces the first; an unclosed one is dropped
            titled = true;
        } else if (line.starts_with("color")) {
            size_t eq = line.find('=');
            if (eq == std::string_view::npos || !configParseDouble(configTrim(line.substr(eq + 1))))
                return true;
        } else if (configPathLineLossy(line)) {
            return true;
        }
    }
    return false;
}

PinnedFile pinnedRead()
{
    auto text = configRead(pinnedFilePath(), ConfigBytes::Any);
    if (!text)
        return PinnedFile{std::string(kPinnedDefaultHeader), {}};
    return pinnedParse(*text);
}

bool pinnedWrite(const std::string& header, const std::vector<PinnedSec>& secs)
{
    return configRewrite(pinnedFilePath(), pinnedFormat(header, secs), {ConfigBytes::Any, pinnedLossy}).status
        == ConfigWriteStatus::Written;
}

bool pinnedAdd(const std::string& path, const std::string& section)
{
    if (std::optional<std::string> what = configUnstorable(path)) {
        configNotice(configRefusedPath(path, "the favorites", *what, "pinned.toml"));
        return false;
    }
    if (!titleStorable(section))
        return false;
    return edit([&](std::vector<PinnedSec>& secs) {
        if (findPath(secs, path))
            return false;
        std::string stored = configAbbreviateHome(path);
        if (auto i = findSection(secs, section))
            secs[*i].paths.push_back(stored);
        else
            secs.push_back(PinnedSec{section, {stored}, std::nullopt});
        return true;
    });
}

bool pinnedRemove(const std::string& path)
{
    return edit([&](std::vector<PinnedSec>& secs) {
        bool removed = false;
        for (PinnedSec& sec : secs)
            removed |= std::erase_if(sec.paths, [&](const std::string& p) { return configSamePath(p, path); }) > 0;
        return removed;
    });
}

void pinnedShift(const std::string& path, int64_t by)
{
    edit([&](std::vector<PinnedSec>& secs) {
        auto place = findPath(secs, path);
        return place && configSwapBy(secs[place->section].paths, place->index, by);
    });
}

std::optional<std::string> pinnedSectionOf(const std::string& path)
{
    PinnedFile file = pinnedRead();
    if (auto place = findPath(file.secs, path))
        return file.secs[place->section].title;
    return std::nullopt;
}

std::vector<std::string> pinnedSectionTitles()
{
    std::vector<std::string> titles;
    for (const PinnedSec& sec : pinnedRead().secs)
        if (!sec.title.empty())
            titles.push_back(sec.title);
    if (std::find(titles.begin(), titles.end(), "Favorites") == titles.end())
        titles.insert(titles.begin(), "Favorites");
    return titles;
}

bool pinnedAddSection(const std::string& title)
{
    if (!titleStorable(title))
        return false;
    return edit([&](std::vector<PinnedSec>& secs) {
        if (findSection(secs, title))
            return false;
        secs.push_back(PinnedSec{title, {}, std::nullopt});
        return true;
    });
}

void pinnedRenameSection(const std::string& from, const std::string& to)
{
    if (!titleStorable(to))
        return;
    edit([&](std::vector<PinnedSec>& secs) {
        auto i = findSection(secs, from);
        if (!i || to.empty())
            return false;
        for (size_t j = 0; j < secs.size(); ++j) {
            if (j == *i || secs[j].title != to)
                continue;
            secs[j].paths.insert(secs[j].paths.end(), secs[*i].paths.begin(), secs[*i].paths.end());
            secs.erase(secs.begin() + std::ptrdiff_t(*i));
            return true;
        }
        secs[*i].title = to;
        return true;
    });
}

void pinnedShiftSection(const std::string& title, int64_t by)
{
    edit([&](std::vector<PinnedSec>& secs) {
        auto i = findSection(secs, title);
        return i && configSwapBy(secs, *i, by);
    });
}

bool pinnedRemoveSection(const std::string& title)
{
    return edit([&](std::vector<PinnedSec>& secs) {
        auto i = findSection(secs, title);
        if (i)
            secs.erase(secs.begin() + std::ptrdiff_t(*i));
        return i.has_value();
    });
}

void pinnedSetColor(const std::string& title, std::optional<double> hue)
{
    edit([&](std::vector<PinnedSec>& secs) {
        auto i = findSection(secs, title);
        if (i)
            secs[*i].color = hue;
        return i.has_value();
    });
}
