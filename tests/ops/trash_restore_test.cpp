// Reading where a trashed item came from, in the home trash and in a volume's.

#include "ops/trash_restore.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(TrashRestore, RecordPathValues)
{
    struct Case {
        const char* text;
        const char* expected; // nullptr: no usable path
    };
    const Case cases[] = {
        {"[Trash Info]\nPath=/home/u/a.txt\nDeletionDate=2024-01-01T00:00:00\n", "/home/u/a.txt"},
        {"[Trash Info]\r\nPath=/a%20b/%C3%A9%FF\r\n", "/a b/\xc3\xa9\xff"},
        {"[Trash Info]\nDeletionDate=2024-01-01T00:00:00\nPath=docs/x\n", "docs/x"},
        {"[Other]\nPath=/wrong\n[Trash Info]\nPath=/right\n", "/right"},
        {"[Other]\nPath=/wrong\n", nullptr},
        {"[Trash Info]\nPath=/bad%2\n", nullptr},
        {"[Trash Info]\nPath=/bad%zz\n", nullptr},
        {"[Trash Info]\nPath=/nul%00x\n", nullptr},
        {"[Trash Info]\nPath=\n", nullptr},
        {"", nullptr},
    };
    for (const Case& c : cases) {
        std::optional<std::string> path = trashInfoOriginal(c.text);
        if (c.expected) {
            ASSERT_TRUE(path) << c.text;
            EXPECT_EQ(*path, c.expected) << c.text;
        } else {
            EXPECT_FALSE(path) << c.text << " gave " << path.value_or("");
        }
    }
}

TEST(TrashRestore, EntriesOfHomeAndVolumeTrashes)
{
    TempTree tree;
    struct Case {
        const char* trash;    // relative to the tree
        const char* pathValue;
        std::string expected; // relative to the tree, or absolute when it starts with '/'
    };
    const Case cases[] = {
        {"home/Trash", "/somewhere/else.txt", "/somewhere/else.txt"},
        {"vol/.Trash-1000", "docs/x.txt", "vol/docs/x.txt"},
        {"vol2/.Trash/1000", "docs/y.txt", "vol2/docs/y.txt"},
    };
    for (const Case& c : cases) {
        const std::string trash = std::string(c.trash);
        tree.file(trash + "/files/item", "data");
        tree.file(trash + "/info/item.trashinfo", std::string("[Trash Info]\nPath=") + c.pathValue + "\n");
        TrashEntry entry;
        ASSERT_EQ(trashEntryOf(tree.path(trash + "/files/item"), entry), 0) << c.trash;
        EXPECT_EQ(entry.original, c.expected[0] == '/' ? c.expected : tree.path(c.expected)) << c.trash;
        EXPECT_EQ(entry.infoPath, tree.path(trash + "/info/item.trashinfo"));
    }
    TrashEntry entry;
    EXPECT_EQ(trashEntryOf(tree.file("loose/item"), entry), EINVAL); // not inside files/
    EXPECT_EQ(trashEntryOf(tree.file("t/files/norecord"), entry), ENOENT);
}
