#include "config/sidebar_section.h"

#include "config/config_file.h"
#include "fs/file_io.h"
#include "fs/paths.h"

SidebarSection sidebarSection(const std::string& title, const std::vector<std::string>& paths)
{
    SidebarSection section{title, {}};
    for (const std::string& stored : paths) {
        std::string path = expandTilde(stored);
        if (configExists(path))
            section.items.push_back({pathLastComponent(path), path});
    }
    return section;
}
