// The cards-changed signal crossing from a `brondel card … set` process to an observer.
// Runs on a private session bus: when not already on one, the test starts itself again
// under dbus-run-session, so it never talks to the desktop's own bus.

#include "cards/cards_changed.h"

#include "support/test_env.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

namespace {

constexpr const char* kPrivateBus = "CARDS_CHANGED_TEST_PRIVATE_BUS";

std::string selfPath()
{
    char buf[4096];
    ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, size_t(n)) : "";
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
        int status = testRun(std::string("dbus-run-session -- env ") + kPrivateBus + "=1 '" + selfPath()
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
    ASSERT_TRUE(cardsChangedObserve([&] {
        ++arrived;
        app.quit();
    }));

    QProcess card;
    card.start(QString::fromStdString(testBrondel()), {"card", "drives", "set", "icon_size", "64"});
    QTimer::singleShot(20000, &app, &QCoreApplication::quit); // a guard, not a measurement
    app.exec();
    card.waitForFinished(20000);
    EXPECT_EQ(arrived, 1);
    EXPECT_EQ(card.readAllStandardOutput().toStdString(), "drives: icon_size = 64\n");
    EXPECT_EQ(card.readAllStandardError().toStdString(), "");
}

} // namespace
