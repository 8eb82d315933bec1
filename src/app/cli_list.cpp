#include "app/cli_list.h"

#include "app/cli_keep.h"
#include "config/settings_file.h"
#include "fs/fmt.h"
#include "fs/scanner.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_module.h"

#include <algorithm>

int CLIList::run(const Args& args, CliOut& out)
{
    const std::string path = args.empty() ? "." : args[0]; // not tilde-expanded
    const BrondelSettings& settings = Settings::current();
    Scanner scanner(settings);
    if (cliPlainScan())
        scanner.setThreads(1);
    DirNodePtr root = scanner.scan(path, 1);
    // A command-line run waits for folder sizes instead of leaving them to the background.
    FolderSizes::shared().setMode(SizeMode::Synchronous);
    if (root->children.empty()) {
        out.line("Empty or not a directory: " + path);
        return 0;
    }
    cliKeepUntilExit(root);
    const auto& children = root->children;
    const auto modules = InfoModules::enabled(settings);
    for (const InfoModule* module : modules)
        module->prepare(children);
    std::vector<std::string> infos;
    infos.reserve(children.size());
    size_t nameWidth = 0, infoWidth = 0;
    for (const auto& child : children) {
        nameWidth = std::max(nameWidth, fmtDisplayLength(child->name));
        std::string info = child->isSectionHeader ? "--" : infoLine(*child, modules).value_or("--");
        infoWidth = std::max(infoWidth, fmtDisplayLength(info));
        infos.push_back(std::move(info));
    }
    std::string line;
    for (size_t i = 0; i < children.size(); ++i) {
        line.clear();
        line += children[i]->isDir ? "dir " : "file";
        line += "  ";
        fmtAppendPadded(line, infos[i], infoWidth);
        line += "  ";
        fmtAppendPadded(line, children[i]->name, nameWidth + 2);
        out.line(line);
    }
    return 0;
}
