#include "fs/trash_list.h"

#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/trash_op.h"
#include "fs/trash_op_linux.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Every test starts from an empty home trash (the test home is shared by the process).
void emptyHomeTrash() { trashEraseAll(trashListAll({}), {}); }

const TrashItem* findByOriginal(const std::vector<TrashItem>& items, const std::string& original)
{
    auto it = std::find_if(items.begin(), items.end(), [&](const TrashItem& i) { return i.originalPath == original; });
    return it == items.end() ? nullptr : &*it;
}

std::string trashed(const std::string& path)
{
    TrashOp::Outcome outcome = TrashOp::trash(path);
    EXPECT_TRUE(outcome) << path << ": " << TrashOp::describe(outcome.error);
    return outcome ? outcome.result->trashedTo : std::string();
}

bool exists(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

} // namespace

TEST(TrashList, RecordsParse)
{
    struct Case {
        const char* text;
        bool valid;
        const char* path;
        const char* date;
    } cases[] = {
        {"[Trash Info]\nPath=/home/u/a.txt\nDeletionDate=2024-03-01T10:20:30\n", true, "/home/u/a.txt",
         "2024-03-01T10:20:30"},
        {"[Trash Info]\r\nPath=/a%20b/%C3%A9t%C3%A9%25\r\nDeletionDate=2024-03-01T10:20:30\r\n", true, "/a b/été%",
         "2024-03-01T10:20:30"},
        {"[Trash Info]\nPath=/raw%ff%zz%4\n", true, "/raw\xff%zz%4", ""},
        {"# comment\n[Trash Info]\nDeletionDate=2024-03-01T10:20:30\nPath=docs/x\n", true, "docs/x",
         "2024-03-01T10:20:30"},
        {"[Other]\nPath=/elsewhere\n[Trash Info]\nPath=/here\n", true, "/here", ""},
        {"Path=/no/group\n", false, "", ""},
        {"[Trash Info]\nDeletionDate=2024-03-01T10:20:30\n", false, "", ""},
        {"[Trash Info]\nPath=\n", false, "", ""},
        {"", false, "", ""},
    };
    for (const Case& c : cases) {
        std::optional<TrashInfoRecord> record = trashInfoParse(c.text);
        ASSERT_EQ(record.has_value(), c.valid) << c.text;
        if (!record)
            continue;
        EXPECT_EQ(record->path, c.path) << c.text;
        EXPECT_EQ(record->deletionDate, c.date) << c.text;
    }
}

TEST(TrashList, DatesAndDirectorySizes)
{
    // Local time, as written: the same wall-clock fields come back.
    std::optional<std::time_t> t = trashDateParse("2024-03-01T10:20:30");
    ASSERT_TRUE(t);
    struct tm local;
    ::localtime_r(&*t, &local);
    EXPECT_EQ(local.tm_year, 124);
    EXPECT_EQ(local.tm_mon, 2);
    EXPECT_EQ(local.tm_hour, 10);
    EXPECT_EQ(local.tm_sec, 30);
    for (const char* bad : {"", "2024-03-01", "2024-13-01T10:20:30", "2024-03-01T25:00:00", "2024-03-01T10:20:30Z",
             "yesterday"})
        EXPECT_FALSE(trashDateParse(bad)) << bad;

    const std::string sizes = "4096 1700000000 keep\n"
                              "100 1700000001 gone%20one\n"
                              "malformed\n"
                              "7 1700000002 also\n";
    EXPECT_EQ(trashDirectorySizesWithout(sizes, {"gone one"}), "4096 1700000000 keep\n7 1700000002 also\n");
    EXPECT_EQ(trashDirectorySizesWithout(sizes, {"keep", "also", "gone one"}), "");
}

TEST(TrashList, HomeAndVolumeTrashesAreListedTogether)
{
    emptyHomeTrash();
    TempTree tree;
    const std::string a = tree.file("docs/a b.txt", "12345");
    const std::string folder = tree.dir("docs/folder");
    tree.file("docs/folder/inner", "x");
    trashed(a);
    trashed(folder);

    // A volume's private trash, with a relative Path= and a record whose item is gone.
    const std::string top = tree.dir("volume");
    const std::string own = top + "/.Trash-" + std::to_string(::getuid());
    tree.file("volume/.Trash-" + std::to_string(::getuid()) + "/files/photo.png", "png");
    tree.file("volume/.Trash-" + std::to_string(::getuid()) + "/info/photo.png.trashinfo",
        "[Trash Info]\nPath=pics/photo.png\nDeletionDate=2024-05-06T07:08:09\n");
    tree.file("volume/.Trash-" + std::to_string(::getuid()) + "/info/lost.trashinfo",
        "[Trash Info]\nPath=lost\nDeletionDate=2024-05-06T07:08:09\n");
    // The shared .Trash counts only as a sticky folder.
    tree.file("volume/.Trash/" + std::to_string(::getuid()) + "/files/shared.txt", "s");
    tree.file("volume/.Trash/" + std::to_string(::getuid()) + "/info/shared.txt.trashinfo",
        "[Trash Info]\nPath=shared.txt\nDeletionDate=2024-05-06T07:08:09\n");

    std::vector<TrashItem> items = trashListAll({top});
    ASSERT_EQ(items.size(), 3u);
    const TrashItem* file = findByOriginal(items, a);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->trashDir, trashHomeDir());
    EXPECT_FALSE(file->folder);
    EXPECT_EQ(file->size, 5);
    EXPECT_TRUE(file->deleted);
    const TrashItem* dir = findByOriginal(items, folder);
    ASSERT_TRUE(dir);
    EXPECT_TRUE(dir->folder);
    const TrashItem* photo = findByOriginal(items, top + "/pics/photo.png");
    ASSERT_TRUE(photo);
    EXPECT_EQ(photo->trashDir, own);
    EXPECT_EQ(photo->deletionDate, "2024-05-06T07:08:09");
    EXPECT_FALSE(findByOriginal(items, top + "/shared.txt"));
    EXPECT_TRUE(trashHasItems({top}));

    tree.chmod("volume/.Trash", 01777);
    items = trashListAll({top});
    EXPECT_EQ(items.size(), 4u);
    EXPECT_TRUE(findByOriginal(items, top + "/shared.txt"));
}

TEST(TrashList, RestoreRefusesToReplaceAndPutsBackUnderAFreeName)
{
    emptyHomeTrash();
    TempTree tree;
    const std::string a = tree.file("work/report.pdf", "old");
    trashed(a);
    tree.file("work/report.pdf", "new one in its place");
    std::vector<TrashItem> items = trashListAll({});
    ASSERT_EQ(items.size(), 1u);

    EXPECT_EQ(trashRestore(items[0], a), EEXIST);
    EXPECT_EQ(fileReadAll(a).value_or(""), "new one in its place");
    EXPECT_TRUE(exists(items[0].filesPath()));
    EXPECT_TRUE(exists(items[0].infoPath()));

    tree.file("work/report 2.pdf", "taken too");
    const std::string free = trashRestoreFreeName(a, exists);
    EXPECT_EQ(free, tree.path("work/report 3.pdf"));
    EXPECT_EQ(trashRestore(items[0], free), 0);
    EXPECT_EQ(fileReadAll(free).value_or(""), "old");
    EXPECT_FALSE(exists(items[0].infoPath()));
    EXPECT_TRUE(trashListAll({}).empty());

    // A folder that went away meanwhile is made again.
    const std::string deep = tree.file("gone/deeper/x.txt", "x");
    trashed(deep);
    ::rmdir(tree.path("gone/deeper").c_str());
    items = trashListAll({});
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(trashRestore(items[0], items[0].originalPath), 0);
    EXPECT_EQ(fileReadAll(deep).value_or(""), "x");

    const struct {
        const char* target;
        const char* free;
    } names[] = {{"/d/archive.tar", "/d/archive 2.tar"}, {"/d/.hidden", "/d/.hidden 2"}, {"/d/plain", "/d/plain 2"}};
    for (const auto& n : names)
        EXPECT_EQ(trashRestoreFreeName(n.target, [](const std::string&) { return false; }), n.free);
}

TEST(TrashList, EraseAndEmptyRemoveEverythingWithTheirSizesLines)
{
    emptyHomeTrash();
    TempTree tree;
    tree.file("e/folder/locked/inner.txt", "x");
    tree.chmod("e/folder/locked", 0500); // erasing must still get inside
    trashed(tree.path("e/folder"));
    trashed(tree.file("e/one.txt", "1"));
    trashed(tree.file("e/two.txt", "2"));
    const std::string sizes = trashHomeDir() + "/directorysizes";
    ASSERT_TRUE(fileWriteAtomic(sizes, "10 1700000000 folder\n20 1700000000 other\n"));

    std::vector<TrashItem> items = trashListAll({});
    ASSERT_EQ(items.size(), 3u);
    const TrashItem* folder = findByOriginal(items, tree.path("e/folder"));
    ASSERT_TRUE(folder);
    EXPECT_EQ(trashErase(*folder), 0);
    EXPECT_FALSE(exists(folder->filesPath()));
    EXPECT_FALSE(exists(folder->infoPath()));
    EXPECT_EQ(fileReadAll(sizes).value_or(""), "20 1700000000 other\n");

    items = trashListAll({});
    ASSERT_EQ(items.size(), 2u);
    std::vector<std::pair<size_t, size_t>> steps;
    std::atomic<bool> stop{false};
    EXPECT_EQ(trashEraseAll(items, [&](size_t done, size_t total) { steps.emplace_back(done, total); }, &stop), 2u);
    EXPECT_EQ(steps, (std::vector<std::pair<size_t, size_t>>{{1, 2}, {2, 2}}));
    EXPECT_TRUE(trashListAll({}).empty());
    EXPECT_FALSE(trashHasItems({}));

    // A stop asked before the start erases nothing.
    trashed(tree.file("e/three.txt", "3"));
    stop = true;
    EXPECT_EQ(trashEraseAll(trashListAll({}), {}, &stop), 0u);
    EXPECT_EQ(trashListAll({}).size(), 1u);
}

TEST(TrashList, AgreesWithTrashList)
{
    if (testRun("command -v trash-list >/dev/null") != 0)
        GTEST_SKIP() << "trash-list is not installed";
    emptyHomeTrash();
    TempTree tree;
    for (const char* name : {"plain.txt", "with space.txt", "été.txt", "100%.txt", "folder"})
        trashed(std::string(name) == "folder" ? tree.dir(name) : tree.file(name, "x"));

    std::set<std::string> ours;
    for (const TrashItem& item : trashListAll({})) {
        std::string date = item.deletionDate;
        std::replace(date.begin(), date.end(), 'T', ' ');
        ours.insert(date + " " + item.originalPath);
    }
    std::string out;
    ASSERT_EQ(testRun("trash-list", &out), 0);
    std::set<std::string> theirs;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);)
        if (line.find(testHome()) != std::string::npos) // not the machine's other trashes
            theirs.insert(line);
    EXPECT_EQ(ours.size(), 5u);
    EXPECT_EQ(ours, theirs);
}
