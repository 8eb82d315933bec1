// The commands against a drive that stops answering (the hangfs FUSE file system under
// the test's home, where the volume list counts it as the user's drive): each prints
// within a few seconds and the process ends, with nothing left holding its output.

#include "support/hang_fs.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

struct Outcome {
    int status = -1;
    std::string out, err;
    std::chrono::duration<double> took{};
};

// Reads the command's output to its end: a helper process that kept the pipe open
// would show here as a long run.
Outcome run(const std::string& args)
{
    Outcome o;
    const auto start = std::chrono::steady_clock::now();
    o.status = testRun("timeout -s KILL 30 " + testBrondel() + " " + args, &o.out, &o.err);
    o.took = std::chrono::steady_clock::now() - start;
    return o;
}

// Generous: proves "does not hang", not a speed (the probe deadline is 1.5 s).
constexpr std::chrono::seconds kBound{5};

struct Case {
    std::string args;
    std::string expect; // a piece of the output
};

void expectAllReturn(const std::vector<Case>& cases)
{
    for (const Case& c : cases) {
        const Outcome o = run(c.args);
        EXPECT_EQ(o.status, 0) << c.args;
        EXPECT_LT(o.took.count(), double(kBound.count())) << c.args;
        EXPECT_NE(o.out.find(c.expect), std::string::npos) << c.args << "\n" << o.out;
        EXPECT_EQ(o.err, "") << c.args;
    }
}

} // namespace

TEST(CliHungDrive, EveryCommandReturnsAndExits)
{
    const std::string media = testHome() + "/media";
    HangFs fs(media + "/Stuck");
    HANGFS_REQUIRE(fs);
    fs.hang();
    expectAllReturn({
        {"volumes", "Stuck  not responding"},
        {"cards", "drives"},
        {"card drives set layout grid", "drives: layout = grid"},
        {"list " + media, "not responding  Stuck"},
        {"list " + media + "/Stuck", "Empty or not a directory"},
        {"search " + testHome() + " one.txt", "No matches"},
        {"list " + testHome(), "media"},
    });
    fs.release();
    const Outcome back = run("volumes");
    EXPECT_EQ(back.out.find("not responding"), std::string::npos) << back.out;
    EXPECT_NE(back.out.find("Stuck"), std::string::npos) << back.out;
}

TEST(CliHungDrive, OnlyStatisticsAndListingHang)
{
    // The folder itself can be looked at; its statistics and its listing hang.
    const std::string media = testHome() + "/half";
    HangFs fs(media + "/Half", "statfs,readdir");
    HANGFS_REQUIRE(fs);
    fs.hang();
    expectAllReturn({
        {"list " + media, "not responding  Half"},
        {"volumes", "Half  not responding"},
        {"search " + media + " one", "No matches"},
    });
}
