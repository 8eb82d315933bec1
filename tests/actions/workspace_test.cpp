// Reveal in the file manager never holds up the main thread: without a bus the fallback
// runs at once, a bus that hangs up sends it back as soon as the bus thread knows, and a
// bus that accepts and never answers gets it at the deadline while the windows go on.

#include "../window/gui_test_main.h"
#include "actions/workspace.h"
#include "support/fake_session_bus.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>

using namespace std::chrono_literals;

class WorkspaceTest : public QObject {
    Q_OBJECT
private slots:
    void withoutABusTheFallbackRunsAtOnce()
    {
        for (const char* address : {static_cast<const char*>(nullptr), ""}) {
            ScopedEnvVar bus("DBUS_SESSION_BUS_ADDRESS", address);
            int fallbacks = 0;
            workspaceReveal("/tmp/x", [&] { ++fallbacks; });
            QCOMPARE(fallbacks, 1);
        }
    }

    void aBusThatFailsOrFallsSilentFallsBackWithoutAStall_data()
    {
        QTest::addColumn<int>("hangUpMs"); // 0: never hangs up
        QTest::addColumn<int>("atLeastMs");
        QTest::addColumn<int>("atMostMs");
        QTest::newRow("hangs up") << 150 << 100 << 3000;
        // The 5 s limit runs on coarse timers, which may fire up to 5% early.
        QTest::newRow("silent") << 0 << 4700 << 9000;
    }

    void aBusThatFailsOrFallsSilentFallsBackWithoutAStall()
    {
        QFETCH(int, hangUpMs);
        QFETCH(int, atLeastMs);
        QFETCH(int, atMostMs);
        FakeSessionBus fake({}, hangUpMs ? std::optional(std::chrono::milliseconds(hangUpMs)) : std::optional(60s));
        ScopedEnvVar bus("DBUS_SESSION_BUS_ADDRESS", fake.address().c_str());

        // A heartbeat on the main thread: any wait on the bus there would stop it.
        QElapsedTimer clock;
        clock.start();
        qint64 last = 0, longestGap = 0;
        QTimer beat;
        connect(&beat, &QTimer::timeout, this, [&] {
            longestGap = std::max(longestGap, clock.elapsed() - last);
            last = clock.elapsed();
        });
        beat.start(5);

        int fallbacks = 0;
        qint64 fellBackAt = -1;
        workspaceReveal("/tmp/x", [&] {
            ++fallbacks;
            fellBackAt = clock.elapsed();
        });
        QCOMPARE(fallbacks, 0); // not before the bus has had its say
        QTRY_VERIFY_WITH_TIMEOUT(fallbacks == 1, atMostMs);
        QVERIFY2(fellBackAt >= atLeastMs, qPrintable(QString::number(fellBackAt)));
        QTest::qWait(300);
        QCOMPARE(fallbacks, 1); // settled once, whatever comes later
        const char* slowdown = std::getenv("BRONDEL_TEST_SLOWDOWN");
        QVERIFY2(longestGap < 100 * (slowdown ? std::atoi(slowdown) : 1), qPrintable(QString::number(longestGap)));
    }
};

BRONDEL_GUI_TEST_MAIN(WorkspaceTest)
#include "workspace_test.moc"
