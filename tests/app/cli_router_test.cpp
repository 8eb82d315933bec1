#include "app/cli_router.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>


namespace {

struct Outcome {
    std::optional<int> status;
    std::string out;
};

Outcome route(const Args& args)
{
    CliOut out;
    auto status = CLIRouter::run(args, out);
    return {status, out.text()};
}

// The built binary, so that stdout, stderr and exit statuses are the real ones.
Outcome exec(const std::string& args, std::string* err)
{
    std::string out;
    int status = testRun("'" + testBrondel() + "' " + args, &out, err);
    return {status, out};
}

} // namespace

TEST(CliRouter, DispatchesOnlyExactCommandWords)
{
    EXPECT_FALSE(route({}).status);
    EXPECT_FALSE(route({"List"}).status);
    EXPECT_FALSE(route({"/tmp"}).status);
    EXPECT_FALSE(route({"--slow"}).status);
    Outcome help = route({"-h"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.size(), 666u); // 665 bytes of text and the newline
    EXPECT_EQ(help.out, route({"--help", "ignored"}).out);
    EXPECT_TRUE(help.out.starts_with("brondel \u2014 native file manager\nUsage: brondel [command] [args...]\n"));
    EXPECT_NE(help.out.find("\n  card <key> set <f> <v>  Change one card option"), std::string::npos);
    EXPECT_TRUE(help.out.ends_with("  <path>...            Open GUI (no command)\n"));
}

TEST(CliRouter, ListPrintsAlignedColumns)
{
    TempTree tree;
    tree.sized("Folder/inner/c", 3);
    tree.sized("b\u00e9ta.txt", 1536);
    tree.file("a", "x");
    Outcome r = route({"list", tree.root()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "dir   3 B     Folder    \n"
                     "file  1 B     a         \n"
                     "file  1.5 KB  b\u00e9ta.txt  \n");
    for (const std::string& bad : {tree.path("missing"), tree.path("a"), std::string("~/x")})
        EXPECT_EQ(route({"list", bad}).out, "Empty or not a directory: " + bad + "\n");
}

TEST(CliRouter, SearchMatchesTheRootAndPrintsTheCount)
{
    TempTree tree;
    tree.sized("Sub/report.TXT", 2048);
    tree.file("other");
    EXPECT_EQ(route({"search", "/tmp"}).out, "Usage: brondel search <path> <query>\n");
    EXPECT_EQ(route({"search", tree.root(), "ZZZ"}).out, "No matches for 'ZZZ' in " + tree.root() + "\n");
    Outcome r = route({"search", tree.root(), "REPORT"});
    EXPECT_EQ(r.out, "file  2.0 KB      " + tree.root() + "/Sub/report.TXT\n\n1 match(es)\n");
    std::string rootName = tree.root().substr(tree.root().rfind('/') + 1);
    Outcome self = route({"search", tree.root(), rootName.substr(0, 6)});
    EXPECT_EQ(self.out, "dir   0 B         " + tree.root() + "\n\n1 match(es)\n");
}

TEST(CliRouter, TheBinaryExitsZeroAndNeverWritesToStderr)
{
    TempTree tree;
    tree.file("x\xff.txt");
    for (const std::string& args : {std::string("--help"), "list " + tree.root(), "list '" + tree.path("nope") + "'",
                                    "search " + tree.root() + " x", std::string("search"), std::string("list ~/definitely-missing")}) {
        std::string err;
        Outcome r = exec(args, &err);
        EXPECT_EQ(r.status, 0) << args;
        EXPECT_EQ(err, "") << args;
        EXPECT_FALSE(r.out.empty()) << args;
    }
    std::string err;
    Outcome r = exec("search " + tree.root() + " \"$(printf '\\377')\"", &err);
    EXPECT_NE(r.out.find("/x\xff.txt\n"), std::string::npos); // the bytes come back unchanged
}
