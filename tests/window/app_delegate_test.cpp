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

#include <algorithm>

#include <chrono>

namespace {

using namespace std::chrono_literals;

// The real executable on `folder`: it grabs its front window 1.5 s after launch and
// quits (the screenshot aid). `timeout` only turns a hang into a failure.
// How much slower an instrumented build runs (1 in a normal build): the bounds below
// only have to tell "at once" from "waits for the bus", which takes many seconds.
int slowdown()
{
    return std::max(1, qEnvironmentVariableIntValue("BRONDEL_TEST_SLOWDOWN"));
}

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
            // Hanging up after 3 s turns a launch that waits for the bus into a failure
            // (the bounds below leave room for a busy machine).
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
                QVERIFY2(launch < 1000 * slowdown(), qPrintable(QString::number(launch)));
                QTRY_COMPARE(bus.accepted(), 1); // the subscription is under way...
                QTest::qWait(100);
                QVERIFY(cardsChangedBusPending()); // ...and still waiting
                timer.restart();
            } // quitting closes the windows
            QVERIFY2(timer.elapsed() < 1000 * slowdown(), qPrintable(QString::number(timer.elapsed())));
        } // the bus hangs up: the waiting thread comes back
        QTRY_VERIFY(!cardsChangedBusPending());
    }

    // The whole program, two instances started together, on each platform: with a bus
    // that never answers and never hangs up, and with no bus address (the session's usual
    // socket, $XDG_RUNTIME_DIR/bus, is then a silent trap that nobody may knock on). Both
    // show a window and end on their own; on xcb, Qt's accessibility bridge would
    // otherwise wait for the bus on the UI thread.
    void launchAndQuitNeverWaitForTheBus_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<bool>("silentBus");
        for (const char* platform : {"offscreen", "xcb"}) {
            QTest::newRow((std::string(platform) + ", silent bus").c_str()) << platform << true;
            QTest::newRow((std::string(platform) + ", no bus address").c_str()) << platform << false;
        }
    }

    void launchAndQuitNeverWaitForTheBus()
    {
        QFETCH(QString, platform);
        QFETCH(bool, silentBus);
        std::string prefix = "env QT_QPA_PLATFORM=" + platform.toStdString();
        if (platform == "xcb") {
            if (testRun("command -v xvfb-run >/dev/null") != 0)
                QSKIP("xvfb-run is not installed");
            prefix = "xvfb-run -a " + prefix;
        }
        TempTree tree;
        const std::string runtimeDir = tree.dir("runtime");
        FakeSessionBus trap(runtimeDir + "/bus", 3s);
        FakeSessionBus silent; // never hangs up
        const std::string env = (silentBus ? "DBUS_SESSION_BUS_ADDRESS='" + silent.address() + "'"
                                           : std::string("-u DBUS_SESSION_BUS_ADDRESS"))
            + " XDG_RUNTIME_DIR='" + runtimeDir + "'";
        const std::string one = tree.path("one.png"), two = tree.path("two.png");
        QElapsedTimer timer;
        timer.start();
        const int status = testRun(prefix + " sh -c \"" + guiCommand(env, tree.root(), one) + " & a=\\$!; "
                                   + guiCommand(env, tree.root(), two) + "; b=\\$?; wait \\$a && exit \\$b\"");
        QCOMPARE(status, 0);
        QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(QFile::exists(QString::fromStdString(one)));
        QVERIFY(QFile::exists(QString::fromStdString(two)));
        QCOMPARE(trap.accepted(), 0);
        if (silentBus)
            QVERIFY(silent.accepted() >= 2); // each instance did try the bus
    }
};

BRONDEL_GUI_TEST_MAIN(AppDelegateTest)
#include "app_delegate_test.moc"
