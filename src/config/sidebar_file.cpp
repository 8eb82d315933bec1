#include "config/sidebar_file.h"

#include "config/config_edit.h"
#include "config/config_file.h"
#include "config/config_paths.h"
#include "config/config_text.h"

#include <algorithm>

namespace {

// Read, change, write when `change` says it changed something.
template <typename Change>
bool edit(Change change)
{
    SidebarFile file = sidebarRead();
    if (!change(file))
        return false;
    sidebarWrite(file.title, file.paths);
    return true;
}

} // namespace

SidebarFile sidebarDefaults()
{
    return SidebarFile{"Favorites", {"~", "~/Desktop", "~/Documents", "~/Downloads"}};
}

SidebarFile sidebarParse(std::string_view text)
{
    SidebarFile file;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        std::vector<std::string> strings = configQuotedStrings(line);
        if (line.starts_with("title")) {
            if (!strings.empty())
                file.title = strings.front();
        } else if (!line.starts_with('#')) {
            file.paths.insert(file.paths.end(), strings.begin(), strings.end());
        }
    }
    return file;
}

bool sidebarLossy(std::string_view text)
{
    bool titled = false;
    for (std::string_view raw : configSplitLines(text)) {
        std::string_view line = configTrim(raw);
        if (line.empty() || line.starts_with('#'))
            continue;
        if (line.starts_with("title")) {
            if (titled || configTitleLineLossy(line))
                return true;
            titled = true;
        } else if (configPathLineLossy(line)) {
            return true;
        }
    }
    return false;
}

std::string sidebarFormat(const std::string& title, const std::vector<std::string>& paths)
{
    std::string out = "# Brondel sidebar \u2014 top section. Edit here or right-click sidebar rows / folders.\n";
    out += "title = \"" + title + "\"\npaths = [\n";
    for (const std::string& path : paths)
        out += "  \"" + path + "\",\n";
    out += "]\n";
    return out;
}

SidebarFile sidebarRead()
{
    const std::string path = sidebarFilePath();
    if (!configExists(path)) {
        SidebarFile defaults = sidebarDefaults();
        sidebarWrite(defaults.title, defaults.paths);
    }
    return sidebarParse(configRead(path, ConfigBytes::Any).value_or(""));
}

bool sidebarWrite(const std::string& title, const std::vector<std::string>& paths)
{
    return configRewrite(sidebarFilePath(), sidebarFormat(title, paths), {ConfigBytes::Any, sidebarLossy}).status
        == ConfigWriteStatus::Written;
}

bool sidebarAdd(const std::string& path)
{
    if (std::optional<std::string> what = configUnstorable(path)) {
        configNotice(configRefusedPath(path, "the sidebar", *what, "sidebar.toml"));
        return false;
    }
    return edit([&](SidebarFile& file) {
        if (std::any_of(file.paths.begin(), file.paths.end(), [&](const std::string& p) { return configSamePath(p, path); }))
            return false;
        file.paths.push_back(configAbbreviateHome(path));
        return true;
    });
}

bool sidebarRemove(const std::string& path)
{
    return edit([&](SidebarFile& file) {
        return std::erase_if(file.paths, [&](const std::string& p) { return configSamePath(p, path); }) > 0;
    });
}

void sidebarShift(const std::string& path, int64_t by)
{
    edit([&](SidebarFile& file) {
        auto it = std::find_if(file.paths.begin(), file.paths.end(), [&](const std::string& p) { return configSamePath(p, path); });
        return it != file.paths.end() && configSwapBy(file.paths, size_t(it - file.paths.begin()), by);
    });
}

void sidebarRename(const std::string& title)
{
    if (std::optional<std::string> what = configUnstorable(title)) {
        configNotice("The sidebar title \u201c" + title + "\u201d holds " + *what
            + ", which sidebar.toml cannot store; the sidebar was left as it is.");
        return;
    }
    edit([&](SidebarFile& file) {
        file.title = title;
        return true;
    });
}
