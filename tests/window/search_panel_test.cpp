// The search of a browser window: results come in batches while the walk goes on, a
// result opens or reveals, and Escape or leaving the folder stop the walk.

#include "gui_test_main.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"
#include "window/search_panel.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTreeView>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

std::atomic<int> g_opens{0};
std::atomic<int> g_openDelayMs{0};

// Folder opens that take their time, as on a slow drive.
int openatSlow(int dirfd, const char* path, int flags, mode_t mode)
{
    ++g_opens;
    std::this_thread::sleep_for(std::chrono::milliseconds(g_openDelayMs.load()));
    return sysCallsReal().openat(dirfd, path, flags, mode);
}

// Ctrl+F in a shown window, `query` typed and run at once.
SearchPanel* startSearch(BrowserFrame& frame, const QString& query)
{
    frame.show();
    frame.activateWindow();
    if (!QTest::qWaitForWindowActive(&frame))
        return nullptr;
    QTest::keyClick(&frame, Qt::Key_F, Qt::ControlModifier);
    SearchPanel* panel = frame.search();
    if (!panel->isVisible() || !panel->field()->hasFocus())
        return nullptr;
    QTest::keyClicks(panel->field(), query);
    panel->runNow(); // no wait for the typing pause
    return panel;
}

} // namespace

class SearchPanelTest : public QObject {
    Q_OBJECT
private slots:
    void batchesWhileWalkingAndStops()
    {
        TempTree tree;
        for (int i = 0; i < 200; ++i)
            tree.file("d" + std::to_string(i) + "/hit-" + std::to_string(i) + ".txt");
        SysCalls calls = sysCallsReal();
        calls.openat = openatSlow;
        SysCallsOverride slow(calls);
        TestContext t;
        auto frame = testFrame(t, tree.root());
        t.scans.finishAll();

        g_openDelayMs = 3; // about a third of a second of walking
        QElapsedTimer clock;
        clock.start();
        SearchPanel* panel = startSearch(*frame, QStringLiteral("HIT"));
        QVERIFY(panel);
        QSignalSpy inserted(&panel->results(), &QAbstractItemModel::rowsInserted);
        QTRY_VERIFY(panel->results().rowCount() > 0 && panel->isRunning()); // shown while walking
        QTRY_VERIFY_WITH_TIMEOUT(!panel->isRunning(), 10000);
        QCOMPARE(panel->results().rowCount(), 200);
        QCOMPARE(inserted.size(), panel->batches());
        // More than one batch, and at most one per 100 ms (plus the last, at the end).
        const qint64 most = clock.elapsed() / SearchPanel::kBatchMs + 1;
        QVERIFY2(panel->batches() >= 2 && panel->batches() <= most, qPrintable(QString::number(panel->batches())));

        g_openDelayMs = 20; // four seconds, if nothing stopped it
        g_opens = 0;
        panel->runNow();
        QTRY_VERIFY(panel->results().rowCount() > 0);
        QTest::keyClick(panel->field(), Qt::Key_Escape);
        QVERIFY(!panel->isRunning());
        panel->waitForIdle(); // at most the folders being read when it was stopped
        const int opens = g_opens;
        QVERIFY(opens < 100);
        QTest::keyClick(panel->field(), Qt::Key_Escape); // nothing runs: it closes
        QVERIFY(!panel->isVisible());

        panel = startSearch(*frame, QString()); // the query typed before is kept
        QVERIFY(panel && panel->isRunning());
        QTRY_VERIFY(panel->results().rowCount() > 0);
        frame->navigateTo(tree.path("d1")); // leaving the folder
        QVERIFY(!panel->isRunning());
        panel->waitForIdle();
        QVERIFY(int(g_opens) < opens + 100);
    }

    void aResultOpensOrRevealsIt()
    {
        TempTree tree;
        tree.file("a/deep/found.txt");
        tree.dir("b/found-folder");
        TestContext t;
        auto frame = testFrame(t, tree.root());
        t.scans.finishAll();
        SearchPanel* panel = startSearch(*frame, QStringLiteral("found"));
        QVERIFY(panel);
        QTRY_VERIFY(!panel->isRunning());
        QCOMPARE(panel->results().rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            const NameSearchHit& hit = panel->results().hit(row);
            emit panel->resultsView()->activated(panel->results().index(row, 0));
            t.scans.finishAll();
            QCOMPARE(frame->activePane()->currentLocation(), hit.isDir ? hit.path : tree.path("a/deep"));
            if (!hit.isDir)
                QCOMPARE(frame->activePane()->selectedPaths(), std::vector<std::string>{hit.path});
        }
    }
};

BRONDEL_GUI_TEST_MAIN(SearchPanelTest)
#include "search_panel_test.moc"
