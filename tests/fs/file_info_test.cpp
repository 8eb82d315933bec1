#include "fs/file_info.h"

#include "support/temp_tree.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(FileInfo, KindSizeAndPermissions)
{
    TempTree tree;
    tree.file("notes.txt", "hello\n");
    tree.setMtime("notes.txt", 1700000000);
    tree.chmod("notes.txt", 0600);
    tree.dir("sticky");
    tree.chmod("sticky", 01777);
    tree.file("locked.txt", "x");
    tree.chmod("locked.txt", 0);
    tree.symlink("to-notes", "notes.txt");
    tree.symlink("dangling", "nowhere");
    tree.file("pic\xff", std::string("\x89PNG\r\n\x1a\n", 8)); // a name Qt cannot decode
    tree.chmod("pic\xff", 0644);
    const struct {
        std::string path, kind;
        int64_t size;
        const char* perms;
    } cases[] = {
        {"notes.txt", "text/plain", 6, "600"}, // relative to the working directory
        {tree.path("sticky") + "/", "inode/directory", 0, "1777"},
        {tree.path("locked.txt"), "text/plain", 1, "0"},
        {tree.path("to-notes"), "text/plain", 6, "777"}, // data of the target, bits of the link
        {tree.path("dangling"), "unknown", 0, "777"},
        {tree.path("pic\xff"), "image/png", 8, "644"},
        {"/nope", "unknown", 0, "0"},
    };
    char before[4096];
    ASSERT_TRUE(::getcwd(before, sizeof before));
    ASSERT_EQ(::chdir(tree.root().c_str()), 0);
    EXPECT_EQ(FileInfo::gather("notes.txt").modified, 1700000000);
    for (const auto& c : cases) {
        FileInfo info = FileInfo::gather(c.path);
        EXPECT_EQ(info.path, c.path);
        EXPECT_EQ(info.kind, c.kind) << c.path;
        EXPECT_EQ(info.size, c.size) << c.path;
        EXPECT_EQ(info.permissions, c.perms) << c.path;
        EXPECT_EQ(info.modified.has_value(), c.kind != "unknown") << c.path;
    }
    ASSERT_EQ(::chdir(before), 0);
    EXPECT_EQ(FileInfo::gather(tree.path("sticky") + "/").name, "sticky");
    EXPECT_EQ(FileInfo::gather(tree.path("pic\xff")).name, "pic\xff");
}

} // namespace
