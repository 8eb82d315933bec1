#include "fs/volume.h"

#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdio>

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
