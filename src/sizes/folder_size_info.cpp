// A folder's total size, from the folder size cache. Drives are left to Drive Space on
// purpose, so showing a drive never starts a walk of the whole volume.

#include "fs/fmt.h"
#include "fs/mount_watchdog.h"
#include "fs/volume.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_module.h"

namespace {

bool measured(const DirNode& node)
{
    return node.isDir && !node.isSectionHeader && node.path != "/" && !driveSpace(node.path);
}

} // namespace

class FolderSizeInfo : public InfoModule {
public:
    std::string key() const override { return "folder-size"; }
    std::string title() const override { return "Folder Sizes"; }

    std::optional<std::string> text(const DirNode& node) const override
    {
        if (!measured(node))
            return std::nullopt;
        if (mountWatchdogIsStuckPath(node.path))
            return std::string(kNotRespondingText);
        auto size = FolderSizes::shared().size(node.path);
        return size ? fmtHuman(*size) : "\u2026";
    }

    // On the command line the folders of a listing are measured together, so that the
    // threads of one walk share all of them.
    void prepare(const std::vector<DirNodePtr>& nodes) const override
    {
        FolderSizes& sizes = FolderSizes::shared();
        if (sizes.mode() != SizeMode::Synchronous)
            return;
        std::vector<std::string> paths;
        for (const auto& node : nodes)
            if (measured(*node))
                paths.push_back(node->path);
        sizes.measure(paths);
    }
};

BRONDEL_REGISTER(InfoModule, FolderSizeInfo)
