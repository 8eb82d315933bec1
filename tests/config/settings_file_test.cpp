#include "config/config_file.h"
#include "config/settings_file.h"
#include "fs/file_io.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <cstdlib>

TEST(SettingsFile, LenientValues)
{
    auto recent = [](const char* line) { return settingsParse(line).recentCount; };
    EXPECT_EQ(recent("recent_count = 99"), 50);
    EXPECT_EQ(recent("recent_count = -3"), 0);
    EXPECT_EQ(recent("recent_count = 7x"), 8);
    EXPECT_EQ(recent("recent_count ="), 8);
    EXPECT_EQ(recent("recent_count = +12"), 12);

    EXPECT_EQ(settingsParse("sort_by = \"Size\"").sortBy, "name");
    EXPECT_EQ(settingsParse("sort_by = \"size").sortBy, "name");
    EXPECT_EQ(settingsParse("sort_by = date\nsort_by = bogus").sortBy, "date"); // bogus ignored
    EXPECT_EQ(settingsParse("drives_title = \"\"").drivesTitle, "Drives");
    EXPECT_EQ(settingsParse("items_title = \"In #{folder}\"").itemsTitle, "In #{folder}");
    EXPECT_FALSE(settingsParse("show_hidden = TRUE").showHidden);
    EXPECT_FALSE(settingsParse("ascending = true\r\n").ascending); // CR-LF: deliberately false
    EXPECT_TRUE(settingsParse("show_hidden = true\nshow_hidden = true").showHidden);

    auto info = settingsParse("info_ = true\ninfo_folder-size = false\ninfo_x = yes").infoOn;
    EXPECT_EQ(info, (std::map<std::string, bool>{{"", true}, {"folder-size", false}, {"x", false}}));
}

TEST(SettingsFile, SavedLayoutIsExact)
{
    BrondelSettings s;
    s.infoOn = {{"b", false}, {"a", true}};
    EXPECT_EQ(settingsFormat(s),
              "# Brondel settings \u2014 edited by Brondel \u2192 Settings\u2026, or by hand.\n"
              "show_hidden = false\n"
              "sort_by = \"name\"        # name | date | size | kind\n"
              "ascending = true\n"
              "folders_first = true\n"
              "show_recent = true\n"
              "recent_count = 8\n"
              "drives_title = \"Drives\"\n"
              "items_title = \"{folder}\"\n"
              "favorites_title = \"Favorites\"\n"
              "recent_title = \"Recent\"\n"
              "show_downloads = true\n"
              "info_a = true\n"
              "info_b = false   # size info modules (brondel infos)\n");
    std::string empty = settingsFormat(BrondelSettings{});
    EXPECT_TRUE(empty.ends_with("show_downloads = true\n   # size info modules (brondel infos)\n"));
}

TEST(SettingsFile, RoundTripThroughTheFile)
{
    std::string path = testHome() + "/nested/dir/settings.toml";
    ::setenv("BRONDEL_SETTINGS", path.c_str(), 1);
    BrondelSettings s;
    s.showHidden = true;
    s.sortBy = "kind";
    s.ascending = false;
    s.foldersFirst = false;
    s.showRecent = false;
    s.recentCount = 50;
    s.drivesTitle = "Disks #1";
    s.itemsTitle = "Inside {folder}";
    s.favoritesTitle = "Stars";
    s.recentTitle = "L\u00e4test";
    s.showDownloads = false;
    s.infoOn = {{"drive-space", false}, {"", true}};
    EXPECT_TRUE(settingsSave(s)); // creates the missing directories
    EXPECT_EQ(settingsLoad(), s);

    // A file that is not UTF-8 reads as missing.
    ASSERT_TRUE(fileWriteAtomic(path, "show_hidden = true\n\xff\n"));
    EXPECT_EQ(settingsLoad(), BrondelSettings{});

    // An empty override is used as it stands: nothing can be read or written there.
    ::setenv("BRONDEL_SETTINGS", "", 1);
    EXPECT_EQ(settingsPath(), "");
    EXPECT_FALSE(settingsSave(s));
    EXPECT_EQ(settingsLoad(), BrondelSettings{});
    ::unsetenv("BRONDEL_SETTINGS");
    EXPECT_EQ(settingsPath(), testHome() + "/.brondel/settings.toml");
}

TEST(SettingsFile, LossyLinesAreRecognised)
{
    const std::pair<const char*, bool> cases[] = {
        {"", false},
        {"# mine\n\n  show_hidden = true\nsort_by = size # note\ninfo_x = false\n", false},
        {"show_hidden=true", false},
        {"show_hidden = TRUE", true},      // reads as false
        {"ascending = true\r", true},      // CR-LF: reads as false
        {"sort_by = \"Size\"", true},      // ignored
        {"recent_count = 99", true},       // clamped
        {"recent_count = x", true},
        {"drives_title = \"Disks", true},  // the quote would be written back doubled
        {"drives_title = \"\"", true},      // keeps "Drives"
        {"show_hiden = true", true},       // unknown key
        {"show_hidden", true},             // no "="
        {"[section]", true},
        {"show_hidden = true\nshow_hidden = false", true}, // the first is overridden
        {"info_a = yes", true},
    };
    for (const auto& [text, lossy] : cases)
        EXPECT_EQ(settingsLossy(text), lossy) << text;
    BrondelSettings s;
    s.infoOn = {{"a", true}, {"b", false}};
    s.itemsTitle = "In #{folder}";
    EXPECT_FALSE(settingsLossy(settingsFormat(s)));
    EXPECT_FALSE(settingsLossy(settingsFormat(BrondelSettings{})));
}

TEST(SettingsFile, AnUpdateChangesOnlyItsOwnKeys)
{
    ::setenv("BRONDEL_SETTINGS", (testHome() + "/merge/settings.toml").c_str(), 1);
    BrondelSettings mine; // what a long-running process loaded at its start
    BrondelSettings theirs = mine;
    theirs.sortBy = "size";
    theirs.infoOn["file-size"] = false;
    theirs.drivesTitle = "Disks";
    ASSERT_TRUE(settingsSave(theirs)); // another writer: `brondel infos`, a hand edit

    BrondelSettings changed = mine;
    changed.showHidden = true;
    changed.infoOn["folder-size"] = false;
    ASSERT_TRUE(settingsUpdate(mine, changed));
    BrondelSettings expected = theirs;
    expected.showHidden = true;
    expected.infoOn["folder-size"] = false;
    EXPECT_EQ(settingsLoad(), expected);

    // An info module the change removed goes; one it did not touch stays.
    BrondelSettings withInfo = mine;
    withInfo.infoOn["folder-size"] = false;
    ASSERT_TRUE(settingsUpdate(withInfo, mine));
    expected.infoOn.erase("folder-size");
    EXPECT_EQ(settingsLoad(), expected);
    ::unsetenv("BRONDEL_SETTINGS");
}
