#include "config/config_file.h"
#include "config/config_file_fixture.h"
#include "config/sidebar_file.h"

namespace {

class SidebarFileTest : public ConfigFileTest {
protected:
    SidebarFileTest() : ConfigFileTest("BRONDEL_SIDEBAR", "side/sidebar.toml") {}
};

const char* const kDefaultFile = "# Brondel sidebar \u2014 top section. Edit here or right-click sidebar rows / folders.\n"
                                 "title = \"Favorites\"\n"
                                 "paths = [\n  \"~\",\n  \"~/Desktop\",\n  \"~/Documents\",\n  \"~/Downloads\",\n]\n";

TEST_F(SidebarFileTest, FirstReadWritesTheDefaults)
{
    EXPECT_EQ(sidebarRead(), sidebarDefaults());
    EXPECT_EQ(text(), kDefaultFile);
}

TEST_F(SidebarFileTest, ReadsHandEditedLinesLeniently)
{
    EXPECT_EQ(sidebarParse("title = Places\n\"~/Music\", \"~/Movies\"\n# \"/no\"\n\"/a#b\"\n\"/open\n\"/dup\"\n\"/dup\""),
              (SidebarFile{"Favorites", {"~/Music", "~/Movies", "/a#b", "/dup", "/dup"}}));
    EXPECT_EQ(sidebarParse("title = \"Top\"\r\n  \"/x\",\r\n").title, "Top");
    EXPECT_EQ(sidebarParse(""), (SidebarFile{"Favorites", {}}));
}

TEST_F(SidebarFileTest, UnreadableFileGivesNoPathsAndIsNotReplaced)
{
    fileWriteAtomic(m_path, "title = \"T\"\n\"/a\"\n\xff\n");
    EXPECT_EQ(sidebarRead(), (SidebarFile{"T", {"/a"}})); // path bytes are kept
    m_tree.dir("side/sidebar.toml.d");
    ::setenv("BRONDEL_SIDEBAR", m_tree.path("side/sidebar.toml.d").c_str(), 1);
    EXPECT_EQ(sidebarRead(), (SidebarFile{"Favorites", {}}));
}

TEST_F(SidebarFileTest, EditsCompareExpandedPaths)
{
    EXPECT_FALSE(sidebarAdd(m_home + "/Desktop"));
    EXPECT_TRUE(sidebarAdd(m_home + "/Music"));
    EXPECT_TRUE(sidebarAdd("/srv/share"));
    EXPECT_FALSE(sidebarAdd(m_home)); // stored as "~"
    const std::string before = text();
    sidebarShift(m_home, -1);
    sidebarShift("/srv/share", +1);
    sidebarShift("/absent", 1);
    EXPECT_FALSE(sidebarRemove("/absent"));
    EXPECT_EQ(text(), before);

    sidebarShift(m_home + "/Music", -1);
    sidebarRename("Places");
    EXPECT_EQ(sidebarRead(),
              (SidebarFile{"Places", {"~", "~/Desktop", "~/Documents", "~/Music", "~/Downloads", "/srv/share"}}));

    sidebarWrite("T", {"~/x", m_home + "/x", "/y"}); // a hand-made duplicate
    EXPECT_TRUE(sidebarRemove(m_home + "/x"));
    EXPECT_EQ(sidebarRead(), (SidebarFile{"T", {"/y"}}));
    sidebarWrite("T", {});
    EXPECT_FALSE(sidebarRemove("/y"));
    EXPECT_TRUE(sidebarAdd(m_home + "/x"));
    EXPECT_EQ(sidebarRead().paths, std::vector<std::string>{"~/x"});
}

} // namespace

TEST_F(SidebarFileTest, PathsThatCannotBeStoredAreRefused)
{
    sidebarRead();
    configNoticesTake();
    const std::string before = text();
    const std::string quoted = m_tree.dir("say \"hi\""), broken = m_tree.dir("a\nb");
    EXPECT_FALSE(sidebarAdd(quoted));
    EXPECT_FALSE(sidebarAdd(broken));
    sidebarRename("Top \"one\"");
    EXPECT_EQ(text(), before);
    EXPECT_EQ(configNoticesTake(),
        (std::vector<std::string>{
            "\u201c" + quoted + "\u201d was not added to the sidebar: its path holds a double quote, which sidebar.toml cannot store.",
            "\u201c" + broken + "\u201d was not added to the sidebar: its path holds a line break, which sidebar.toml cannot store.",
            "The sidebar title \u201cTop \"one\"\u201d holds a double quote, which sidebar.toml cannot store; the sidebar was left as it is.",
        }));
    EXPECT_FALSE(sidebarLossy(before));
    EXPECT_TRUE(sidebarLossy("title = \"T\"\n\"/a\n"));
    EXPECT_TRUE(sidebarLossy("title = T\n"));
    EXPECT_TRUE(sidebarLossy("paths = [\n ~/Music,\n]\n"));
}
