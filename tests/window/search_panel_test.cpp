// The search of a browser window: results come in batches while the walk goes on, a
// result opens or reveals, and Escape or leaving the folder stop the walk.

#include "gui_test_main.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"
#include "window/search_panel.h"

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

// A tree of `folders` folders holding one match each, read slowly.
struct SlowTree {
    TempTree tree;
    SysCalls calls = sysCallsReal();
    std::unique_ptr<SysCallsOverride> override;

    SlowTree(int folders, int delayMs)
    {
        for (int i = 0; i < folders; ++i)
            tree.file("d" + std::to_string(i) + "/hit-" + std::to_string(i) + ".txt");
        tree.file("d0/other.txt");
        g_opens = 0;
        g_openDelayMs = delayMs;
        calls.openat = openatSlow;
        override = std::make_unique<SysCallsOverride>(calls);
    }
};

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
    void resultsArriveInBatchesWhileWalking()
    {
        SlowTree slow(40, 8); // about a third of a second of walking
        TestContext t;
        auto frame = testFrame(t, slow.tree.root());
        t.scans.finishAll();
        SearchPanel* panel = startSearch(*frame, QStringLiteral("HIT"));
        QVERIFY(panel);
        QSignalSpy inserted(&panel->results(), &QAbstractItemModel::rowsInserted);
        QVERIFY(panel->isRunning());
        QTRY_VERIFY_WITH_TIMEOUT(panel->results().rowCount() > 0 && panel->isRunning(), 5000); // while walking
        QTRY_VERIFY_WITH_TIMEOUT(!panel->isRunning(), 10000);
        QCOMPARE(panel->results().rowCount(), 40);
        QCOMPARE(inserted.size(), panel->batches());
        QVERIFY2(panel->batches() >= 2 && panel->batches() <= 10, qPrintable(QString::number(panel->batches())));
        QCOMPARE(panel->results().index(0, SearchResults::Folder).data().toString().left(1), QStringLiteral("/"));
        panel->waitForIdle();
    }

    void escapeAndLeavingTheFolderStopTheWalk()
    {
        SlowTree slow(200, 20); // four seconds, if nothing stopped it
        TestContext t;
        auto frame = testFrame(t, slow.tree.root());
        t.scans.finishAll();
        SearchPanel* panel = startSearch(*frame, QStringLiteral("hit"));
        QVERIFY(panel);
        QTRY_VERIFY(panel->results().rowCount() > 0);
        QTest::keyClick(panel->field(), Qt::Key_Escape);
        QVERIFY(!panel->isRunning());
        panel->waitForIdle(); // at most the folder being read when it was stopped
        const int opens = g_opens;
        QVERIFY(opens < 100);
        QTest::qWait(2 * SearchPanel::kBatchMs);
        QCOMPARE(int(g_opens), opens);
        QVERIFY(panel->isVisible());
        QTest::keyClick(panel->field(), Qt::Key_Escape); // nothing runs: it closes
        QVERIFY(!panel->isVisible());

        panel = startSearch(*frame, QString()); // the query typed before is kept
        QVERIFY(panel && panel->isRunning());
        QTRY_VERIFY(panel->results().rowCount() > 0);
        frame->navigateTo(slow.tree.path("d1"));
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
        std::vector<std::string> revealed;
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
