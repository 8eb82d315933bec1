// The kernel's notices of a folder: a change makes the descriptor readable and is read
// once; a path that is no folder gives no descriptor; a large folder is not asked for
// changes inside its entries, a small one is.

#include "fs/folder_notify_linux.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/inotify.h>

namespace {

bool readable(int fd, int ms)
{
    pollfd p{fd, POLLIN, 0};
    return ::poll(&p, 1, ms) == 1;
}

} // namespace

TEST(FolderNotify, AChangeIsNoticedOnceAndOnlyFoldersAreWatched)
{
    TempTree tree;
    const std::string dir = tree.dir("watched");
    const int fd = folderNotifyOpen(dir);
    ASSERT_GE(fd, 0);
    EXPECT_FALSE(folderNotifyDrain(fd)); // nothing yet
    tree.file("watched/new.txt", "x");
    ASSERT_TRUE(readable(fd, 5000));
    EXPECT_TRUE(folderNotifyDrain(fd));
    EXPECT_FALSE(folderNotifyDrain(fd)); // drained in one go
    sysClose(fd);

    EXPECT_EQ(folderNotifyOpen(tree.file("plain.txt")), -1);
    EXPECT_EQ(folderNotifyOpen(tree.path("missing")), -1);
}

TEST(FolderNotify, OnlySmallFoldersFollowChangesInsideTheirEntries)
{
    const uint32_t entries = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
    for (int64_t bytes : {int64_t(4096), int64_t(1) << 20, (int64_t(1) << 20) + 1, int64_t(40) << 20}) {
        const uint32_t mask = folderNotifyMask(bytes);
        EXPECT_EQ(mask & entries, entries) << bytes;
        const bool inside = (mask & (IN_ATTRIB | IN_CLOSE_WRITE)) == (IN_ATTRIB | IN_CLOSE_WRITE);
        EXPECT_EQ(inside, bytes <= (int64_t(1) << 20)) << bytes;
    }
}
