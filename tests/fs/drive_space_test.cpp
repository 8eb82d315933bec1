#include "fs/volume.h"

#include "support/hang_fs.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <thread>

TEST(DriveSpace, OnlyAMountRootIsADrive)
{
    TempTree tree;
    const std::string folder = tree.dir("folder");
    const std::string link = tree.symlink("root-link", "/");

    const std::optional<Volume> root = driveSpace("/");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, "/");
    EXPECT_EQ(root->path, "/");
    EXPECT_GT(root->totalBytes, 0);
    EXPECT_GE(root->totalBytes, root->freeBytes);

    EXPECT_FALSE(driveSpace(folder));
    EXPECT_FALSE(driveSpace(tree.path("missing")));

    const std::optional<Volume> viaLink = driveSpace(link);
    ASSERT_TRUE(viaLink);
    EXPECT_EQ(viaLink->name, "root-link");
    EXPECT_EQ(viaLink->path, link);
    EXPECT_EQ(viaLink->totalBytes, root->totalBytes);
}

TEST(DriveSpace, RepeatedQuestionIsAnsweredFromTheCache)
{
    TempTree tree;
    tree.dir("folder");
    const std::string link = tree.symlink("drive", "/");
    ASSERT_TRUE(driveSpace(link));

    // The link now points at a plain folder: the disk changed, the answer did not.
    tree.symlink("next", tree.path("folder"));
    ASSERT_EQ(std::rename(tree.path("next").c_str(), link.c_str()), 0);
    EXPECT_FALSE(driveSpaceRead(link));
    EXPECT_TRUE(driveSpace(link));
}

TEST(DriveSpace, AHungDriveIsNotRespondingAtOnceAndComesBack)
{
    HangFs fs(testHome() + "/drives/Hung", "statfs");
    HANGFS_REQUIRE(fs);
    fs.hang();
    const auto start = std::chrono::steady_clock::now();
    const std::optional<Volume> first = driveSpace(fs.mountPoint());
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->responding);
    EXPECT_EQ(first->name, "Hung");
    const std::optional<Volume> again = driveSpace(fs.mountPoint()); // not cached, but remembered
    ASSERT_TRUE(again);
    EXPECT_FALSE(again->responding);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3)); // one deadline, not two
    EXPECT_FALSE(driveSpace(fs.mountPoint() + "/a")); // a folder on it is no drive either way

    fs.release();
    std::optional<Volume> back;
    for (int i = 0; i < 250 && !(back && back->responding); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        back = driveSpace(fs.mountPoint());
    }
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->responding);
    EXPECT_EQ(back->totalBytes, 4096000);
    EXPECT_EQ(back->freeBytes, 1024000);
}
