// The progress panel on real jobs: it appears with a job and goes with it, expands to
// the list of jobs, shows a job's bar and its line (amounts, rate, time left), and its
// Pause, Resume and Cancel buttons and the failed item's Retry and Skip act on the queue.

#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/op_progress_panel.h"
#include "services/op_progress_model.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

#include <unistd.h>

namespace {

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

// The failed-item question the panel opened in `window`, once it is up.
QMessageBox* questionIn(QWidget& window)
{
    QMessageBox* box = nullptr;
    (void)QTest::qWaitFor([&] {
        for (QMessageBox* shown : window.findChildren<QMessageBox*>())
            if (shown->isVisible())
                box = shown;
        return box != nullptr;
    }, 10000);
    return box;
}

void press(QMessageBox* box, const QString& text)
{
    for (QAbstractButton* button : box->buttons())
        if (button->text() == text) {
            button->click();
            return;
        }
    QFAIL(qPrintable("no button " + text));
}

OpRequest copyOf(const std::string& source, const std::string& folder)
{
    OpRequest request;
    request.kind = OpKind::Copy;
    request.sources = {source};
    request.targetDir = folder;
    return request;
}

} // namespace

class OpProgressPanelTest : public QObject {
    Q_OBJECT
    // One queue for the process: the panels remember which questions were asked by job.
    OpQueue m_queue;

private slots:
    void expandShowsTheJobAndPauseHoldsIt()
    {
        TempTree tree;
        const std::string folder = tree.dir("to");
        const std::string source = tree.path("later.txt"); // missing: the job asks about it
        QWidget window;
        auto* panel = new OpProgressPanel(&m_queue, &window);
        window.resize(500, 200);
        window.show();
        QVERIFY(!panel->isVisibleTo(&window));

        const OpJobId job = m_queue.submit(copyOf(source, folder));
        QMessageBox* box = questionIn(window);
        QVERIFY(box);
        QVERIFY(box->text().contains(QStringLiteral("later.txt")));
        QVERIFY(panel->isVisibleTo(&window));
        QVERIFY(!panel->findChild<QWidget*>(QStringLiteral("jobList"))->isVisibleTo(&window));

        panel->findChild<QToolButton*>(QStringLiteral("expandJobs"))->click();
        QVERIFY(panel->expanded());
        QVERIFY(panel->findChild<QWidget*>(QStringLiteral("jobList"))->isVisibleTo(&window));
        QVERIFY(panel->findChild<QLabel*>(QStringLiteral("jobTitle"))->text().startsWith(QStringLiteral("Copying")));

        // The row follows the job's progress: its bar and its line.
        OpProgress progress;
        progress.bytesDone = 1 << 20;
        progress.bytesTotal = 4 << 20;
        progress.bytesPerSecond = 2 << 20;
        progress.secondsLeft = 2;
        panel->model()->progressChanged(job, progress);
        auto* bar = panel->findChild<QProgressBar*>(QStringLiteral("jobBar"));
        QCOMPARE(bar->maximum(), 1000);
        QCOMPARE(bar->value(), 250);
        const QString line = panel->findChild<QLabel*>(QStringLiteral("jobLine"))->text();
        QVERIFY2(line.contains(QStringLiteral("/s")) && line.contains(QStringLiteral("left")), qPrintable(line));

        // Paused, the job retried after the answer waits before touching anything.
        auto* pause = panel->findChild<QPushButton*>(QStringLiteral("jobPause"));
        QCOMPARE(pause->text(), QStringLiteral("Pause"));
        pause->click();
        tree.file("later.txt", "data");
        press(box, QStringLiteral("Retry"));
        QTRY_COMPARE_WITH_TIMEOUT(pause->text(), QStringLiteral("Resume"), 10000);
        QVERIFY(panel->findChild<QLabel*>(QStringLiteral("jobLine"))->text().contains(QStringLiteral("Paused")));
        QTest::qWait(100);
        QVERIFY(!exists(folder + "/later.txt"));
        pause->click();
        QTRY_VERIFY_WITH_TIMEOUT(exists(folder + "/later.txt"), 10000);
        QTRY_VERIFY(!panel->isVisibleTo(&window)); // no job left
    }

    void cancelAndSkip()
    {
        TempTree tree;
        const std::string folder = tree.dir("to");
        QWidget window;
        auto* panel = new OpProgressPanel(&m_queue, &window);
        panel->setExpanded(true);
        window.show();
        QSignalSpy finished(&m_queue, &OpQueue::jobFinished);

        // Cancel from the job's row: the job ends and leaves nothing.
        m_queue.submit(copyOf(tree.path("missing.txt"), folder));
        QMessageBox* box = questionIn(window);
        QVERIFY(box);
        panel->findChild<QPushButton*>(QStringLiteral("jobCancel"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 10000);
        QCOMPARE(finished[0][1].value<OpResult>().status, OpStatus::Cancelled);
        QCOMPARE(panel->model()->rowCount(), 0);
        box->close();

        // Skip in the question: the job ends with the item listed as failed.
        m_queue.submit(copyOf(tree.path("absent.txt"), folder));
        box = questionIn(window);
        QVERIFY(box);
        press(box, QStringLiteral("Skip"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 10000);
        const OpResult skipped = finished[1][1].value<OpResult>();
        QCOMPARE(skipped.status, OpStatus::Done);
        QCOMPARE(skipped.skipped, uint64_t(1));
        QCOMPARE(skipped.failed.size(), size_t(1));
        QCOMPARE(skipped.failed[0], (OpItemError{tree.path("absent.txt"), ENOENT}));
    }
};

BRONDEL_GUI_TEST_MAIN(OpProgressPanelTest)
#include "op_progress_panel_test.moc"
