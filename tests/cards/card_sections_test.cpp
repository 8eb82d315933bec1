#include "cards/card_catalog.h"
#include "cards/card_sections.h"
#include "cards/card_show_all.h"
#include "cards/downloads.h"

#include "config/pinned_file.h"
#include "fs/computer_root.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

DirNodePtr node(const std::string& name, std::optional<int64_t> date = std::nullopt, int64_t size = 0)
{
    auto n = DirNode::make();
    n->name = name;
    n->path = "/d/" + name;
    n->dateModified = date;
    n->size = size;
    return n;
}

DirNodePtr header(const std::string& name, double hue, std::vector<DirNodePtr> children)
{
    auto h = node(name);
    h->isSectionHeader = true;
    h->hue = hue;
    h->children = std::move(children);
    return h;
}

// One line per section: card, group, title, cardKey, and the flags that differ.
std::string describe(const std::vector<IconSec>& sections)
{
    std::string out;
    for (const IconSec& s : sections) {
        out += std::to_string(s.card) + "|" + s.group + "|" + s.title + "|" + s.cardKey.value_or("-") + "|"
            + s.family + "|" + std::to_string(s.nodes.size());
        for (auto [flag, name] : {std::pair{s.strip, "strip"}, {s.collapsible, "collapsible"},
                                  {s.collapsed, "collapsed"}, {s.thumbs, "thumbs"}, {s.list, "list"}})
            if (flag)
                out += std::string(" ") + name;
        if (s.pinned)
            out += " pinned=" + *s.pinned;
        if (s.topPad != 0)
            out += " top=" + std::to_string(int(s.topPad));
        out += "\n";
    }
    return out;
}

TEST(CardKey, LowersAndJoinsAlphanumericRuns)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Downloads", "downloads"},
        {"Downloads \u00b7 Backup Disk", "downloads-backup-disk"},
        {"  --!!  ", ""},
        {"\u00c9T\u00c9 2024", "\u00e9t\u00e9-2024"},
        {"cafe\u0301_x", "cafe\u0301-x"}, // a combining mark stays with its letter
        {"A\xff" "B", "a-b"},
    };
    for (auto [title, key] : cases)
        EXPECT_EQ(cardKey(title), key) << title;
}

TEST(CardSections, CollapsedCardIsOneSortedStrip)
{
    CardConfig config = CardConfig::defaults("files");
    config.sort = "name";
    config.ascending = true;
    config.iconSize = 64;
    CardCtx ctx{"downloads", "Downloads", {node("b"), node("a")}, 2, "files", true};
    auto sections = cardSectionsWith(ctx, config, BrondelSettings{}, 0);
    EXPECT_EQ(describe(sections), "2|Downloads||downloads|files|2 strip collapsible collapsed thumbs\n");
    EXPECT_EQ(sections[0].nodes[0]->name, "a");
    EXPECT_EQ(sections[0].iconSize, 64);

    // Not collapsible (the Drives card): the option does nothing.
    ctx.collapsible = false;
    config.group = "none";
    config.layout = "grid";
    EXPECT_EQ(describe(cardSectionsWith(ctx, config, BrondelSettings{}, 0)), "2|Downloads||downloads|files|2 thumbs\n");
}

TEST(CardSections, GroupsHiddenGroupsAndEmptyCards)
{
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const int64_t now = 1'700'000'000;
    CardConfig config = CardConfig::defaults("files");
    config.collapsed = false;
    config.group = "date";
    config.iconSize = 100;
    CardCtx ctx{"downloads", "Downloads", {node("old"), node("new", now), node("y", now - 86400)}, 0, "files", true};
    EXPECT_EQ(describe(cardSectionsWith(ctx, config, BrondelSettings{}, now)),
              "0|Downloads|Today \u00b7 1|downloads|files|1 strip collapsible thumbs\n"
              "0||Yesterday \u00b7 1|downloads|files|1 strip thumbs\n"
              "0||Earlier \u00b7 1|downloads|files|1 strip thumbs\n");

    config.hidden = {"Today", "Earlier"};
    EXPECT_EQ(describe(cardSectionsWith(ctx, config, BrondelSettings{}, now)),
              "0|Downloads|Yesterday \u00b7 1|downloads|files|1 strip collapsible thumbs\n");

    // Everything hidden, or nothing to show: the header stays on an empty default section.
    config.hidden = {"Today", "Yesterday", "Earlier"};
    auto empty = cardSectionsWith(ctx, config, BrondelSettings{}, now);
    EXPECT_EQ(describe(empty), "0|Downloads||downloads|files|0 collapsible\n");
    EXPECT_EQ(empty[0].iconSize, 48);
    ctx.nodes.clear();
    EXPECT_EQ(describe(cardSectionsWith(ctx, config, BrondelSettings{}, now)), "0|Downloads||downloads|files|0 collapsible\n");
    ::unsetenv("TZ");
    ::tzset();
}

TEST(BuildSections, RootShowsDownloadsDrivesAndFavorites)
{
    cardShowAllClear();
    IconViewInput in;
    in.path = "/";
    in.name = "host";
    in.hostName = "host";
    in.items = {node("Home"), node("Backup")};
    in.downloads = {{"/home/u/Downloads", "Downloads", {node("a.txt"), node("b.png")}},
                    {"/media/u/Backup/Downloads", "Downloads \u00b7 Backup", {}}};
    in.favorites = {header("Work", 0.58, {node("Projects")}), header("Recent", 0.1, {node("x"), node("y")})};
    in.settings.drivesTitle = "My Drives";
    const std::string expect =
        "0|Downloads||downloads|files|2 strip collapsible collapsed thumbs top=12\n"
        "1|Downloads \u00b7 Backup||downloads-backup|files|0 strip collapsible collapsed thumbs\n"
        "2|My Drives||drives|drives|2\n"
        "3|Favorites|Work|-||1 pinned=Work\n"
        "3||Recent|-||2 pinned=Recent\n";
    auto sections = buildSections(in);
    EXPECT_EQ(describe(sections), expect);
    EXPECT_EQ(sections[3].hue, 0.58);
    EXPECT_EQ(sections[2].nodes[0]->name, "Home"); // the drives keep the volume list's order

    // The host's name is the root too; the Downloads cards can be switched off.
    in.path = "/elsewhere";
    in.settings.showDownloads = false;
    EXPECT_EQ(describe(buildSections(in)), "0|My Drives||drives|drives|2 top=12\n"
                                           "1|Favorites|Work|-||1 pinned=Work\n"
                                           "1||Recent|-||2 pinned=Recent\n");
}

TEST(BuildSections, FolderShowsItsItemsThenFavorites)
{
    IconViewInput in;
    in.path = "/home/u/Projects";
    in.name = "Projects";
    in.hostName = "host";
    in.items = {node("b"), node("a")};
    in.downloads = {{"/home/u/Downloads", "Downloads", {node("x")}}}; // not shown away from the root
    const std::pair<const char*, const char*> titles[] = {
        {"{folder}", "Projects"}, {"", "Projects"}, {"In {folder} ({folder})", "In Projects (Projects)"},
        {"Items", "Items"}};
    for (auto [pattern, title] : titles) {
        in.settings.itemsTitle = pattern;
        EXPECT_EQ(describe(buildSections(in)), std::string("0|") + title + "||-||2 top=12\n") << pattern;
    }
    EXPECT_EQ(buildSections(in)[0].nodes[0]->name, "b"); // the view's order

    in.favorites = {header("Work", 0.5, {})};
    in.settings.favoritesTitle = "Pinned";
    EXPECT_EQ(describe(buildSections(in)), "0|Items||-||2 top=12\n1|Pinned|Work|-||0 pinned=Work\n");
}

// The gathered input, from the files of the test home, built into sections.
TEST(BuildSections, GathersDownloadsAndFavoritesFromDisk)
{
    TempTree tree;
    ASSERT_TRUE(pinnedAdd(tree.dir("Projects"), "Work"));
    const std::string downloads = testHome() + "/Downloads";
    ASSERT_TRUE(fileMakeDirs(downloads));
    fileWriteAtomic(downloads + "/a.txt", "x");

    BrondelSettings settings;
    settings.showRecent = false;
    auto in = iconViewGather("/", ComputerRoot::hostName(), {}, settings);
    ASSERT_FALSE(in.downloads.empty());
    EXPECT_EQ(in.downloads[0].title, "Downloads");
    ASSERT_EQ(in.downloads[0].children.size(), 1u);
    EXPECT_EQ(in.downloads[0].children[0]->name, "a.txt");
    ASSERT_EQ(in.favorites.size(), 1u);
    EXPECT_EQ(in.favorites[0]->name, "Work");
    auto sections = buildSections(in);
    EXPECT_EQ(sections.front().cardKey, "downloads");
    EXPECT_EQ(sections.back().pinned, "Work");

    in = iconViewGather(tree.root(), "tree", {}, settings);
    EXPECT_TRUE(in.downloads.empty()); // only the root shows the Downloads cards
    EXPECT_EQ(in.favorites.size(), 1u);
}

TEST(Downloads, FoldersResolveLinksAndSkipDuplicates)
{
    TempTree tree;
    const std::string real = tree.dir("Downloads");
    tree.symlink("link", real);
    tree.file("file");
    tree.dir("vol/Downloads");
    const auto folders = downloadsFoldersFrom(
        {tree.path("link"), real, tree.path("missing"), tree.path("file"), "", tree.path("vol/Downloads")});
    EXPECT_EQ(folders, (std::vector<std::string>{real, tree.path("vol/Downloads")}));

    const std::vector<Volume> volumes{{"Backup", tree.path("vol"), 0, 0}};
    EXPECT_EQ(downloadsFolders(volumes).back(), tree.path("vol/Downloads"));

    // user-dirs.dirs pointing the downloads at the home folder switches them off.
    fileWriteAtomic(testHome() + "/.config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/\"\n");
    EXPECT_EQ(downloadsUserDir(), "");
    fileWriteAtomic(testHome() + "/.config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/Incoming\"\n");
    EXPECT_EQ(downloadsUserDir(), testHome() + "/Incoming");
    fileWriteAtomic(testHome() + "/.config/user-dirs.dirs", "");
}

TEST(Downloads, TitleNamesTheVolumeThatHoldsTheFolder)
{
    const std::vector<Volume> volumes{{"Backup", "/media/u/Backup", 0, 0},
                                      {"Inner", "/media/u/Backup/inner/", 0, 0},
                                      {"Back", "/media/u/Back", 0, 0}};
    EXPECT_EQ(downloadsTitle("/home/u/Downloads", volumes), "Downloads");
    EXPECT_EQ(downloadsTitle("/media/u/Backup/Downloads", volumes), "Downloads \u00b7 Backup");
    EXPECT_EQ(downloadsTitle("/media/u/Backup/inner/Downloads", volumes), "Downloads \u00b7 Inner");
    EXPECT_EQ(downloadsTitle("/media/u/Backups/Downloads", volumes), "Downloads");
}

TEST(CardCatalog, DownloadsCardsThenDrives)
{
    const auto cards = cardListFrom({"Downloads", "Downloads \u00b7 Backup", "Downloads \u00b7 Backup"}, "Drives");
    const std::vector<CardEntry> expect{{"downloads", "Downloads", "files"},
                                        {"downloads-backup", "Downloads \u00b7 Backup", "files"},
                                        {"downloads-backup", "Downloads \u00b7 Backup", "files"},
                                        {"drives", "Drives", "drives"}};
    EXPECT_EQ(cards, expect);
    EXPECT_EQ(cardFind(cards, "drives")->family, "drives");
    EXPECT_FALSE(cardFind(cards, "nosuch"));
}

} // namespace
