#include "app/cli_list.h"

#include "app/cli_keep.h"
#include "config/settings_file.h"
#include "fs/fmt.h"
#include "fs/scanner.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_module.h"

#include <algorithm>

namespace {

// One DirNode refilled for each row, for the info modules (which read DirNodes): a
// listing of a million entries then makes no node per entry.
void rowFill(DirNode& row, const NodeRecord& record, const std::string& folder)
{
    row.name.assign(record.name, record.nameLength);
    row.path.assign(folder);
    if (folder != "/")
        row.path.push_back('/');
    row.path.append(row.name);
    row.isDir = record.isDir();
    const uint8_t meta = nodeMeta(record);
    row.size = meta & kMetaKnown ? record.size : 0;
    row.dateModified.reset();
    if (meta & kMetaHasDate)
        row.dateModified = record.date;
    row.kind.assign(nodeKindText(record));
}

} // namespace

int CLIList::run(const Args& args, CliOut& out)
{
    const std::string path = args.empty() ? "." : args[0]; // not tilde-expanded
    const BrondelSettings& settings = Settings::current();
    Scanner scanner(settings);
    if (cliPlainScan())
        scanner.setThreads(1);
    NodeStorePtr store = scanner.scanStore(path, 1);
    cliKeepUntilExit(store);
    // A command-line run waits for folder sizes instead of leaving them to the background.
    FolderSizes::shared().setMode(SizeMode::Synchronous);
    const NodeRecord& root = store->root();
    if (root.childCount == 0) {
        out.line("Empty or not a directory: " + path);
        return 0;
    }
    const auto modules = InfoModules::enabled(settings);
    // The modules may work out the folders' answers together (the files' come from the
    // entries alone).
    std::vector<DirNodePtr> folders;
    for (uint32_t i = 0; i < root.childCount; ++i)
        if (root.children[i].isDir())
            folders.push_back(DirNode::make()), rowFill(*folders.back(), root.children[i], path);
    for (const InfoModule* module : modules)
        module->prepare(folders);

    // The info texts, packed one after another: the widths need them all before the first line.
    std::string infos;
    std::vector<uint32_t> infoEnds(root.childCount);
    size_t nameWidth = 0, infoWidth = 0;
    DirNode row;
    for (uint32_t i = 0; i < root.childCount; ++i) {
        const NodeRecord& record = root.children[i];
        rowFill(row, record, path);
        nameWidth = std::max(nameWidth, fmtDisplayLength(row.name));
        const size_t start = infos.size();
        if (auto info = infoLine(row, modules))
            infos += *info;
        else
            infos += "--";
        infoWidth = std::max(infoWidth, fmtDisplayLength(std::string_view(infos).substr(start)));
        infoEnds[i] = uint32_t(infos.size());
    }
    std::string line;
    uint32_t start = 0;
    for (uint32_t i = 0; i < root.childCount; ++i) {
        const NodeRecord& record = root.children[i];
        line.clear();
        line += record.isDir() ? "dir " : "file";
        line += "  ";
        fmtAppendPadded(line, std::string_view(infos).substr(start, infoEnds[i] - start), infoWidth);
        start = infoEnds[i];
        line += "  ";
        fmtAppendPadded(line, record.nameView(), nameWidth + 2);
        out.line(line);
    }
    return 0;
}
