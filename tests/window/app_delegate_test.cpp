// Launching the GUI never waits for the session bus: the first window opens at once and
// the cards-changed subscription follows in the background, whether the bus is silent
// or absent, and quitting does not wait for it either.

#include "cards/cards_changed.h"
#include "gui_test_main.h"
#include "support/fake_session_bus.h"
#include "support/temp_tree.h"
#include "window/app_delegate.h"
#include "window/browser_frame.h"

#include <QElapsedTimer>
#include <QFile>

#include <chrono>

namespace {

using namespace std::chrono_literals;

// The real executable on `folder`: it grabs its front window 1.5 s after launch and
// quits (the screenshot aid). `timeout` only turns a hang into a failure.
std::string guiCommand(const std::string& env, const std::string& folder, const std::string& shot)
{
    return "timeout 10 env " + env + " BRONDEL_SCREENSHOT='" + shot + "' '" + testBrondel() + "' '" + folder + "'";
}

} // namespace

class AppDelegateTest : public QObject {
    Q_OBJECT
private slots:
    void firstWindowDoesNotWaitForASilentBus()
    {
        TempTree tree;
        BrondelSettings settings;
        {
            // Hanging up after 3 s turns a launch that waits for the bus into a failure.
            FakeSessionBus bus({}, 3s);
            ScopedEnvVar address("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str());
            QElapsedTimer timer;
            {
                AppDelegate delegate({tree.root()}, RootChoice::Paths, ViewMode::List, settings);
                timer.start();
                delegate.applicationDidFinishLaunching();
                const qint64 launch = timer.elapsed();
                QCOMPARE(delegate.windows().size(), size_t(1));
                QVERIFY(delegate.windows().front()->isVisible());
                QVERIFY2(launch < 500, qPrintable(QString::number(launch)));
                QTRY_COMPARE(bus.accepted(), 1); // the subscription is under way...
                QTest::qWait(100);
                QVERIFY(cardsChangedBusPending()); // ...and still waiting
                timer.restart();
            } // quitting closes the windows
            QVERIFY2(timer.elapsed() < 500, qPrintable(QString::number(timer.elapsed())));
        } // the bus hangs up: the waiting thread comes back
        QTRY_VERIFY(!cardsChangedBusPending());
    }

    // The whole program, a bus that never answers and never hangs up: the window shows
    // and the process ends on its own.
    void quittingDoesNotWaitForASilentBus()
    {
        TempTree tree;
        FakeSessionBus bus;
        const std::string shot = testHome() + "/silent-bus.png";
        QElapsedTimer timer;
        timer.start();
        std::string out, err;
        const int status = testRun(guiCommand("DBUS_SESSION_BUS_ADDRESS='" + bus.address() + "'", tree.root(), shot),
                                   &out, &err);
        QCOMPARE(status, 0);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(QFile::exists(QString::fromStdString(shot)));
        QCOMPARE(bus.accepted(), 1);
    }

    // Two instances started together without a bus address: neither looks for a bus
    // (the session's usual socket is a silent trap here), both show a window and end.
    void twoInstancesWithoutABusNeitherLooksForOne()
    {
        TempTree tree;
        const std::string runtimeDir = tree.dir("runtime");
        FakeSessionBus trap(runtimeDir + "/bus", 3s);
        const std::string env = "-u DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR='" + runtimeDir + "'";
        const std::string one = testHome() + "/one.png", two = testHome() + "/two.png";
        QElapsedTimer timer;
        timer.start();
        const int status = testRun(guiCommand(env, tree.root(), one) + " & a=$!; " + guiCommand(env, tree.root(), two)
                                   + "; b=$?; wait $a && exit $b");
        QCOMPARE(status, 0);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(QFile::exists(QString::fromStdString(one)));
        QVERIFY(QFile::exists(QString::fromStdString(two)));
        QCOMPARE(trap.accepted(), 0);
    }
};

BRONDEL_GUI_TEST_MAIN(AppDelegateTest)
#include "app_delegate_test.moc"
