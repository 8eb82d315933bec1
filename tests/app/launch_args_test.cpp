#include "app/launch_args.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

TEST(LaunchArgs, StrippingAndViewMode)
{
    struct Case {
        Args full; // as the process gets them, program path first
        Args expected;
        ViewMode mode;
    } cases[] = {
        {{"brondel"}, {}, ViewMode::List},
        {{"brondel", "--view", "3", "~/Documents"}, {"~/Documents"}, ViewMode::Column},
        {{"brondel", "/a", "--view"}, {"/a"}, ViewMode::List},
        {{"brondel", "--view", "x", "/tmp"}, {"/tmp"}, ViewMode::List},
        {{"brondel", "--view", "-1"}, {}, ViewMode::List},
        {{"brondel", "--view", "7"}, {}, ViewMode::List},
        {{"brondel", "--view", "+4"}, {}, ViewMode::Peek},
        {{"brondel", "--view", "1"}, {}, ViewMode::Icon},
        {{"brondel", "--view", "0"}, {}, ViewMode::List},
        {{"brondel", "--view", "99999999999999999999"}, {}, ViewMode::List},
        {{"brondel", "--view", "--view", "/a"}, {"/a"}, ViewMode::List},
        {{"brondel", "--view=2", "/a"}, {"--view=2", "/a"}, ViewMode::List},
        {{"brondel", "--view", "2", "list"}, {"list"}, ViewMode::List},
        {{"brondel", "-psn_0_12345", "/a", "-psn_x"}, {"/a"}, ViewMode::List},
        // The Peek flags are read from the full list and stay in it, like any word the
        // router does not know.
        {{"brondel", "--slow"}, {"--slow"}, ViewMode::List},
        {{"brondel", "/a", "--no-anim", "--view", "4", "--slow", "/b"}, {"/a", "--no-anim", "--slow", "/b"}, ViewMode::Peek},
        {{"brondel", "--slow=1", "--no-animation"}, {"--slow=1", "--no-animation"}, ViewMode::List},
    };
    for (const auto& c : cases) {
        std::vector<char*> argv;
        for (const auto& a : c.full)
            argv.push_back(const_cast<char*>(a.c_str()));
        EXPECT_EQ(launchArguments(int(argv.size()), argv.data()), c.expected) << c.full.size();
        EXPECT_EQ(launchViewMode(c.full), c.mode) << (c.full.size() > 2 ? c.full[2] : "");
    }
}

TEST(LaunchArgs, ProcessFlags)
{
    struct Case {
        Args full;
        Args expected; // what the router and the paths see
        LaunchProcess process;
    } cases[] = {
        {{"brondel"}, {}, LaunchProcess::Shared},
        {{"brondel", "/a"}, {"/a"}, LaunchProcess::Shared},
        {{"brondel", "--new-process", "/a"}, {"/a"}, LaunchProcess::Own},
        {{"brondel", "/a", "--new-process"}, {"/a"}, LaunchProcess::Own},
        {{"brondel", "--service"}, {}, LaunchProcess::Service},
        {{"brondel", "--new-process", "--service"}, {}, LaunchProcess::Service},
        // The value of --view is never read as a flag, whatever it is.
        {{"brondel", "--view", "--new-process", "/a"}, {"/a"}, LaunchProcess::Shared},
        {{"brondel", "--view", "--service"}, {}, LaunchProcess::Shared},
        // Joined or differently spelled forms are paths.
        {{"brondel", "--new-process=1"}, {"--new-process=1"}, LaunchProcess::Shared},
        {{"brondel", "-new-process"}, {"-new-process"}, LaunchProcess::Shared},
        // A command after the flag is still a command.
        {{"brondel", "--new-process", "list", "/x"}, {"list", "/x"}, LaunchProcess::Own},
    };
    for (const auto& c : cases) {
        std::vector<char*> argv;
        for (const auto& a : c.full)
            argv.push_back(const_cast<char*>(a.c_str()));
        EXPECT_EQ(launchArguments(int(argv.size()), argv.data()), c.expected) << c.full.back();
        EXPECT_EQ(launchProcessChoice(c.full), c.process) << c.full.back();
    }
}

TEST(LaunchArgs, PeekAnimationFlags)
{
    struct Case {
        Args full;
        PeekAnimationFlags flags;
    } cases[] = {
        {{"brondel"}, {}},
        {{"brondel", "--slow"}, {true, false}},
        {{"brondel", "/a", "--no-anim"}, {false, true}},
        {{"brondel", "--no-anim", "--view", "4", "--slow"}, {true, true}},
        {{"brondel", "--slow=1", "--SLOW", "--no-animation", "-slow"}, {}}, // whole, exact arguments only
    };
    for (const auto& c : cases)
        EXPECT_EQ(launchPeekAnimation(c.full), c.flags) << c.full.size();
}

TEST(LaunchArgs, PathsBecomeFolders)
{
    TempTree tree;
    tree.file("dir/a.txt");
    tree.symlink("dir/link-to-file", "a.txt");
    const std::string cwd = tree.root();
    struct Case {
        std::string arg, expected;
    } cases[] = {
        {"dir", cwd + "/dir"},
        {"dir/a.txt", cwd + "/dir"},
        {"dir/link-to-file", cwd + "/dir"},
        {"./dir/../dir/./", cwd + "/dir"},
        {"missing/x", cwd + "/missing/x"},
        {"/", "/"},
        {"/..", "/"},
        {"~", testHome()},
        {"~/x", testHome() + "/x"},
        // Launchers hand over file URIs (the desktop entry's %U).
        {"file://" + cwd + "/dir", cwd + "/dir"},
        {"file://" + cwd + "/dir/a.txt", cwd + "/dir"},
        {"file://localhost" + cwd + "/dir/", cwd + "/dir"},
        {"file://" + cwd + "/with%20space", cwd + "/with space"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(launchExpandPath(c.arg, cwd), c.expected) << c.arg;
}
