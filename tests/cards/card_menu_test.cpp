#include "cards/card_menu.h"

#include "config/config_file.h"
#include "fs/file_io.h"

#include <gtest/gtest.h>

namespace {

const CardMenuItem& find(const std::vector<CardMenuItem>& menu, const std::string& title)
{
    for (const CardMenuItem& item : menu)
        if (item.title == title)
            return item;
    static const CardMenuItem none;
    ADD_FAILURE() << "no item " << title;
    return none;
}

std::string checked(const CardMenuItem& submenu)
{
    std::string out;
    for (const CardMenuItem& item : submenu.submenu)
        if (item.on)
            out += (out.empty() ? "" : ",") + item.title;
    return out;
}

TEST(CardMenu, ChecksWhatIsInEffect)
{
    CardConfig config = CardConfig::defaults("files");
    config.layout = "bogus";
    config.iconSize = 40;
    config.group = "date";
    config.hidden = {"Yesterday"};
    auto menu = cardMenuWith(config, "files", "size");
    EXPECT_EQ(checked(find(menu, "Layout")), "Rows");
    EXPECT_EQ(checked(find(menu, "Group by")), "Date");
    EXPECT_EQ(checked(find(menu, "Icon size")), "");
    EXPECT_EQ(checked(find(menu, "Show groups")), "Today,Previous 7 Days,Previous 30 Days,Earlier");
    EXPECT_EQ(find(menu, "Sort by").submenu[0].title, "Same as Window (Size)");

    // "Match Sort" with the window sorted by name: no titles, so no "Show groups".
    config.group = "auto";
    menu = cardMenuWith(config, "files", "name");
    for (const CardMenuItem& item : menu)
        EXPECT_NE(item.title, "Show groups");
    EXPECT_EQ(checked(find(menu, "Group by")), "Match Sort");
    config.sort = "kind";
    EXPECT_EQ(find(cardMenuWith(config, "files", "name"), "Show groups").submenu.size(), 8u);
}

TEST(CardMenu, ChoosingReloadsTheFileFirst)
{
    const std::string key = "reload";
    auto menu = cardMenu(key, "files", BrondelSettings{});
    // Meanwhile someone edits the file by hand.
    ASSERT_TRUE(fileWriteAtomic(cardConfigPath(key), "layout = \"list\"\ngroup = \"kind\"\n"));

    EXPECT_FALSE(cardMenuChoose(find(menu, "Ascending"), key, "files"));
    CardConfig now = cardConfigLoad(key, "files");
    EXPECT_EQ(now.layout, "list");
    EXPECT_TRUE(now.ascending);
    cardMenuChoose(find(menu, "Ascending"), key, "files"); // a toggle of the fresh value
    EXPECT_FALSE(cardConfigLoad(key, "files").ascending);

    cardMenuChoose(find(find(menu, "Icon size").submenu, "Extra Large"), key, "files");
    EXPECT_EQ(cardConfigLoad(key, "files").iconSize, 96);
    cardMenuChoose(find(find(menu, "Layout").submenu, "Grid"), key, "files");
    EXPECT_EQ(cardConfigLoad(key, "files").layout, "grid");
}

TEST(CardMenu, ShowGroupsHidesAndShows)
{
    const std::string key = "groups";
    CardConfig config = CardConfig::defaults("files");
    config.group = "date";
    config.hidden = {"Earlier"};
    cardConfigSave(key, config);
    auto groups = find(cardMenu(key, "files", BrondelSettings{}), "Show groups").submenu;
    cardMenuChoose(find(groups, "Today"), key, "files");
    cardMenuChoose(find(groups, "Today"), key, "files"); // already hidden: not listed twice
    EXPECT_EQ(cardConfigLoad(key, "files").hidden, (std::vector<std::string>{"Earlier", "Today"}));
    cardMenuChoose(find(groups, "Earlier"), key, "files");
    EXPECT_EQ(cardConfigLoad(key, "files").hidden, (std::vector<std::string>{"Today"}));
}

TEST(CardMenu, DrivesItemsAndSettingsFile)
{
    const std::string key = "drives-menu";
    auto menu = cardMenu(key, "drives", BrondelSettings{});
    EXPECT_EQ(checked(find(menu, "Breakdown rows")), "8");
    EXPECT_EQ(checked(find(menu, "Breakdown width")), "Medium");
    EXPECT_EQ(find(menu, "Icon size").submenu.size(), 3u);
    ASSERT_TRUE(menu[menu.size() - 2].separator);

    const CardMenuItem& open = menu.back();
    ASSERT_TRUE(open.opensFile);
    EXPECT_FALSE(fileReadAll(cardConfigPath(key)));
    EXPECT_EQ(cardMenuChoose(open, key, "drives"), cardConfigPath(key));
    EXPECT_EQ(fileReadAll(cardConfigPath(key)), cardConfigFormat(key, CardConfig::defaults("drives")));
    // An existing file is opened as it is.
    ASSERT_TRUE(fileWriteAtomic(cardConfigPath(key), "# mine\n"));
    cardMenuChoose(open, key, "drives");
    EXPECT_EQ(fileReadAll(cardConfigPath(key)), "# mine\n");

    cardMenuChoose(find(find(menu, "Breakdown width").submenu, "Wide"), key, "drives");
    cardMenuChoose(find(find(menu, "Breakdown rows").submenu, "12"), key, "drives");
    EXPECT_EQ(cardConfigLoad(key, "drives").tileWidth, 280);
    EXPECT_EQ(cardConfigLoad(key, "drives").legendRows, 12);
}

} // namespace
