#include "config/config_file.h"
#include "config/config_file_fixture.h"
#include "config/config_paths.h"
#include "config/palette.h"
#include "config/pinned_nodes.h"
#include "config/recents.h"

namespace {

// The default palette (written at ~/.brondel/palette.toml on first use) colours them.
class PinnedNodesTest : public ConfigFileTest {
protected:
    PinnedNodesTest() : ConfigFileTest("BRONDEL_PINNED", "pinned.toml") { fileWriteAtomic(recentsPath(), ""); }
};

TEST_F(PinnedNodesTest, HeadersCarryExistingEntriesThenRecent)
{
    std::string a = m_tree.dir("a"), b = m_tree.dir("b"), r = m_tree.dir("r");
    pinnedWrite("# h\n", {{"Work", {a, m_tree.path("gone"), configAbbreviateHome(b) + "/"}, std::nullopt},
                          {"", {a}, 0.2},
                          {"Play", {}, 0.58}});
    BrondelSettings settings;
    settings.recentTitle = "Lately";
    recentsNote(r, settings);

    std::vector<DirNodePtr> headers = pinnedNodes(settings);
    ASSERT_EQ(headers.size(), 3u);
    const DirNode& work = *headers[0];
    EXPECT_EQ(work.name + " " + work.path, "Work pinned:/Work");
    EXPECT_TRUE(work.isSectionHeader && work.childrenLoaded && !work.isDir && !work.isPinned);
    EXPECT_EQ(work.hue, 0.08); // 0.58 is taken by Play's own colour
    ASSERT_EQ(work.children.size(), 2u);
    const DirNode& entry = *work.children[1];
    EXPECT_EQ(entry.name + " " + entry.path, "b " + b + "/"); // expanded, as stored
    EXPECT_TRUE(entry.isDir && entry.isPinned && !entry.childrenLoaded && !entry.isSectionHeader);
    EXPECT_EQ(entry.kind, "Folder");
    EXPECT_EQ(entry.hue, 0.08);

    EXPECT_EQ(headers[1]->name, "Play");
    EXPECT_TRUE(headers[1]->children.empty());

    const DirNode& recent = *headers[2];
    EXPECT_EQ(recent.name + " " + recent.path, "Lately pinned://Recent");
    const double recentHue = paletteHueForTitle("Lately", pinnedPalette());
    EXPECT_EQ(recent.hue, recentHue);
    ASSERT_EQ(recent.children.size(), 1u);
    EXPECT_EQ(recent.children[0]->name, "r");
    EXPECT_FALSE(recent.children[0]->isPinned);

    EXPECT_EQ(PinnedHueRegistry::all(),
              (std::map<std::string, double>{{"Work", 0.08}, {"Play", 0.58}, {"Lately", recentHue}}));

    settings.showRecent = false;
    EXPECT_EQ(pinnedNodes(settings).size(), 2u);
    EXPECT_EQ(PinnedHueRegistry::hueOf("Lately"), std::nullopt);
    pinnedWrite("", {});
    EXPECT_TRUE(pinnedNodes(settings).empty());
    EXPECT_TRUE(PinnedHueRegistry::all().empty());
}

} // namespace
