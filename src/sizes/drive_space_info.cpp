// A drive's free and used space, for the folder that is a volume's root.

#include "fs/fmt.h"
#include "fs/volume.h"
#include "sizes/info_module.h"

namespace {

// A volume's root is always a folder: files are never asked about, so a long listing of
// files costs no file-system statistics at all.
std::optional<Volume> volumeOf(const DirNode& node)
{
    if (!node.isDir)
        return std::nullopt;
    return driveSpace(node.path);
}

} // namespace

class DriveSpaceInfo : public InfoModule {
public:
    std::string key() const override { return "drive-space"; }
    std::string title() const override { return "Drive Space"; }

    std::optional<std::string> text(const DirNode& node) const override
    {
        auto volume = volumeOf(node);
        if (!volume)
            return std::nullopt;
        if (!volume->responding)
            return std::string(kNotRespondingText);
        return fmtHuman(volume->freeBytes) + " free of " + fmtHuman(volume->totalBytes);
    }

    std::optional<double> fraction(const DirNode& node) const override
    {
        auto volume = volumeOf(node);
        if (!volume || !volume->responding)
            return std::nullopt;
        if (volume->totalBytes < 1)
            return 0.0; // pseudo file systems report no blocks at all
        return double(volume->usedBytes()) / double(volume->totalBytes);
    }

    std::optional<std::pair<std::string, std::string>> pair(const DirNode& node) const override
    {
        auto volume = volumeOf(node);
        if (!volume || !volume->responding)
            return std::nullopt;
        return std::pair{fmtHuman(volume->usedBytes()) + " used", fmtHuman(volume->freeBytes)};
    }
};

BRONDEL_REGISTER(InfoModule, DriveSpaceInfo)
