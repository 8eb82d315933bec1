#include "app/cli_trash.h"

#include "fs/file_io.h"
#include "fs/trash_op_linux.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

std::string trashText(const Args& args)
{
    CliOut out;
    EXPECT_EQ(CLITrash::run(args, out), 0);
    return out.text();
}

TEST(CLITrash, UsageAndError)
{
    EXPECT_EQ(trashText({}), "Usage: brondel trash <path>\n");
    EXPECT_EQ(trashText({"/nope"}), "Error: No such file or directory\n");
    ASSERT_TRUE(fileMakeDirs(trashHomeDir() + "/files"));
    EXPECT_EQ(trashText({trashHomeDir() + "/files"}), "Error: The item is in the Trash already\n");
}

TEST(CLITrash, RelativePathsAndClashingNames)
{
    TempTree tree;
    tree.file("one/draft.md");
    tree.file("two/draft.md");
    char before[4096];
    ASSERT_TRUE(::getcwd(before, sizeof before));
    ASSERT_EQ(::chdir(tree.root().c_str()), 0);
    std::string first = trashText({"one/draft.md"});
    std::string second = trashText({"two/draft.md"});
    ASSERT_EQ(::chdir(before), 0);
    const std::string files = trashHomeDir() + "/files/";
    EXPECT_EQ(first, "Trashed: one/draft.md\n     \u2192 " + files + "draft.md\n");
    EXPECT_EQ(second, "Trashed: two/draft.md\n     \u2192 " + files + "draft.md.2\n");
}

TEST(CLITrash, OtherClientsSeeWhatWasTrashed)
{
    TempTree tree;
    std::string file = tree.file("seen by others.txt");
    std::string out, err;
    EXPECT_EQ(testRun(testBrondel() + " trash '" + file + "'", &out, &err), 0);
    EXPECT_EQ(err, "");
    ASSERT_EQ(out.substr(0, 9), "Trashed: ");

    // Both tools read XDG_DATA_HOME, which the test main points into the test home.
    bool checked = false;
    if (testRun("command -v trash-list >/dev/null") == 0) {
        EXPECT_EQ(testRun("trash-list", &out, &err), 0);
        EXPECT_NE(out.find(" " + file + "\n"), std::string::npos) << out << err;
        checked = true;
    }
    if (testRun("command -v gio >/dev/null") == 0 && testRun("gio trash --list", &out, &err) == 0) {
        // Only with a running trash backend (gvfs); without one gio cannot list at all.
        EXPECT_NE(out.find("\t" + file + "\n"), std::string::npos) << out;
        checked = true;
    }
    if (!checked)
        GTEST_SKIP() << "no trash client to check against";
}

} // namespace
