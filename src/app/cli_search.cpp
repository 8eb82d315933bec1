#include "app/cli_search.h"

#include "app/cli_keep.h"
#include "config/settings_file.h"
#include "fs/fmt.h"
#include "fs/paths.h"
#include "fs/scanner.h"

namespace {
constexpr int64_t kSearchDepth = 64;
constexpr size_t kSizeColumn = 10;
}

int CLISearch::run(const Args& args, CliOut& out)
{
    if (args.size() < 2) {
        out.line("Usage: brondel search <path> <query>");
        return 0;
    }
    const std::string& typedPath = args[0];
    const std::string& query = args[1];
    const NameFilter filter(query);
    Scanner scanner(Settings::current());
    if (cliPlainScan()) {
        scanner.setThreads(1);
    } else {
        scanner.setSearchFilter(&filter); // keep only what is printed
    }
    DirNodePtr root = scanner.scan(expandTilde(typedPath), kSearchDepth);
    cliKeepUntilExit(root);
    std::vector<DirNodePtr> matches;
    filterWalk(root, filter, matches);
    if (matches.empty()) {
        out.line("No matches for '" + query + "' in " + typedPath);
        return 0;
    }
    std::string line;
    for (const auto& node : matches) {
        line.clear();
        line += node->isDir ? "dir " : "file";
        line += "  ";
        std::string size = fmtHuman(node->size);
        if (size.size() > kSizeColumn)
            size.resize(kSizeColumn);
        fmtAppendPadded(line, size, kSizeColumn);
        line += "  ";
        line += node->path;
        out.line(line);
    }
    out.line("\n" + std::to_string(matches.size()) + " match(es)");
    return 0;
}
