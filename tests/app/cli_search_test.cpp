#include "app/cli_router.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

std::string search(const std::string& path, const std::string& query)
{
    CliOut out;
    CLIRouter::run({"search", path, query}, out);
    return out.text();
}

} // namespace

// A link back to its own folder (as /usr/bin/X11 is) or to a parent is printed once and
// not gone through; the plain single-threaded walk prints the same.
TEST(CliSearch, LinksBackUpArePrintedOnceAndNotFollowed)
{
    TempTree tree;
    tree.sized("bin/zqj-tool", 10);
    tree.symlink("bin/ZQJ11", ".");
    tree.dir("share/zqjdoc");
    tree.symlink("share/loop", "..");
    tree.symlink("share/zqj-bin", "../bin"); // a sibling: gone through
    const std::string r = tree.root();
    const std::string expected = "dir   0 B         " + r + "/bin/ZQJ11\n"
                                 "file  10 B        " + r + "/bin/zqj-tool\n"
                                 "dir   0 B         " + r + "/share/zqj-bin\n"
                                 "dir   0 B         " + r + "/share/zqj-bin/ZQJ11\n"
                                 "file  10 B        " + r + "/share/zqj-bin/zqj-tool\n"
                                 "dir   0 B         " + r + "/share/zqjdoc\n"
                                 "\n6 match(es)\n";
    EXPECT_EQ(search(r, "zqj"), expected);
    ::setenv("BRONDEL_SCAN_THREADS", "1", 1);
    EXPECT_EQ(search(r, "zqj"), expected);
    ::unsetenv("BRONDEL_SCAN_THREADS");
}
