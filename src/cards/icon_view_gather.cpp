// The I/O half of the icon view's sections: what buildSections needs, read now.

#include "cards/card_sections.h"
#include "cards/downloads.h"
#include "config/pinned_nodes.h"
#include "fs/computer_root.h"
#include "fs/scanner.h"
#include "fs/volume_list.h"

#include <ctime>

IconViewInput iconViewGather(const std::string& path, const std::string& name, std::vector<DirNodePtr> items,
                             const BrondelSettings& settings)
{
    IconViewInput in;
    in.path = path;
    in.name = name;
    in.items = std::move(items);
    in.hostName = ComputerRoot::hostName();
    in.settings = settings;
    in.now = int64_t(std::time(nullptr));
    if (iconViewAtRoot(in) && settings.showDownloads) {
        const std::vector<Volume> volumes = VolumeList::mounted();
        const Scanner scanner(settings);
        for (const std::string& folder : downloadsFolders(volumes))
            in.downloads.push_back({folder, downloadsTitle(folder, volumes), scanner.scan(folder, 1)->children});
    }
    in.favorites = pinnedNodes(settings);
    return in;
}
