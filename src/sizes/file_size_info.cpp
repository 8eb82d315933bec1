// A file's own size.

#include "fs/fmt.h"
#include "sizes/info_module.h"

class FileSizeInfo : public InfoModule {
public:
    std::string key() const override { return "file-size"; }
    std::string title() const override { return "File Sizes"; }
    std::optional<std::string> text(const DirNode& node) const override
    {
        if (node.isDir)
            return std::nullopt;
        return fmtHuman(node.size);
    }
};

BRONDEL_REGISTER(InfoModule, FileSizeInfo)
