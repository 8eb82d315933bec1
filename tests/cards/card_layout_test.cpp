#include "cards/card_layout.h"
#include "cards/card_show_all.h"
#include "cards/card_sort.h"

#include <gtest/gtest.h>

namespace {

DirNodePtr node(const std::string& name, int64_t size = 0, std::optional<int64_t> date = std::nullopt,
                bool isDir = false)
{
    auto n = DirNode::make();
    n->name = name;
    n->path = "/d/" + name;
    n->size = size;
    n->dateModified = date;
    n->isDir = isDir;
    n->kind = isDir ? "Folder" : "Document";
    return n;
}

std::string names(const std::vector<DirNodePtr>& nodes)
{
    std::string out;
    for (const auto& n : nodes)
        out += (out.empty() ? "" : " ") + n->name;
    return out;
}

TEST(CardLayout, ChoosingFallsBackToTheFamilysFirst)
{
    struct Case {
        const char* key;
        const char* family;
        const char* expect;
    };
    const Case cases[] = {
        {"", "files", "rows"},      {"grid", "files", "grid"},        {"list", "files", "list"},
        {"breakdown", "files", "rows"}, {"list", "drives", "icons"}, {"breakdown", "drives", "breakdown"},
        {"bogus", "drives", "icons"}, {"rows", "other", ""},
    };
    for (const Case& k : cases)
        EXPECT_EQ(cardLayout(k.key, k.family).key(), k.expect) << k.key << "/" << k.family;
    EXPECT_EQ(cardLayout("x", "other").family(), "files"); // the base layout
}

TEST(CardLayout, EachLayoutDressesItsSections)
{
    cardShowAllClear();
    CardCtx ctx{"downloads", "Downloads", {}, 3, "files", true};
    CardConfig config = CardConfig::defaults("files");
    config.iconSize = 80;
    config.thumbs = true;
    config.legendRows = 5;
    config.tileWidth = 300;
    const std::vector<CardGroup> groups{{"Today", 0.6, {node("a"), node("b")}}, {"", std::nullopt, {node("c")}}};

    auto rows = cardLayout("rows", "files").sections(ctx, config, groups);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].title, "Today \u00b7 2");
    EXPECT_EQ(rows[0].showAll, "downloads/Today");
    EXPECT_TRUE(rows[0].strip);
    EXPECT_EQ(rows[0].card, 3);
    EXPECT_EQ(rows[0].cardKey, "downloads");
    EXPECT_EQ(rows[0].group, "");
    EXPECT_EQ(rows[0].family, "");
    EXPECT_EQ(rows[0].hue, 0.6);
    EXPECT_EQ(rows[0].iconSize, 80);
    EXPECT_TRUE(rows[0].thumbs);
    EXPECT_EQ(rows[1].title, "");
    EXPECT_FALSE(rows[1].showAll);
    EXPECT_FALSE(rows[1].strip); // ungrouped rows wrap

    cardShowAllToggle("downloads/Today");
    EXPECT_FALSE(cardLayout("rows", "files").sections(ctx, config, groups)[0].strip);
    cardShowAllToggle("downloads/Today");
    EXPECT_TRUE(cardLayout("rows", "files").sections(ctx, config, groups)[0].strip);

    auto grid = cardLayout("grid", "files").sections(ctx, config, groups)[0];
    EXPECT_FALSE(grid.strip || grid.list || grid.breakdown || grid.showAll);
    EXPECT_EQ(grid.iconSize, 80);

    auto list = cardLayout("list", "files").sections(ctx, config, groups)[0];
    EXPECT_TRUE(list.list);
    EXPECT_EQ(list.iconSize, 48);
    EXPECT_TRUE(list.thumbs);

    auto icons = cardLayout("icons", "drives").sections(ctx, config, groups)[0];
    EXPECT_FALSE(icons.thumbs || icons.strip || icons.list || icons.breakdown);
    EXPECT_EQ(icons.iconSize, 80);

    auto breakdown = cardLayout("breakdown", "drives").sections(ctx, config, groups)[0];
    EXPECT_TRUE(breakdown.breakdown);
    EXPECT_FALSE(breakdown.thumbs);
    EXPECT_EQ(breakdown.iconSize, 48);
    EXPECT_EQ(breakdown.legendRows, 5);
    EXPECT_EQ(breakdown.tileWidth, 300);

    EXPECT_TRUE(cardLayout("rows", "files").sections(ctx, config, {}).empty());
}

TEST(CardSort, SortsOnOneKeyAndReversesForDescending)
{
    const std::vector<DirNodePtr> nodes{node("b", 5, 100), node("file10", 9, std::nullopt, true), node("a", 5, 300),
                                        node("file2", 1, 200)};
    BrondelSettings window; // by name, ascending, folders first
    struct Case {
        const char* sort;
        bool ascending;
        const char* expect;
    };
    const Case cases[] = {
        {"size", false, "file10 a b file2"}, // equal sizes: the later-listed first
        {"size", true, "file2 b a file10"},
        {"date", false, "a file2 b file10"}, // no date is the distant past
        {"name", true, "a b file2 file10"},
        {"keep", false, "b file10 a file2"},
        {"", false, "file10 a b file2"},     // the window's sort, folders first
        {"bogus", true, "file10 a b file2"},
    };
    for (const Case& k : cases) {
        CardConfig config;
        config.sort = k.sort;
        config.ascending = k.ascending;
        EXPECT_EQ(names(cardSort(nodes, config, window)), k.expect) << k.sort << " " << k.ascending;
    }
    CardConfig bySize;
    bySize.sort = "size";
    EXPECT_TRUE(cardSort({}, bySize, window).empty());
}

} // namespace
