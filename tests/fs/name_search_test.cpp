// The window's search: the same entries as `brondel search`, handed over folder by
// folder while the walk goes on, and a walk that stops when told to.

#include "app/cli_router.h"
#include "fs/name_search.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

TEST(NameSearch, FindsWhatTheCommandLineFindsThroughLinkLoops)
{
    TempTree tree;
    tree.sized("bin/zqj-tool", 10);
    tree.symlink("bin/ZQJ11", ".");
    tree.file("share/zqjdoc/deeper/notes-zqj.txt");
    tree.symlink("share/loop", "..");
    tree.symlink("share/zqj-bin", "../bin");
    tree.dir("zqj-root-level");
    CliOut out;
    CLIRouter::run({"search", tree.root(), "zqj"}, out);
    std::multiset<std::string> printed; // the path ends each line
    std::istringstream lines(out.text());
    for (std::string line; std::getline(lines, line);)
        if (line.find('/') != std::string::npos)
            printed.insert(line.substr(line.find('/')));
    ASSERT_EQ(printed.size(), 8u);
    for (int threads : {1, 2}) {
        std::multiset<std::string> found;
        size_t calls = 0;
        const size_t matches = nameSearchRun(tree.root(), "ZQJ", BrondelSettings{}, {threads, nullptr},
            [&](std::vector<NameSearchHit> hits) {
                ++calls;
                for (const auto& hit : hits)
                    found.insert(hit.path);
            });
        EXPECT_EQ(found, printed); // each once, the loops gone through once
        EXPECT_EQ(matches, found.size());
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
    nameSearchRun(tree.root(), "match", BrondelSettings{}, {1, &cancel}, [&](std::vector<NameSearchHit>) {
        if (++calls == 3)
            cancel = true;
    });
    EXPECT_EQ(calls, 3u);
    // Set before the walk: nothing is read, not even the first folder.
    EXPECT_EQ(nameSearchRun(tree.root(), "match", BrondelSettings{}, {2, &cancel}, [](auto) { FAIL(); }), 0u);
}
