#include "cards/card_config.h"

#include "config/config_file.h"
#include "fs/file_io.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(CardConfig, FamilyDefaults)
{
    CardConfig files = CardConfig::defaults("files");
    EXPECT_EQ(files.group, "auto");
    EXPECT_EQ(files.sort, "");
    EXPECT_TRUE(files.thumbs);
    EXPECT_TRUE(files.collapsed);
    CardConfig drives = CardConfig::defaults("drives");
    EXPECT_EQ(drives.group, "none");
    EXPECT_EQ(drives.sort, "keep");
    EXPECT_FALSE(drives.thumbs);
    EXPECT_FALSE(drives.collapsed);
    EXPECT_EQ(CardConfig::defaults("anything"), files);
}

TEST(CardConfig, WritesTheElevenLineLayout)
{
    CardConfig c = CardConfig::defaults("files");
    c.layout = "grid";
    c.hidden = {"Today", "Earlier"};
    c.iconSize = 72.9;
    c.tileWidth = 333.3;
    c.legendRows = 12;
    c.ascending = true;
    EXPECT_EQ(cardConfigFormat("downloads", c),
              "# Brondel card \"downloads\" \u2014 edited by the card's \u22ef menu, or by hand. Missing keys = defaults.\n"
              "layout = \"grid\"          # rows | grid | list (files) \u00b7 icons | breakdown (drives) \u00b7 \"\" = first\n"
              "group = \"auto\"            # auto (match sort) | none | date | kind\n"
              "sort = \"\"              # \"\" = same as window | date | name | size | kind | keep\n"
              "ascending = true\n"
              "thumbs = true            # real previews instead of generic icons\n"
              "icon_size = 72\n"
              "collapsed = true      # one sideways row until expanded\n"
              "hidden = \"Today|Earlier\"   # hidden group titles, | separated\n"
              "legend_rows = 12   # breakdown: folders listed per drive\n"
              "tile_width = 333\n");
}

TEST(CardConfig, ReadsEachLineLeniently)
{
    struct Case {
        const char* line;
        const char* family;
        CardConfig (*expect)(CardConfig);
    };
    // Each case: one line over the family's defaults, and the fields it should change.
    const Case cases[] = {
        {"icon_size = 4", "files", [](CardConfig c) { c.iconSize = 16; return c; }},
        {"icon_size = 500", "files", [](CardConfig c) { c.iconSize = 128; return c; }},
        {"icon_size = abc", "files", [](CardConfig c) { return c; }},
        {"icon_size = 72.5", "files", [](CardConfig c) { c.iconSize = 72.5; return c; }},
        {"icon_size = 64px", "files", [](CardConfig c) { return c; }},
        {"icon_size = nan", "files", [](CardConfig c) { return c; }},
        {"legend_rows = 0", "drives", [](CardConfig c) { c.legendRows = 1; return c; }},
        {"legend_rows = 99", "drives", [](CardConfig c) { c.legendRows = 30; return c; }},
        {"legend_rows = 3.5", "drives", [](CardConfig c) { return c; }},
        {"legend_rows = +5", "drives", [](CardConfig c) { c.legendRows = 5; return c; }},
        {"tile_width = 100", "drives", [](CardConfig c) { c.tileWidth = 140; return c; }},
        {"tile_width = 1000", "drives", [](CardConfig c) { c.tileWidth = 600; return c; }},
        {"hidden = \"Today||Yesterday\"", "files", [](CardConfig c) { c.hidden = {"Today", "Yesterday"}; return c; }},
        {"hidden = \" Today\"", "files", [](CardConfig c) { c.hidden = {" Today"}; return c; }},
        {"hidden = \"C#|D\"", "files", [](CardConfig c) { c.hidden = {"C"}; return c; }},
        // Titles quoted one by one lose their own quotes, which the file could not
        // write back.
        {"hidden = \"A\"|\"B\"|x\"", "files", [](CardConfig c) { c.hidden = {"A", "B", "x"}; return c; }},
        {"sort = \"date\"   # comment", "files", [](CardConfig c) { c.sort = "date"; return c; }},
        {"thumbs = True", "files", [](CardConfig c) { c.thumbs = false; return c; }},
        {"collapsed = true\r", "files", [](CardConfig c) { c.collapsed = false; return c; }},
        {"ascending=true", "files", [](CardConfig c) { c.ascending = true; return c; }},
        {"layout", "files", [](CardConfig c) { return c; }},
        {"Layout = grid", "files", [](CardConfig c) { return c; }},
        {"# layout = grid", "files", [](CardConfig c) { return c; }},
    };
    for (const Case& k : cases)
        EXPECT_EQ(cardConfigParse(k.line, k.family), k.expect(CardConfig::defaults(k.family))) << k.line;
}

TEST(CardConfig, LaterLinesWinAndEmptyHiddenClears)
{
    CardConfig c = cardConfigParse("hidden = \"A|B\"\nicon_size = 64\nicon_size = bad\nhidden = \"\"\n", "files");
    EXPECT_EQ(c.iconSize, 64);
    EXPECT_TRUE(c.hidden.empty());
}

TEST(CardConfig, SetReportsUnknownFields)
{
    CardConfig c = CardConfig::defaults("files");
    EXPECT_FALSE(cardConfigSet(c, "colour", "red"));
    EXPECT_FALSE(cardConfigSet(c, "Icon_size", "64"));
    EXPECT_EQ(c, CardConfig::defaults("files"));
    EXPECT_TRUE(cardConfigSet(c, "layout", "no-such-layout"));
    EXPECT_EQ(c.layout, "no-such-layout");
}

TEST(CardConfig, SavesAndLoadsThroughTheCardsFolder)
{
    EXPECT_EQ(cardConfigPath("drives"), testHome() + "/.brondel/cards/drives.toml");
    EXPECT_EQ(cardConfigLoad("never-saved", "drives"), CardConfig::defaults("drives"));

    ASSERT_TRUE(fileWriteAtomic(cardConfigPath("partial"), "collapsed = false\n"));
    CardConfig partial = cardConfigLoad("partial", "files");
    CardConfig expect = CardConfig::defaults("files");
    expect.collapsed = false;
    EXPECT_EQ(partial, expect);

    partial.iconSize = 72.5;
    partial.hidden = {"Other"};
    cardConfigSave("partial", partial);
    partial.iconSize = 72; // whole points in the file
    EXPECT_EQ(cardConfigLoad("partial", "files"), partial);

    // Not UTF-8: the whole file counts as unreadable.
    ASSERT_TRUE(fileWriteAtomic(cardConfigPath("bytes"), "layout = \"grid\"\n\xff\n"));
    EXPECT_EQ(cardConfigLoad("bytes", "files"), CardConfig::defaults("files"));
}

TEST(CardConfig, CardsFollowTheSettingsFile)
{
    const std::string elsewhere = testHome() + "/elsewhere/settings.toml";
    ::setenv("BRONDEL_SETTINGS", elsewhere.c_str(), 1);
    EXPECT_EQ(cardConfigPath("drives"), testHome() + "/elsewhere/cards/drives.toml");
    cardConfigSave("drives", CardConfig::defaults("drives"));
    EXPECT_TRUE(fileReadAll(testHome() + "/elsewhere/cards/drives.toml"));
    ::setenv("BRONDEL_SETTINGS", "", 1);
    EXPECT_EQ(cardConfigPath("drives"), "");
    ::unsetenv("BRONDEL_SETTINGS");
}

TEST(CardConfig, GroupKeyResolvesAuto)
{
    struct Case {
        const char* group;
        const char* sort;
        const char* window;
        const char* expect;
    };
    const Case cases[] = {
        {"auto", "", "date", "date"},  {"auto", "", "name", "none"},   {"auto", "", "kind", "kind"},
        {"auto", "size", "date", "none"}, {"auto", "date", "name", "date"}, {"auto", "keep", "date", "none"},
        {"kind", "date", "date", "kind"}, {"bogus", "", "date", "bogus"},
    };
    for (const Case& k : cases) {
        CardConfig c;
        c.group = k.group;
        c.sort = k.sort;
        EXPECT_EQ(cardGroupKey(c, k.window), k.expect) << k.group << " " << k.sort << " " << k.window;
    }
}

} // namespace

TEST(CardConfig, LossyLinesAreRecognised)
{
    const std::pair<const char*, bool> cases[] = {
        {"# mine\n\nlayout = \"grid\"  # note\nicon_size = 500\nascending = yes\nhidden = \"\"\n", false},
        {"icon_size = big", true},   // keeps the old size
        {"legend_rows = 2.5", true},
        {"tile_width =", true},
        {"colour = red", true},      // unknown key
        {"collapsed", true},         // no "="
        {"sort = \"size\"\nsort = \"kind\"", true},
    };
    for (const auto& [text, lossy] : cases)
        EXPECT_EQ(cardConfigLossy(text), lossy) << text;
    CardConfig config = CardConfig::defaults("drives");
    config.hidden = {"A", "B"};
    EXPECT_FALSE(cardConfigLossy(cardConfigFormat("k", config)));
}
