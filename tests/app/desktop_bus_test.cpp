// The session-bus services: what callers send is turned into local paths and grouped the
// way windows open, the view mode survives the trip, and a hand-over never waits past
// its bound for a bus that is missing, silent, or has no Brondel on it. The cases that
// need a real bus run on a private one: the test starts itself again under
// dbus-run-session, so it never talks to the desktop's own bus.

#include "app/desktop_bus.h"

#include "support/fake_session_bus.h"
#include "support/test_app.h"
#include "support/test_env.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kPrivateBus = "DESKTOP_BUS_TEST_PRIVATE_BUS";

TEST(DesktopBus, UrisBecomeLocalPaths)
{
    struct Case {
        const char* uri;
        std::optional<std::string> path;
    } cases[] = {
        {"file:///home/ann/a.txt", "/home/ann/a.txt"},
        {"file://localhost/srv/x", "/srv/x"},
        {"file:///tmp/with%20space/%C3%A9t%C3%A9", "/tmp/with space/\xC3\xA9t\xC3\xA9"},
        {"file:///tmp/latin%E9", std::string("/tmp/latin\xE9")}, // not UTF-8: kept as bytes
        {"file:///tmp/pct%2541", "/tmp/pct%41"},                  // decoded once only
        {"file:///tmp/dir/", "/tmp/dir"},
        {"file:///", "/"},
        {"/already/a/path//", "/already/a/path"},
        {"file://otherhost/x", std::nullopt},
        {"smb://server/share", std::nullopt},
        {"relative/path", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(desktopUriToPath(QString::fromUtf8(c.uri)), c.path) << c.uri;
}

TEST(DesktopBus, ItemsGroupByTheirFolder)
{
    using Groups = std::vector<std::pair<std::string, std::vector<std::string>>>;
    struct Case {
        std::vector<std::string> items;
        Groups groups;
    } cases[] = {
        {{}, {}},
        {{"/a/x", "/b/y", "/a/z"}, {{"/a", {"/a/x", "/a/z"}}, {"/b", {"/b/y"}}}},
        {{"/a/x", "/a/x"}, {{"/a", {"/a/x"}}}},
        {{"/etc", "/a/b/c"}, {{"/", {"/etc"}}, {"/a/b", {"/a/b/c"}}}},
        {{"/"}, {{"/", {"/"}}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(desktopItemsByFolder(c.items), c.groups) << c.items.size();
}

TEST(DesktopBus, ViewModeTravelsAsItsNumber)
{
    for (ViewMode mode : {ViewMode::Icon, ViewMode::List, ViewMode::Column, ViewMode::Peek})
        EXPECT_EQ(desktopViewFromNumber(desktopViewNumber(mode)), mode);
    EXPECT_EQ(desktopViewNumber(ViewMode::Column), 3);
    for (int unknown : {0, -1, 5, 99})
        EXPECT_EQ(desktopViewFromNumber(unknown), ViewMode::List) << unknown;
}

// Nothing to hand over to: the second launch then runs alone, and never later than its
// wait (the bound is generous; a hung handshake would hold it for good).
TEST(DesktopBus, HandOverGivesUpWithinItsWait)
{
    testApp();
    FakeSessionBus silent; // accepts, never answers
    struct Case {
        const char* name;
        std::string address;
    } cases[] = {
        {"no address", ""},
        {"nothing at the address", "unix:path=" + testHome() + "/no-bus"},
        {"silent bus", silent.address()},
    };
    for (const auto& c : cases) {
        const auto start = Clock::now();
        EXPECT_FALSE(desktopHandOver(QString::fromStdString(c.address), {"/tmp"}, ViewMode::List, 300ms)) << c.name;
        EXPECT_LT(Clock::now() - start, 2s) << c.name;
    }
}

// A bus that answers the start-up knock and then falls silent: the launch gives up its
// hand-over after its wait, runs alone (its window grabbed, then it quits), and exits.
TEST(DesktopBus, ALaunchOnABusThatStopsAnsweringRunsAlone)
{
    FakeSessionBus halfDead({}, std::nullopt, "OK 0123456789abcdef0123456789abcdef\r\n");
    const std::string shot = testHome() + "/alone.png";
    const char* slow = std::getenv("BRONDEL_TEST_SLOWDOWN"); // instrumented builds run slower
    const int slowdown = std::max(1, slow ? std::atoi(slow) : 1);
    const auto start = Clock::now();
    std::string out, err;
    EXPECT_EQ(testRun("env DBUS_SESSION_BUS_ADDRESS='" + halfDead.address() + "' QT_QPA_PLATFORM=offscreen "
                          "BRONDEL_SCREENSHOT='" + shot + "' timeout 30 '" + testBrondel() + "' '" + testHome() + "'",
                      &out, &err),
              0)
        << err;
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(8 * slowdown));
    EXPECT_EQ(::access(shot.c_str(), F_OK), 0);
    EXPECT_GE(halfDead.accepted(), 2); // the knock, then the hand-over's connection
}

TEST(DesktopBus, NoBrondelOnALiveBusAnswersAtOnce)
{
    if (!std::getenv(kPrivateBus)) {
        std::string out, err;
        const int status = testRun(std::string("dbus-run-session -- env ") + kPrivateBus + "=1 '" + testSelfPath()
                                       + "' --gtest_filter=DesktopBus.NoBrondelOnALiveBusAnswersAtOnce",
                                   &out, &err);
        EXPECT_EQ(status, 0) << out << err;
        EXPECT_NE(out.find("[  PASSED  ] 1 test"), std::string::npos) << out;
        return;
    }
    testApp();
    const QString address = QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS"));
    const auto start = Clock::now();
    // The bus says at once that nobody holds the name; nothing is started for it.
    EXPECT_FALSE(desktopHandOver(address, {"/tmp"}, ViewMode::List, 5s));
    EXPECT_LT(Clock::now() - start, 3s);
}

} // namespace
