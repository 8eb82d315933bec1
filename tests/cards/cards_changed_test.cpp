// The cards-changed signal: it crosses from a `brondel card … set` process to an
// observer over a real bus, and no bus (missing, silent, unset) ever holds the command
// up. The real bus is a private one: when not already on one, the test starts itself
// again under dbus-run-session, so it never talks to the desktop's own bus.

#include "cards/cards_changed.h"

#include "cards/card_config.h"
#include "fs/file_io.h"
#include "support/fake_session_bus.h"
#include "support/test_env.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* kPrivateBus = "CARDS_CHANGED_TEST_PRIVATE_BUS";

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

TEST(CardsChanged, NameAndAddress)
{
    EXPECT_STREQ(cardsChangedName, "com.larkspine.brondel.cardsChanged");
    EXPECT_EQ(std::string(cardsChangedInterface) + "." + cardsChangedMember, cardsChangedName);
}

TEST(CardsChanged, ReachesAnObserverInAnotherProcess)
{
    if (!std::getenv(kPrivateBus)) {
        std::string out, err;
        int status = testRun(std::string("dbus-run-session -- env ") + kPrivateBus + "=1 '" + testSelfPath()
                                 + "' --gtest_filter=CardsChanged.ReachesAnObserverInAnotherProcess",
                             &out, &err);
        EXPECT_EQ(status, 0) << out << err;
        EXPECT_NE(out.find("[  PASSED  ] 1 test"), std::string::npos) << out;
        return;
    }
    int argc = 1;
    char name[] = "cards_changed_test";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    int arrived = 0;
    QProcess card;
    // The card is changed only once the subscription stands, or the signal could pass
    // before anyone listens.
    ASSERT_TRUE(cardsChangedObserve(
        [&] {
            ++arrived;
            app.quit();
        },
        nullptr,
        [&](bool subscribed) {
            EXPECT_TRUE(subscribed);
            card.start(QString::fromStdString(testBrondel()), {"card", "drives", "set", "icon_size", "64"});
        }));
    QTimer::singleShot(20000, &app, &QCoreApplication::quit); // a guard, not a measurement
    app.exec();
    card.waitForFinished(20000);
    EXPECT_EQ(arrived, 1);
    EXPECT_EQ(card.readAllStandardOutput().toStdString(), "drives: icon_size = 64\n");
    EXPECT_EQ(card.readAllStandardError().toStdString(), "");
}

// The real command against buses that cannot answer: it still saves and prints, and a
// bus costs it at most the half second of waiting over a run without one (the start-up
// time itself differs a lot between builds). When no address is given the session's
// usual bus socket ($XDG_RUNTIME_DIR/bus) is a silent trap: looking for a bus at all (as
// Qt's default session connection does, before it would autolaunch a daemon) would be
// caught there.
TEST(CardsChanged, NoBusHoldsTheCommandUp)
{
    const std::string runtimeDir = testHome() + "/runtime";
    ASSERT_TRUE(fileMakeDirs(runtimeDir));
    FakeSessionBus silent({}, 5s);
    FakeSessionBus trap(runtimeDir + "/bus", 5s);
    const std::string trapEnv = " XDG_RUNTIME_DIR='" + runtimeDir + "'";
    struct Case {
        const char* name;
        std::string env;
        int size;
        double seconds = 0;
    };
    Case cases[] = {
        {"unset", "-u DBUS_SESSION_BUS_ADDRESS" + trapEnv, 56},
        {"empty", "DBUS_SESSION_BUS_ADDRESS=" + trapEnv, 72},
        {"nothing at the address", "DBUS_SESSION_BUS_ADDRESS='unix:path=" + testHome() + "/no-bus'", 48},
        {"silent bus", "DBUS_SESSION_BUS_ADDRESS='" + silent.address() + "'", 40},
    };
    for (Case& c : cases) {
        const std::string size = std::to_string(c.size);
        std::string out, err;
        const auto start = Clock::now();
        // `timeout` only turns a hang into a failure.
        const int status = testRun("timeout 8 env " + c.env + " '" + testBrondel() + "' card drives set icon_size " + size,
                                   &out, &err);
        c.seconds = secondsSince(start);
        EXPECT_EQ(status, 0) << c.name;
        EXPECT_EQ(out, "drives: icon_size = " + size + "\n") << c.name;
        EXPECT_EQ(err, "") << c.name;
        EXPECT_EQ(cardConfigLoad("drives", "drives").iconSize, c.size) << c.name;
    }
    const double withoutBus = std::min(cases[0].seconds, cases[1].seconds);
    // Instrumented builds start threads and the bus library far more slowly; a hang
    // still fails, as `timeout` ends it only after 8 s.
    const char* slowdownVar = std::getenv("BRONDEL_TEST_SLOWDOWN");
    const double slowdown = std::max(1.0, slowdownVar ? std::atof(slowdownVar) : 1.0);
    for (const Case& c : cases)
        EXPECT_LT(c.seconds, withoutBus + 0.75 * slowdown) << c.name << ", without a bus " << withoutBus;
    EXPECT_EQ(silent.accepted(), 1); // the post was really tried
    EXPECT_EQ(trap.accepted(), 0);
}

// In process: the post gives up after its wait, and the connecting thread it leaves
// behind comes back once the bus hangs up.
TEST(CardsChanged, PostGivesUpOnASilentBus)
{
    auto bus = std::make_unique<FakeSessionBus>(std::string(), 3s); // a hang-up ends a wait that should not be
    ScopedEnvVar address("DBUS_SESSION_BUS_ADDRESS", bus->address().c_str());
    const auto start = Clock::now();
    EXPECT_EQ(cardsChangedPost(200ms), CardsPost::Unconfirmed);
    const double seconds = secondsSince(start);
    EXPECT_GE(seconds, 0.19);
    EXPECT_LT(seconds, 0.6);
    EXPECT_EQ(bus->accepted(), 1);
    EXPECT_TRUE(cardsChangedBusPending());

    bus.reset();
    for (int i = 0; i < 500 && cardsChangedBusPending(); ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_FALSE(cardsChangedBusPending());
}

TEST(CardsChanged, NoAddressMeansNoBus)
{
    for (const char* value : {static_cast<const char*>(nullptr), ""}) {
        ScopedEnvVar address("DBUS_SESSION_BUS_ADDRESS", value);
        EXPECT_EQ(cardsChangedPost(), CardsPost::NoBus);
        EXPECT_FALSE(cardsChangedObserve([] {}));
    }
}

} // namespace
