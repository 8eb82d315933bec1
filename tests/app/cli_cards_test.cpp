#include "app/cli_cards.h"

#include "cards/card_config.h"
#include "config/config_file.h"
#include "fs/file_io.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

namespace {

std::string run(const Args& args)
{
    CliOut out;
    EXPECT_EQ(CLICards::run(args, out), 0);
    return out.text();
}

class CliCards : public ::testing::Test {
protected:
    void SetUp() override { fileMakeDirs(testHome() + "/Downloads"); }
};

TEST_F(CliCards, ListsTheCardsWithTheirFiles)
{
    const std::string expect = "downloads  (files)  Downloads  \u2192 " + testHome()
        + "/.brondel/cards/downloads.toml\n"
          "drives  (drives)  Drives  \u2192 "
        + testHome() + "/.brondel/cards/drives.toml\n";
    EXPECT_EQ(run({}), expect);
    CliOut out;
    CLICards::runCard({}, out);
    EXPECT_EQ(out.text(), expect);
}

TEST_F(CliCards, PrintsTheDrivesMenu)
{
    EXPECT_EQ(run({"drives", "menu"}), "  Layout\n"
                                       "  \u2713 Icons\n"
                                       "    Breakdown\n"
                                       "  Group by\n"
                                       "    Match Sort\n"
                                       "  \u2713 None\n"
                                       "    Date\n"
                                       "    Kind\n"
                                       "  Breakdown rows\n"
                                       "    4\n"
                                       "    6\n"
                                       "  \u2713 8\n"
                                       "    12\n"
                                       "  Breakdown width\n"
                                       "    Narrow\n"
                                       "  \u2713 Medium\n"
                                       "    Wide\n"
                                       "  Icon size\n"
                                       "    Small\n"
                                       "  \u2713 Medium\n"
                                       "    Large\n"
                                       "\u2500\u2500\n"
                                       "  Open Card Settings File\n");
}

TEST_F(CliCards, PrintsAGroupedDownloadsMenu)
{
    ASSERT_TRUE(fileWriteAtomic(cardConfigPath("downloads"), "group = \"date\"\nhidden = \"Today\"\nsort = \"size\"\n"
                                                         "ascending = true\nthumbs = false\nicon_size = 40\n"));
    EXPECT_EQ(run({"downloads", "menu"}), "  Layout\n"
                                          "  \u2713 Rows\n"
                                          "    Grid\n"
                                          "    List\n"
                                          "  Group by\n"
                                          "    Match Sort\n"
                                          "    None\n"
                                          "  \u2713 Date\n"
                                          "    Kind\n"
                                          "  Show groups\n"
                                          "    Today\n"
                                          "  \u2713 Yesterday\n"
                                          "  \u2713 Previous 7 Days\n"
                                          "  \u2713 Previous 30 Days\n"
                                          "  \u2713 Earlier\n"
                                          "  Sort by\n"
                                          "    Same as Window (Name)\n"
                                          "    Date Modified\n"
                                          "    Name\n"
                                          "  \u2713 Size\n"
                                          "    Kind\n"
                                          "\u2713 Ascending\n"
                                          "  Icon size\n"
                                          "    Small\n"
                                          "    Medium\n"
                                          "    Large\n"
                                          "    Extra Large\n"
                                          "  Real previews\n"
                                          "\u2500\u2500\n"
                                          "  Open Card Settings File\n");
}

TEST_F(CliCards, SetSavesClampedAndEchoesAsTyped)
{
    EXPECT_EQ(run({"downloads", "set", "icon_size", "500"}), "downloads: icon_size = 500\n");
    EXPECT_EQ(cardConfigLoad("downloads", "files").iconSize, 128);
    EXPECT_EQ(run({"downloads", "set", "hidden", "Today|Earlier"}), "downloads: hidden = Today|Earlier\n");
    EXPECT_EQ(cardConfigLoad("downloads", "files").iconSize, 128); // earlier change kept

    const auto before = fileReadAll(cardConfigPath("downloads"));
    EXPECT_EQ(run({"downloads", "set", "colour", "red"}), "unknown field: colour\n");
    EXPECT_EQ(fileReadAll(cardConfigPath("downloads")), before);
    EXPECT_EQ(run({"drives", "set", "colour", "red"}), "unknown field: colour\n");
    EXPECT_FALSE(fileReadAll(cardConfigPath("drives"))); // nothing written
}

TEST_F(CliCards, UnknownCardsAndUsage)
{
    EXPECT_EQ(run({"nosuch", "menu"}), "unknown card: nosuch\n");
    EXPECT_EQ(run({"nosuch"}), "unknown card: nosuch\n");
    const std::string usage = "usage: brondel card <key> menu | set <field> <value>\n";
    const Args wrong[] = {{"downloads"},
                          {"downloads", "show"},
                          {"downloads", "set", "icon_size"},
                          {"downloads", "set", "icon_size", "64", "extra"},
                          {"drives", "Menu"}};
    for (const Args& args : wrong)
        EXPECT_EQ(run(args), usage) << args.size();
}

// The binary itself: no session bus, settings that hide the Downloads cards.
TEST_F(CliCards, BinaryPrintsOnlyToStdout)
{
    ASSERT_TRUE(fileWriteAtomic(settingsPath(), "show_downloads = false\ndrives_title = \"Disks\"\n"));
    const std::string bin = "env -u DISPLAY DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent '" + testBrondel() + "'";
    std::string out, err;
    EXPECT_EQ(testRun(bin + " cards", &out, &err), 0);
    EXPECT_EQ(out, "downloads  (files)  Downloads  \u2192 " + testHome()
                  + "/.brondel/cards/downloads.toml\ndrives  (drives)  Disks  \u2192 " + testHome()
                  + "/.brondel/cards/drives.toml\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(testRun(bin + " card drives set layout breakdown", &out, &err), 0);
    EXPECT_EQ(out, "drives: layout = breakdown\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(cardConfigLoad("drives", "drives").layout, "breakdown");
    EXPECT_EQ(testRun("env -u DBUS_SESSION_BUS_ADDRESS -u DISPLAY '" + testBrondel() + "' card drives set thumbs true",
                      &out, &err),
              0);
    EXPECT_EQ(out, "drives: thumbs = true\n");
    EXPECT_EQ(err, "");
}

} // namespace
