#include "sizes/folder_size_walk.h"

#include "fs/sys_calls.h"
#include "support/hang_fs.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <cstring>
#include <dirent.h>
#include <sstream>

namespace {

// The reference: find's own lengths of everything that is not a folder.
int64_t findTotal(const std::string& dir)
{
    std::string out;
    testRun("find -H '" + dir + "' -xdev ! -type d -printf '%s\\n'", &out);
    std::istringstream lines(out);
    int64_t total = 0, size = 0;
    while (lines >> size)
        total += size;
    return total;
}

bool canOpen(const std::string& dir)
{
    DIR* d = ::opendir(dir.c_str());
    if (d)
        ::closedir(d);
    return d != nullptr;
}

const std::string kBadName = "caf\xe9 \xff\xfe";

// Links, hard links, hidden and non-UTF-8 names, empty folders and a locked folder.
struct MixedTree {
    TempTree tree;
    int64_t expected = 0; // with the locked folder unreadable
    static constexpr int64_t kLocked = 1000;

    MixedTree()
    {
        tree.sized("a/big.bin", 1 << 20);
        tree.file("a/small.txt", "hello");
        tree.hardlink("b/again.bin", "a/big.bin");
        tree.file(".hidden/x", "12345");
        tree.file(kBadName + "/" + kBadName, "abc");
        tree.dir("empty/e1/e2");
        const std::string fileTarget = tree.path("a/big.bin");
        tree.symlink("a/to-big", fileTarget);
        tree.symlink("a/to-folder", "../b");
        tree.symlink("dangling", "nowhere/at/all");
        tree.sized("locked/inside.bin", kLocked);
        tree.chmod("locked", 0);
        expected = 2 * (1 << 20) + 5 + 5 + 3 + int64_t(fileTarget.size()) + 4 + 14;
    }
};

// Entries named `name` fail to open with EACCES; everything else is real.
const char* g_lockedName = "";
int openatLocked(int dirfd, const char* path, int flags, mode_t mode)
{
    if (std::strcmp(path, g_lockedName) == 0) {
        errno = EACCES;
        return -1;
    }
    return sysCallsReal().openat(dirfd, path, flags, mode);
}

// Entries named `name` report the status of `g_impostor` (another device, an ancestor).
const char* g_statName = "";
struct stat g_impostor;
int fstatatImpostor(int dirfd, const char* path, struct stat* st, int flags)
{
    int rc = sysCallsReal().fstatat(dirfd, path, st, flags);
    if (rc == 0 && std::strcmp(path, g_statName) == 0) {
        st->st_dev = g_impostor.st_dev;
        st->st_ino = g_impostor.st_ino;
    }
    return rc;
}

} // namespace

TEST(FolderSizeWalk, AgreesWithFindOnOneAndTwoThreads)
{
    MixedTree t;
    const bool lockedReadable = canOpen(t.tree.path("locked")); // root reads it anyway
    const int64_t want = t.expected + (lockedReadable ? MixedTree::kLocked : 0);
    EXPECT_EQ(findTotal(t.tree.root()), want);
    for (int threads : {1, 2})
        EXPECT_EQ(folderSizeWalk(t.tree.root(), threads), want) << threads << " threads";
}

TEST(FolderSizeWalk, SkipsAFolderThatCannotBeOpened)
{
    MixedTree t;
    SysCalls calls = sysCallsReal();
    calls.openat = openatLocked;
    g_lockedName = "locked";
    SysCallsOverride override(calls);
    EXPECT_EQ(folderSizeWalk(t.tree.root(), 2), t.expected);
}

TEST(FolderSizeWalk, StaysOnTheRootsDeviceAndOutOfLoops)
{
    TempTree t;
    t.sized("keep.bin", 100);
    t.sized("inner/other/far.bin", 7000);
    SysCalls calls = sysCallsReal();
    calls.fstatat = fstatatImpostor;
    g_statName = "other";
    SysCallsOverride override(calls);

    ASSERT_EQ(::stat(t.root().c_str(), &g_impostor), 0);
    g_impostor.st_dev += 1; // a volume mounted at inner/other
    EXPECT_EQ(folderSizeWalk(t.root(), 2), 100);

    ASSERT_EQ(::stat(t.root().c_str(), &g_impostor), 0); // the root bound again at inner/other
    EXPECT_EQ(folderSizeWalk(t.root(), 2), 100);
}

TEST(FolderSizeWalk, RootsOfEveryKind)
{
    TempTree t;
    t.sized("dir/one", 300);
    t.dir("only-empty/a/b");
    const std::string toDir = t.symlink("to-dir", t.path("dir"));
    std::string deep = "deep";
    for (int i = 0; i < 200; ++i) // more levels than a walk would want descriptors for
        deep += "/d";
    t.sized(deep + "/bottom", 42);

    EXPECT_EQ(folderSizeWalk(toDir, 2), 300); // a linked root is measured through the link
    EXPECT_EQ(folderSizeWalk(t.path("only-empty"), 2), 0);
    EXPECT_EQ(folderSizeWalk(t.path("dir/one"), 2), 300);
    EXPECT_EQ(folderSizeWalk(t.path("missing"), 2), 0);
    EXPECT_EQ(folderSizeWalk(t.path("deep"), 2), 42);
    const std::vector<std::string> roots = {t.path("deep"), t.path("missing"), toDir, t.path("dir/one"), t.root()};
    const auto totals = folderSizeWalkAll(roots, 2);
    ASSERT_EQ(totals.size(), roots.size());
    for (size_t i = 0; i < roots.size(); ++i)
        EXPECT_EQ(totals[i], folderSizeWalk(roots[i], 1)) << roots[i];
}

TEST(FolderSizeWalk, AHungDriveMountedBelowIsNeverTouched)
{
    // The walk of a folder holding a dead drive's mount point must not stat that mount
    // point (the stat would block for as long as the drive does).
    const std::string outer = testHome() + "/outer";
    HangFs fs(outer + "/Hung");
    HANGFS_REQUIRE(fs);
    {
        std::FILE* f = std::fopen((outer + "/file.bin").c_str(), "w");
        std::fputs("0123456789", f);
        std::fclose(f);
    }
    fs.hang();
    auto walk = std::async(std::launch::async, [&] { return folderSizeWalk(outer, 1); });
    const bool finished = walk.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    fs.release(); // lets a walk that did block end, so the test can finish either way
    EXPECT_TRUE(finished);
    EXPECT_EQ(walk.get(), 10);
    // A walk of the drive itself, while it hangs, gives 0 at once instead of blocking.
    fs.hang();
    auto inside = std::async(std::launch::async, [&] { return folderSizeWalk(fs.mountPoint(), 1); });
    const bool insideFinished = inside.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    fs.release();
    EXPECT_TRUE(insideFinished);
    EXPECT_EQ(inside.get(), 0);
}
