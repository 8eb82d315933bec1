#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <dirent.h>
#include <optional>
#include <sys/stat.h>
#include <ctime>

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

TEST(FileIo, OnlyRegularFilesWithinTheCapAreRead)
{
    TempTree tree;
    ASSERT_EQ(::mkfifo(tree.path("fifo").c_str(), 0644), 0);
    struct Case {
        std::string path;
        int error;
    } cases[] = {
        {tree.path("fifo"), EINVAL}, // would wait for a writer forever
        {tree.symlink("zero", "/dev/zero"), EINVAL}, // endless: would exhaust memory
        {tree.dir("folder"), EINVAL},
        {tree.sized("big", int64_t(kFileReadCap) + 1), EFBIG},
        {tree.path("absent"), ENOENT},
    };
    for (const Case& c : cases) {
        FileContent content = fileReadWhole(c.path);
        EXPECT_FALSE(content.bytes) << c.path;
        EXPECT_EQ(content.error, c.error) << c.path;
        EXPECT_EQ(fileReadAll(c.path), std::nullopt) << c.path;
    }
    EXPECT_EQ(fileReadAll(tree.sized("at-cap", int64_t(kFileReadCap)))->size(), kFileReadCap);
}

TEST(FileIo, WritesThroughALinkAndKeepsTheMode)
{
    TempTree tree;
    const std::string target = tree.file("dotfiles/settings.toml", "old\n");
    tree.chmod("dotfiles/settings.toml", 0600);
    tree.dir("home");
    const std::string link = tree.symlink("home/settings.toml", "../dotfiles/settings.toml");
    ASSERT_TRUE(fileWriteAtomic(link, "new\n"));

    struct stat st;
    ASSERT_EQ(::lstat(link.c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << "the link was replaced by a file";
    EXPECT_EQ(fileReadAll(target), "new\n");
    ASSERT_EQ(::stat(target.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    EXPECT_EQ(entriesIn(tree.path("home")), 1u);
    EXPECT_EQ(entriesIn(tree.path("dotfiles")), 1u);

    // A new file gets the usual mode (0666 less the umask), never more.
    const mode_t mask = ::umask(022);
    ASSERT_TRUE(fileWriteAtomic(tree.path("fresh.toml"), "x"));
    ::umask(mask);
    ASSERT_EQ(::stat(tree.path("fresh.toml").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u);

    // A link whose target does not exist yet: the target is created.
    const std::string dangling = tree.symlink("home/new.toml", tree.path("dotfiles/new.toml"));
    ASSERT_TRUE(fileWriteAtomic(dangling, "x"));
    EXPECT_EQ(fileReadAll(tree.path("dotfiles/new.toml")), "x");

    // Something that is not a regular file is never replaced.
    ASSERT_EQ(::mkfifo(tree.path("fifo").c_str(), 0644), 0);
    EXPECT_FALSE(fileWriteAtomic(tree.path("fifo"), "x"));
    ASSERT_EQ(::lstat(tree.path("fifo").c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
}

TEST(FileIo, StaleTemporariesOfKilledWritersAreSwept)
{
    TempTree tree;
    const std::string dead = "999999999"; // above any pid_max: no such process
    const std::string self = std::to_string(::getpid());
    const std::string deadTemp = tree.file("settings.toml.tmp-" + dead + "-3-12345", "torn");
    const std::string liveTemp = tree.file("settings.toml.tmp-" + self + "-0-77", "in flight");
    const std::string oldTemp = tree.file("pinned.toml.tmp-" + self + "-1-78", "abandoned");
    tree.setMtime("pinned.toml.tmp-" + self + "-1-78", ::time(nullptr) - 3600);
    const std::string foreign[] = {
        tree.file("notes.tmp-draft", "mine"),
        tree.file("x.tmp-" + dead + "-1", "not our pattern"),
        tree.file("y.tmp-" + dead + "-1-2-3", "not our pattern"),
        tree.file("report.txt", "mine"),
    };
    ASSERT_TRUE(fileWriteAtomic(tree.path("settings.toml"), "fresh\n"));

    EXPECT_FALSE(fileReadAll(deadTemp)) << "a dead writer's temporary stays";
    EXPECT_FALSE(fileReadAll(oldTemp)) << "an abandoned temporary stays";
    EXPECT_TRUE(fileReadAll(liveTemp)) << "a live writer's temporary went";
    for (const std::string& path : foreign)
        EXPECT_TRUE(fileReadAll(path)) << path;

    const std::pair<const char*, std::optional<pid_t>> names[] = {
        {"a.tmp-12-0-5", 12}, {".brondel.tmp-7-1-2", 7}, {"a.tmp-12-0", std::nullopt},
        {"a.tmp-x-0-5", std::nullopt}, {"a.tmp--0-5", std::nullopt}, {"a.tmp-0-0-5", std::nullopt},
        {"a.tmp-12-0-5-", std::nullopt}, {"a.tmp-12-0-5x", std::nullopt},
    };
    for (const auto& [name, writer] : names)
        EXPECT_EQ(fileTempWriter(name), writer) << name;
}
