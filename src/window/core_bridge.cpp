#include "window/core_bridge.h"

#include "fs/file_io.h"
#include "fs/paths.h"

#include <unistd.h>

#include <sys/stat.h>

namespace {

bool exists(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

std::string hostName()
{
    char buf[256] = {};
    if (::gethostname(buf, sizeof buf - 1) == 0 && buf[0])
        return buf;
    return "Computer";
}

} // namespace

DirNodePtr bridgeComputerRoot()
{
    auto root = DirNode::make();
    root->name = hostName();
    root->path = "/";
    root->isDir = true;
    root->childrenLoaded = true;
    auto home = DirNode::make();
    home->name = "Home";
    home->path = homeDir();
    home->isDir = true;
    root->children.push_back(home);
    for (const auto& drive : bridgeDrives()) {
        auto node = DirNode::make();
        node->name = drive.name;
        node->path = drive.path;
        node->isDir = true;
        root->children.push_back(node);
    }
    return root;
}

std::vector<DirNodePtr> bridgePinnedNodes()
{
    return {};
}

void bridgeRecentsNote(const std::string&)
{
}

void bridgeSizesForget(const std::string&)
{
}

BridgeSidebar bridgeSidebarRead()
{
    BridgeSidebar sidebar{"Favorites", {}};
    for (const char* stored : {"~", "~/Desktop", "~/Documents", "~/Downloads"}) {
        std::string path = expandTilde(stored);
        if (exists(path))
            sidebar.paths.push_back(path);
    }
    return sidebar;
}

std::vector<BridgeDrive> bridgeDrives()
{
    return {};
}

InfoChangedHub& InfoChangedHub::instance()
{
    static InfoChangedHub* hub = new InfoChangedHub;
    return *hub;
}

InfoChangedHub::InfoChangedHub() = default;
