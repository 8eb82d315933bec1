#include "config/user_defaults.h"
#include "fs/file_io.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(UserDefaults, StoresStringsAndLeavesSpecialFilesAlone)
{
    const std::string path = userDefaultsPath();
    ASSERT_TRUE(fileMakeDirs(pathParent(path)));
    ::unlink(path.c_str());
    userDefaultsSetString("brondel.peekStyle", "Grid");
    EXPECT_EQ(userDefaultsString("brondel.peekStyle"), std::optional<std::string>("Grid"));

    // A FIFO in its place would block forever; it reads as empty and is not replaced.
    ASSERT_EQ(::unlink(path.c_str()), 0);
    ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0);
    EXPECT_EQ(userDefaultsString("brondel.peekStyle"), std::nullopt);
    userDefaultsSetString("brondel.peekStyle", "Strip");
    struct stat st;
    ASSERT_EQ(::lstat(path.c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    ::unlink(path.c_str());
}
