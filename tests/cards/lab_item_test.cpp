#include "cards/lab_item.h"
#include "fs/volume.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

namespace {

LabItem folder(int64_t count)
{
    LabItem item;
    item.isDir = true;
    item.count = count;
    return item;
}

LabItem file(int64_t bytes)
{
    LabItem item;
    item.bytes = bytes;
    return item;
}

LabItem drive(int64_t used, int64_t capacity)
{
    LabItem item;
    item.isDir = true;
    item.bytes = used;
    item.capacity = capacity;
    item.count = 5;
    return item;
}

std::vector<std::string> names(const std::vector<LabItem>& items)
{
    std::vector<std::string> out;
    for (const LabItem& item : items)
        out.push_back(item.name);
    return out;
}

} // namespace

TEST(LabItem, MetadataLine)
{
    const int64_t gb = int64_t(1) << 30;
    struct Case {
        LabItem item;
        const char* text;
    } cases[] = {
        {drive(88 * gb, 100 * gb), "12.0 GB free of 100.0 GB"},
        {drive(0, 1), "1 B free of 1 B"},           // the smallest drive is still a drive
        {drive(2048, 0), "5 items"},                // no capacity: a folder, not a drive
        {file(0), "0 B"},
        {file(1536), "1.5 KB"},
        {folder(0), "0 items"},
        {folder(1), "1 item"},
        {folder(12), "12 items"},
        {folder(-1), "0 items"},                    // unreadable
        {folder(-40), "0 items"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(labMeta(c.item), c.text) << c.text;
}

TEST(LabItem, ChildrenSkipHiddenSortAndCut)
{
    TempTree tree;
    for (const char* name : {"b.txt", "A", "c", ".hidden", ".config/x", "a.txt", "10", "9"})
        tree.file(std::string("root/") + name);
    tree.dir("empty");
    const std::string root = tree.path("root");

    struct Case {
        int64_t limit;
        std::vector<std::string> names;
    } cases[] = {
        {-1, {"9", "10", "A", "a.txt", "b.txt", "c"}},
        {3, {"9", "10", "A"}},
        {6, {"9", "10", "A", "a.txt", "b.txt", "c"}},
        {100, {"9", "10", "A", "a.txt", "b.txt", "c"}},
        {0, {}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> expected;
        for (const std::string& name : c.names)
            expected.push_back(root + "/" + name);
        EXPECT_EQ(labChildren(root, c.limit), expected) << c.limit;
        EXPECT_EQ(names(labChildItems(root, c.limit)), c.names) << c.limit;
        const LabListing listing = labList(root, c.limit);
        EXPECT_EQ(listing.names, c.names) << c.limit;
        EXPECT_EQ(listing.total, 6) << "hidden entries are never counted";
    }
    EXPECT_TRUE(labChildren(tree.path("empty"), -1).empty());
    EXPECT_TRUE(labChildren(tree.path("missing"), -1).empty());
    EXPECT_EQ(labList(tree.path("missing"), 5).total, 0);
}

TEST(LabItem, StatFillsCountKindAndGroup)
{
    TempTree tree;
    tree.file("one/.hidden");
    tree.file("one/only");
    tree.dir("none");
    for (int i = 0; i < 12; ++i)
        tree.file("twelve/f" + std::to_string(i));
    tree.file("twelve/.dot");
    tree.file("photo.png", "12345");
    tree.symlink("dangling", "nowhere");
    tree.symlink("linked", "twelve");
    tree.dir("locked");
    tree.chmod("locked", 0);

    struct Case {
        const char* name;
        bool isDir;
        int64_t count;
        int64_t bytes;
        const char* kind;
        const char* group;
        const char* meta;
    } cases[] = {
        {"one", true, 1, 0, "Folder", "Folders", "1 item"},
        {"none", true, 0, 0, "Folder", "Folders", "0 items"},
        {"twelve", true, 12, 0, "Folder", "Folders", "12 items"},
        {"linked", true, 12, 0, "Folder", "Folders", "12 items"},
        {"photo.png", false, 0, 5, "PNG file", "Images", "5 B"},
        {"dangling", false, 0, 0, "Alias", "Other", "0 B"},
    };
    for (const Case& c : cases) {
        const LabItem item = labStat(tree.path(c.name), c.name);
        EXPECT_EQ(item.name, c.name);
        EXPECT_EQ(item.path, tree.path(c.name));
        EXPECT_EQ(item.isDir, c.isDir) << c.name;
        EXPECT_EQ(item.count, c.count) << c.name;
        EXPECT_EQ(item.bytes, c.bytes) << c.name;
        EXPECT_EQ(item.kind, c.kind) << c.name;
        EXPECT_EQ(item.group, c.group) << c.name;
        EXPECT_EQ(item.capacity, 0) << c.name;
        EXPECT_TRUE(item.date.has_value()) << c.name;
        EXPECT_EQ(labMeta(item), c.meta) << c.name;
    }
    if (::geteuid() != 0) // root reads any folder
        EXPECT_EQ(labStat(tree.path("locked"), "locked").count, -1);
}

TEST(LabItem, OverviewIsHomeThenDrivesInOrder)
{
    TempTree tree;
    tree.file("home/a");
    tree.file("home/.b");
    const std::vector<Volume> volumes = {
        {"Stick", "/media/u/Stick", 1000, 250, true},
        {"Share", "/mnt/share", 0, 0, false},
    };
    const std::vector<LabItem> items = labDataOverview(tree.path("home"), volumes);
    ASSERT_EQ(names(items), (std::vector<std::string>{"Home", "Stick", "Share"}));
    EXPECT_EQ(items[0].path, tree.path("home"));
    EXPECT_EQ(items[0].count, 1);
    EXPECT_EQ(items[1].path, "/media/u/Stick");
    EXPECT_EQ(items[1].capacity, 1000);
    EXPECT_EQ(items[1].bytes, 750);
    EXPECT_EQ(labMeta(items[1]), "250 B free of 1000 B");
    EXPECT_TRUE(items[2].isDir);
    EXPECT_EQ(labMeta(items[2]), "0 items"); // a drive that did not answer has no capacity to show
}
