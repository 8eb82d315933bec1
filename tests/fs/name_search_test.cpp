// The window's search: the same entries as `brondel search`, handed over folder by
// folder while the walk goes on, and a walk that stops when told to.

#include "app/cli_router.h"
#include "fs/name_search.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace {

// The paths `brondel search` prints, one per line after the type and size columns.
std::set<std::string> cliPaths(const std::string& root, const std::string& query)
{
    CliOut out;
    CLIRouter::run({"search", root, query}, out);
    std::set<std::string> paths;
    std::istringstream lines(out.text());
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("dir ", 0) == 0 || line.rfind("file", 0) == 0)
            paths.insert(line.substr(line.find('/')));
    return paths;
}

} // namespace

TEST(NameSearch, FindsWhatTheCommandLineFindsThroughLinkLoops)
{
    TempTree tree;
    tree.sized("bin/zqj-tool", 10);
    tree.symlink("bin/ZQJ11", ".");
    tree.dir("share/zqjdoc/deeper");
    tree.file("share/zqjdoc/deeper/notes-zqj.txt");
    tree.symlink("share/loop", "..");
    tree.symlink("share/zqj-bin", "../bin");
    tree.dir("zqj-root-level");
    for (int threads : {1, 2}) {
        std::set<std::string> found;
        size_t calls = 0;
        const size_t matches = nameSearchRun(tree.root(), "ZQJ", BrondelSettings{}, {threads, nullptr},
            [&](std::vector<NameSearchHit> hits) {
                ++calls;
                for (const auto& hit : hits)
                    EXPECT_TRUE(found.insert(hit.path).second) << hit.path; // each once
            });
        EXPECT_EQ(found, cliPaths(tree.root(), "zqj"));
        EXPECT_EQ(matches, found.size());
        EXPECT_EQ(found.size(), 8u);
        EXPECT_GT(calls, 1u); // folder by folder, not at the end
    }
}

TEST(NameSearch, StopsAtTheNextFolderWhenCancelled)
{
    TempTree tree;
    for (int i = 0; i < 40; ++i)
        tree.file("f" + std::to_string(i) + "/match-" + std::to_string(i));
    std::atomic<bool> cancel{false};
    size_t calls = 0;
    nameSearchRun(tree.root(), "match", BrondelSettings{}, {1, &cancel}, [&](std::vector<NameSearchHit> hits) {
        EXPECT_EQ(hits.size(), 1u);
        if (++calls == 3)
            cancel = true;
    });
    EXPECT_EQ(calls, 3u);

    cancel = true; // set before the walk: nothing is read, not even the root
    EXPECT_EQ(nameSearchRun(tree.root(), "match", BrondelSettings{}, {2, &cancel}, [](auto) { FAIL(); }), 0u);
}
