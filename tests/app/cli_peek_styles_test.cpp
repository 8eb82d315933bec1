#include "app/cli_peek_styles.h"
#include "config/config_file.h"
#include "config/peek_order.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

namespace {

const char* const kLines[] = {
    "1\tColumns Drill \u2014 Finder-style columns of Peek plates: each click slides in a new column to the right",
    "2\tZoom Fill \u2014 click a plate: neighbours fly away, its contents pour out and fill the view; breadcrumb to go back",
    "3\tRow Expand \u2014 click a plate: contents open right below its row with a pointer; open inside to nest deeper",
    "4\tPopover Chain \u2014 click a plate: popover of its contents; click inside to cascade the next level like submenus",
    "5\tZoom Open \u2014 click a plate: it springs open into a panel; keep clicking to drill down, Back to climb",
    "6\tDrill Down \u2014 click a plate: contents slide open below it; click inside to go deeper, all levels visible",
    "7\tCard Stack \u2014 each level slides up as a card over the last; click a peeking card behind to go back",
    "8\tConveyor \u2014 two panes: folder left, its pick's contents right; going deeper slides the belt left",
    "9\tRows Drill \u2014 Columns Drill turned sideways: each click adds a scrolling shelf below",
    "10\tPeek Tabs \u2014 every folder you open becomes a tab: switch between open folders like a browser",
    "11\tRail Drill \u2014 opened folders stack on a left rail as small plates; contents pour out to the right",
};

std::string run()
{
    CliOut out;
    EXPECT_EQ(CLIPeekStyles::run(out), 0);
    return out.text();
}

// Tests run in file order: nothing is saved yet in the first one.
TEST(CLIPeekStyles, DefaultOrderWithoutFiles)
{
    std::string expected = "# " + testHome() + "/.brondel/peek-order.toml  saved=0  styles=11\n";
    for (const char* line : kLines)
        expected += std::string("  ") + line + "\n";
    EXPECT_EQ(run(), expected);

    std::string out, err;
    EXPECT_EQ(testRun("'" + testBrondel() + "' peek-styles", &out, &err), 0);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(err, "");
}

TEST(CLIPeekStyles, SavedOrderAndCurrentStyleMarker)
{
    peekOrderSave({"Conveyor", "Unknown"});
    peekStyleSetCurrent("Zoom Fill");
    std::string text = run();
    EXPECT_TRUE(text.starts_with("# " + peekOrderPath() + "  saved=2  styles=11\n  1\tConveyor \u2014 ")) << text;
    EXPECT_NE(text.find("\n* 3\tZoom Fill \u2014 click"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '*'), 1);

    peekStyleSetCurrent("No Such Style");
    EXPECT_EQ(run().find('*'), std::string::npos);
}

} // namespace
