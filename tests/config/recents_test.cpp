#include "config/config_file.h"
#include "config/recents.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

namespace {

class RecentsTest : public ::testing::Test {
protected:
    void SetUp() override { fileWriteAtomic(recentsPath(), ""); }
    std::string text() const { return fileReadAll(recentsPath()).value_or("<missing>"); }
    void note(const std::string& path, int64_t count = 8)
    {
        BrondelSettings settings;
        settings.recentCount = count;
        recentsNote(path, settings);
    }

    TempTree m_tree;
};

TEST_F(RecentsTest, NotesMostRecentFirstWithinTheCount)
{
    std::vector<std::string> dirs;
    for (const char* name : {"a", "b", "c", "d", "e"})
        dirs.push_back(m_tree.dir(name));
    note(dirs[0]);
    note(dirs[0]);
    EXPECT_EQ(text(), dirs[0]);
    for (const std::string& dir : dirs)
        note(dir, 3);
    EXPECT_EQ(text(), dirs[4] + "\n" + dirs[3] + "\n" + dirs[2]);
    note(dirs[2] + "/", 3); // a different entry
    EXPECT_EQ(recentsLoad(), (std::vector<std::string>{dirs[2] + "/", dirs[4], dirs[3]}));
    note(dirs[1], 0);
    EXPECT_EQ(text(), "");
}

TEST_F(RecentsTest, APathWithALineBreakIsNotNoted)
{
    const std::string plain = m_tree.dir("plain"), broken = m_tree.dir("two\nlines");
    note(plain);
    note(broken); // it would read back as two bogus paths
    EXPECT_EQ(text(), plain);
    EXPECT_EQ(recentsLoad(), std::vector<std::string>{plain});
}

TEST_F(RecentsTest, VanishedAndBlankLinesDropOut)
{
    std::string kept = m_tree.dir("kept"), gone = m_tree.path("gone");
    fileWriteAtomic(recentsPath(), gone + "\n\n" + kept + "\n " + kept + "\n");
    EXPECT_EQ(recentsLoad(), std::vector<std::string>{kept});
    note(kept);
    EXPECT_EQ(text(), kept);
}

TEST_F(RecentsTest, ClearEmptiesTheListAndCreatesNoFolder)
{
    std::string dir = m_tree.dir("x");
    note(dir);
    recentsClear();
    EXPECT_EQ(text(), "");
    note(dir);
    EXPECT_EQ(text(), dir);

    const std::string missing = m_tree.path("nohome");
    ::setenv("HOME", missing.c_str(), 1);
    recentsClear();
    EXPECT_FALSE(configExists(missing));
    ::setenv("HOME", testHome().c_str(), 1);
}

} // namespace
