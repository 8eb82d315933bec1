#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <dirent.h>
#include <optional>

namespace {

int g_writeFailures = 0; // writes that fail before the real call goes through
int g_failErrno = 0;

ssize_t flakyWrite(int fd, const void* buf, size_t count)
{
    if (g_writeFailures > 0) {
        --g_writeFailures;
        errno = g_failErrno;
        return -1;
    }
    return sysCallsReal().write(fd, buf, count < 3 ? count : 3); // short writes too
}

int failingRename(const char*, const char*)
{
    errno = EXDEV;
    return -1;
}

size_t entriesIn(const std::string& dir)
{
    size_t n = 0;
    DIR* d = ::opendir(dir.c_str());
    while (auto* e = ::readdir(d))
        n += e->d_name[0] != '.';
    ::closedir(d);
    return n;
}

// Writes that fail `failures` times with `error`, then go through three bytes at a time.
struct FlakyWrites {
    SysCalls calls = sysCallsReal();
    std::optional<SysCallsOverride> seam;
    FlakyWrites(int failures, int error)
    {
        calls.write = flakyWrite;
        seam.emplace(calls);
        g_writeFailures = failures;
        g_failErrno = error;
    }
};

} // namespace

TEST(FileIo, AtomicWriteSurvivesInterruptionsAndShortWrites)
{
    TempTree tree;
    std::string path = tree.path("a/b/file.toml");
    FlakyWrites flaky(2, EINTR);
    ASSERT_TRUE(fileWriteAtomic(path, "hello world\n"));
    EXPECT_EQ(fileReadAll(path), "hello world\n");
    EXPECT_EQ(entriesIn(tree.path("a/b")), 1u);
}

TEST(FileIo, FailedWriteKeepsTheOldFileAndLeavesNoTemporary)
{
    TempTree tree;
    std::string path = tree.file("keep.toml", "old\n");
    FlakyWrites flaky(1, ENOSPC);
    EXPECT_FALSE(fileWriteAtomic(path, "new content\n"));
    EXPECT_EQ(fileReadAll(path), "old\n");
    EXPECT_EQ(entriesIn(tree.root()), 1u);

    SysCalls calls = sysCallsReal();
    calls.rename = failingRename;
    SysCallsOverride renameFails(calls);
    EXPECT_FALSE(fileWriteAtomic(path, "new content\n"));
    EXPECT_EQ(fileReadAll(path), "old\n");
    EXPECT_EQ(entriesIn(tree.root()), 1u);
}

TEST(FileIo, PathPieces)
{
    struct Case {
        const char *path, *parent, *last;
    } cases[] = {
        {"/a/b", "/a", "b"}, {"/a/b/", "/a", "b"}, {"/a", "/", "a"}, {"/", "/", "/"},
        {"a", "", "a"},      {"a/b", "a", "b"},    {"/tmp//x", "/tmp/", "x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(pathParent(c.path), c.parent) << c.path;
        EXPECT_EQ(pathLastComponent(c.path), c.last) << c.path;
    }
}
