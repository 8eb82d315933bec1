#include "app/cli_info.h"

#include "fs/fmt.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

namespace {

TEST(CLIInfo, UsageMissingPathAndBinary)
{
    CliOut usage, missing;
    CLIInfo::run({}, usage);
    EXPECT_EQ(usage.text(), "Usage: brondel info <path>\n");
    CLIInfo::run({"/nope"}, missing);
    EXPECT_EQ(missing.text(), "  Name:     nope\n"
                              "  Path:     /nope\n"
                              "  Kind:     unknown\n"
                              "  Size:     0 B\n"
                              "  Perms:    0\n");
    std::string out, err;
    EXPECT_EQ(testRun(testBrondel() + " info /nope", &out, &err), 0);
    EXPECT_EQ(out, missing.text());
    EXPECT_EQ(err, "");
}

TEST(CLIInfo, FileBlockEndsWithItsDates)
{
    TempTree tree;
    tree.sized("big.dat", 1536);
    tree.chmod("big.dat", 0640);
    tree.setMtime("big.dat", 1700000000);
    CliOut out;
    EXPECT_EQ(CLIInfo::run({tree.path("big.dat"), "ignored"}, out), 0);
    const std::string& text = out.text();
    std::string head = "  Name:     big.dat\n"
                       "  Path:     " + tree.path("big.dat") + "\n"
                       "  Kind:     application/octet-stream\n"
                       "  Size:     1.5 KB\n"
                       "  Perms:    640\n";
    EXPECT_EQ(text.substr(0, head.size()), head);
    std::string modified = "  Modified: " + dateFmt(1700000000) + "\n";
    ASSERT_GE(text.size(), modified.size());
    EXPECT_EQ(text.substr(text.size() - modified.size()), modified); // always the last line
}

} // namespace
