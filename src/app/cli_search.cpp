#include "app/cli_search.h"

#include "app/cli_keep.h"
#include "config/settings_file.h"
#include "fs/fmt.h"
#include "fs/name_search.h"
#include "fs/paths.h"
#include "fs/scanner.h"

namespace {
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
    NodeStorePtr store = scanner.scanStore(expandTilde(typedPath), kNameSearchDepth);
    cliKeepUntilExit(store);
    // Pre-order, root first, the path built up in one buffer as the walk goes down.
    size_t matches = 0;
    std::string path = store->rootPath();
    std::string line;
    auto print = [&](const NodeRecord& record) {
        ++matches;
        line.clear();
        line += record.isDir() ? "dir " : "file";
        line += "  ";
        std::string size = fmtHuman(nodeMeta(record) & kMetaKnown ? record.size : 0);
        if (size.size() > kSizeColumn)
            size.resize(kSizeColumn);
        fmtAppendPadded(line, size, kSizeColumn);
        line += "  ";
        line += path;
        out.line(line);
    };
    auto walk = [&](const NodeRecord& record, auto& self) -> void {
        if (filter.matches(record.nameView()))
            print(record);
        const size_t base = path.size();
        const bool slash = record.parent || store->rootPath() != "/";
        for (uint32_t i = 0; i < record.childCount; ++i) {
            const NodeRecord& child = record.children[i];
            if (slash)
                path.push_back('/');
            path.append(child.name, child.nameLength);
            self(child, self);
            path.resize(base);
        }
    };
    walk(store->root(), walk);
    if (!matches) {
        out.line("No matches for '" + query + "' in " + typedPath);
        return 0;
    }
    out.line("\n" + std::to_string(matches) + " match(es)");
    return 0;
}
