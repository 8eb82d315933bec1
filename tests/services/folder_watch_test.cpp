// A folder's changes reach the pane as few notices per burst, the last soon after the
// burst ends, and at least every so often while it goes on.

#include "services/folder_watch.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <string>

namespace {

int slowdown()
{
    const int factor = qEnvironmentVariableIntValue("BRONDEL_TEST_SLOWDOWN");
    return factor > 1 ? factor : 1;
}

} // namespace

class FolderWatchTest : public QObject {
    Q_OBJECT
private slots:
    // A read that waits on the token starts once the kernel watches the folder; the pane
    // hears of it once; the same folder again keeps its watch, no folder has none.
    void aWatchTellsWhenItIsInPlace()
    {
        TempTree tree;
        FolderWatch watch;
        QSignalSpy watching(&watch, &FolderWatch::watching);
        QCOMPARE(watch.watch({}), uint64_t(0));
        const uint64_t token = watch.watch(tree.root());
        QVERIFY(token > 0);
        QVERIFY(folderWatchWait(token, std::chrono::seconds(5)));
        QTRY_COMPARE(watching.count(), 1);
        QVERIFY(watch.established());
        QCOMPARE(watch.watch(tree.root()), token);
        const uint64_t next = watch.watch(tree.path("."));
        QVERIFY(next > token);
        QVERIFY(!watch.established());
        QVERIFY(folderWatchWait(next, std::chrono::seconds(5)));
        QTRY_COMPARE(watching.count(), 2);
    }

    // Besides entries coming and going, a file written and closed and a changed
    // permission are noticed (sizes and dates then show their new values); a folder
    // deleted under the watch says so too.
    void changesInsideEntriesAndTheFolderGoingAreNoticed()
    {
        TempTree tree;
        const std::string dir = tree.dir("inside");
        const std::string file = tree.file("inside/notes.txt", "a");
        FolderWatch watch(nullptr, 20, 100);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        QVERIFY(folderWatchWait(watch.watch(dir), std::chrono::seconds(5)));
        {
            std::FILE* f = std::fopen(file.c_str(), "a");
            QVERIFY(f);
            std::fputs("more", f);
            std::fclose(f);
        }
        QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, 5000);
        QVERIFY(::chmod(file.c_str(), 0600) == 0);
        QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 2, 5000);
        QVERIFY(std::filesystem::remove_all(dir) > 0);
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 3, 5000);
    }

    void aBurstIsOneNoticeSoonAfterItsEnd()
    {
        TempTree tree;
        const std::string dir = tree.dir("watched");
        FolderWatch watch(nullptr, 80, 300);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        watch.watch(dir);
        QTest::qWait(200); // the watch is added on its own thread
        for (int i = 0; i < 2000; ++i)
            tree.file("watched/f" + std::to_string(i));
        QElapsedTimer sinceLast;
        sinceLast.start();
        QTRY_VERIFY_WITH_TIMEOUT(changed.count() >= 1, 5000);
        QTest::qWait(400 * slowdown());
        const int burst = changed.count();
        QVERIFY2(burst <= 4 + 2000 / 300, qPrintable(QString::number(burst))); // never one per file
        QVERIFY(changed.count() >= 1);
        // Nothing more once the folder is quiet.
        QTest::qWait(300);
        QCOMPARE(changed.count(), burst);
        // Watching something else forgets the old folder.
        watch.watch(tree.dir("other"));
        QTest::qWait(200);
        tree.file("watched/late");
        QTest::qWait(400 * slowdown());
        QCOMPARE(changed.count(), burst);
        tree.file("other/new");
        QTRY_COMPARE_WITH_TIMEOUT(changed.count(), burst + 1, 5000);
    }

    void aLongBurstStillNoticesAsItGoes()
    {
        TempTree tree;
        const std::string dir = tree.dir("busy");
        FolderWatch watch(nullptr, 200, 300);
        QSignalSpy changed(&watch, &FolderWatch::changed);
        watch.watch(dir);
        QTest::qWait(200);
        // A change every 50 ms for 1.5 s never leaves the folder quiet for 200 ms.
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; clock.elapsed() < 1500; ++i) {
            tree.file("busy/f" + std::to_string(i));
            QTest::qWait(50);
        }
        QVERIFY2(changed.count() >= 2, qPrintable(QString::number(changed.count())));
        watch.watch({});
        const int before = changed.count();
        tree.file("busy/after");
        QTest::qWait(500);
        QVERIFY(changed.count() <= before + 1); // a burst's own last notice at most
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QApplication app(argc, argv);
    FolderWatchTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "folder_watch_test.moc"
