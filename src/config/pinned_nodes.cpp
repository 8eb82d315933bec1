#include "config/pinned_nodes.h"

#include "config/palette.h"
#include "config/recents.h"
#include "fs/file_io.h"

#include <mutex>

namespace {

// Never destroyed: favourites are read on background threads that quitting does not
// wait for, so the registry must outlive the static destructors that run at exit.
std::mutex& g_hueLock = *new std::mutex;
std::map<std::string, double>& g_hues = *new std::map<std::string, double>;

// The pseudo-node that heads a section of a view.
DirNodePtr headerNode(const std::string& title, const std::string& path, double hue)
{
    DirNodePtr node = DirNode::make();
    node->name = title;
    node->path = path;
    node->isSectionHeader = true;
    node->childrenLoaded = true;
    node->hue = hue;
    return node;
}

// A folder listed under a header; its own children are read on demand. Recent folders
// are not favourites, so only the favourites' entries are marked pinned.
DirNodePtr entryNode(const std::string& name, const std::string& path, double hue)
{
    DirNodePtr node = DirNode::make();
    node->name = name;
    node->path = path;
    node->isDir = true;
    node->kind = "Folder";
    node->hue = hue;
    return node;
}

} // namespace

std::vector<SidebarSection> pinnedLoad(const std::vector<PinnedSec>& secs)
{
    std::vector<SidebarSection> sections;
    for (const PinnedSec& sec : secs)
        if (!sec.title.empty())
            sections.push_back(sidebarSection(sec.title, sec.paths));
    return sections;
}

std::vector<SidebarSection> pinnedLoad() { return pinnedLoad(pinnedRead().secs); }

std::vector<DirNodePtr> pinnedNodes(const BrondelSettings& settings)
{
    const std::vector<PinnedSec> secs = pinnedRead().secs;
    const Palette palette = pinnedPalette();
    const std::map<std::string, double> assigned = pinnedAssignHues(secs, palette);

    std::vector<DirNodePtr> headers;
    std::map<std::string, double> registry;
    for (const SidebarSection& section : pinnedLoad(secs)) {
        auto found = assigned.find(section.title);
        double hue = found != assigned.end() ? found->second : paletteHueForTitle(section.title, palette);
        registry[section.title] = hue;
        DirNodePtr header = headerNode(section.title, "pinned:/" + section.title, hue);
        for (const SidebarItem& item : section.items) {
            DirNodePtr entry = entryNode(item.name, item.path, hue);
            entry->isPinned = true;
            header->children.push_back(std::move(entry));
        }
        headers.push_back(std::move(header));
    }

    if (settings.showRecent) {
        std::vector<std::string> recents = recentsLoad();
        if (!recents.empty()) {
            double hue = paletteHueForTitle(settings.recentTitle, palette);
            registry[settings.recentTitle] = hue;
            DirNodePtr header = headerNode(settings.recentTitle, "pinned://Recent", hue);
            for (const std::string& path : recents)
                header->children.push_back(entryNode(pathLastComponent(path), path, hue));
            headers.push_back(std::move(header));
        }
    }
    PinnedHueRegistry::replace(std::move(registry));
    return headers;
}

std::map<std::string, double> PinnedHueRegistry::all()
{
    std::lock_guard lock(g_hueLock);
    return g_hues;
}

std::optional<double> PinnedHueRegistry::hueOf(const std::string& title)
{
    std::lock_guard lock(g_hueLock);
    auto found = g_hues.find(title);
    return found == g_hues.end() ? std::nullopt : std::optional(found->second);
}

void PinnedHueRegistry::replace(std::map<std::string, double> hues)
{
    std::lock_guard lock(g_hueLock);
    g_hues = std::move(hues);
}
