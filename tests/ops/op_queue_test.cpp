// The queue as the GUI drives it: jobs in the background, notices on the queue's thread,
// questions answered later, pause, cancel, undo and redo.

#include "fs/file_io.h"
#include "ops/op_queue.h"
#include "support/temp_tree.h"
#include "support/test_app.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>
#include <functional>
#include <map>
#include <sys/stat.h>

namespace {

bool exists(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

// Records what the queue says.
struct Listener {
    std::map<OpJobId, OpResult> finished;
    std::vector<std::pair<OpJobId, OpConflict>> conflicts;
    std::vector<std::pair<OpJobId, OpError>> errors;
    std::vector<std::pair<UndoOutcome, QString>> undos;
    std::vector<OpJobId> started;
    bool sawProgress = false;
    bool wrongThread = false;

    explicit Listener(OpQueue& queue)
    {
        auto onMain = [this] {
            if (QThread::currentThread() != QCoreApplication::instance()->thread())
                wrongThread = true;
        };
        QObject::connect(&queue, &OpQueue::jobStarted, [=, this](OpJobId job) { onMain(); started.push_back(job); });
        QObject::connect(&queue, &OpQueue::progressChanged, [=, this](OpJobId, const OpProgress&) {
            onMain();
            sawProgress = true;
        });
        QObject::connect(&queue, &OpQueue::jobFinished, [=, this](OpJobId job, const OpResult& result) {
            onMain();
            finished[job] = result;
        });
        QObject::connect(&queue, &OpQueue::conflictAsked, [=, this](OpJobId job, const OpConflict& conflict) {
            onMain();
            conflicts.emplace_back(job, conflict);
        });
        QObject::connect(&queue, &OpQueue::errorAsked, [=, this](OpJobId job, const OpError& error) {
            onMain();
            errors.emplace_back(job, error);
        });
        QObject::connect(&queue, &OpQueue::undoFinished, [=, this](UndoOutcome outcome, const QString& text) {
            onMain();
            undos.emplace_back(outcome, text);
        });
    }
};

// A tree where src/n.txt ("new") clashes with dst/n.txt ("old").
void makeClash(TempTree& tree)
{
    tree.file("src/n.txt", "new");
    tree.file("dst/n.txt", "old");
}

} // namespace

TEST(OpQueue, RunsAJobThenUndoesAndRedoesIt)
{
    testApp();
    TempTree tree;
    tree.file("a.txt", "alpha");
    tree.dir("dst");
    OpQueue queue;
    Listener listener(queue);
    const OpJobId job = queue.submit({OpKind::Copy, {tree.path("a.txt")}, tree.path("dst"), {}});
    ASSERT_TRUE(testSpinUntil([&] { return listener.finished.count(job) > 0; }));
    EXPECT_EQ(listener.finished[job].status, OpStatus::Done);
    EXPECT_EQ(listener.finished[job].created, std::vector<std::string>{tree.path("dst/a.txt")});
    EXPECT_EQ(listener.started, std::vector<OpJobId>{job});
    EXPECT_TRUE(listener.sawProgress);
    EXPECT_EQ(queue.activeJobs(), 0);
    EXPECT_EQ(queue.undoText(), "Undo Copy");
    EXPECT_FALSE(queue.canRedo());

    queue.undo();
    ASSERT_TRUE(testSpinUntil([&] { return listener.undos.size() == 1; }));
    EXPECT_EQ(listener.undos[0], std::make_pair(UndoOutcome::Done, QString("Undo Copy")));
    EXPECT_FALSE(exists(tree.path("dst/a.txt")));
    EXPECT_FALSE(queue.canUndo());
    EXPECT_EQ(queue.redoText(), "Redo Copy");

    queue.redo();
    ASSERT_TRUE(testSpinUntil([&] { return listener.undos.size() == 2; }));
    EXPECT_EQ(listener.undos[1], std::make_pair(UndoOutcome::Done, QString("Redo Copy")));
    EXPECT_EQ(fileReadAll(tree.path("dst/a.txt")), "alpha");
    EXPECT_EQ(queue.undoText(), "Undo Copy");
    EXPECT_FALSE(listener.wrongThread);
}

TEST(OpQueue, QuestionsWaitForTheirAnswers)
{
    testApp();
    TempTree tree;
    makeClash(tree);
    OpQueue queue;
    Listener listener(queue);
    const OpJobId job = queue.submit({OpKind::Copy, {tree.path("src/n.txt"), tree.path("src/gone")}, tree.path("dst"), {}});
    ASSERT_TRUE(testSpinUntil([&] { return !listener.conflicts.empty(); }));
    const OpConflict conflict = listener.conflicts[0].second;
    EXPECT_EQ(conflict.target, tree.path("dst/n.txt"));

    // A stale answer is ignored; while no answer comes, nothing is touched.
    queue.answerConflict(job, conflict.questionId + 100, {ConflictChoice::Replace, ConflictScope::ThisItem});
    testSpinUntil([] { return false; }, 300);
    EXPECT_EQ(fileReadAll(tree.path("dst/n.txt")), "old");
    EXPECT_EQ(listener.finished.count(job), 0u);

    // Paused while answering: the job holds until resumed.
    queue.pause(job);
    queue.answerConflict(job, conflict.questionId, {ConflictChoice::KeepBoth, ConflictScope::ThisItem});
    testSpinUntil([] { return false; }, 300);
    EXPECT_TRUE(listener.errors.empty());
    queue.resume(job);

    // The missing second source asks about an error; skipping it ends the job.
    ASSERT_TRUE(testSpinUntil([&] { return !listener.errors.empty(); }));
    EXPECT_EQ(listener.errors[0].second.path, tree.path("src/gone"));
    EXPECT_EQ(listener.errors[0].second.error, ENOENT);
    queue.answerError(job, listener.errors[0].second.questionId, ErrorChoice::Skip);
    ASSERT_TRUE(testSpinUntil([&] { return listener.finished.count(job) > 0; }));
    EXPECT_EQ(listener.finished[job].skipped, 1u);
    EXPECT_EQ(fileReadAll(tree.path("dst/n.txt")), "old");
    EXPECT_EQ(fileReadAll(tree.path("dst/n (2).txt")), "new");
}

TEST(OpQueue, CancelWhileAskingChangesNothing)
{
    testApp();
    TempTree tree;
    makeClash(tree);
    OpQueue queue;
    Listener listener(queue);
    const OpJobId job = queue.submit({OpKind::Move, {tree.path("src/n.txt")}, tree.path("dst"), {}});
    ASSERT_TRUE(testSpinUntil([&] { return !listener.conflicts.empty(); }));
    queue.cancel(job);
    ASSERT_TRUE(testSpinUntil([&] { return listener.finished.count(job) > 0; }));
    EXPECT_EQ(listener.finished[job].status, OpStatus::Cancelled);
    EXPECT_EQ(fileReadAll(tree.path("dst/n.txt")), "old");
    EXPECT_EQ(fileReadAll(tree.path("src/n.txt")), "new");
    EXPECT_FALSE(queue.canUndo());
}

TEST(OpQueue, UndoThatNoLongerAppliesIsDropped)
{
    testApp();
    TempTree tree;
    tree.file("a.txt", "a");
    OpQueue queue;
    Listener listener(queue);
    const OpJobId job = queue.submit({OpKind::Rename, {tree.path("a.txt")}, {}, "b.txt"});
    ASSERT_TRUE(testSpinUntil([&] { return listener.finished.count(job) > 0; }));
    EXPECT_EQ(queue.undoText(), "Undo Rename");
    tree.file("b.txt", "edited since");
    queue.undo();
    ASSERT_TRUE(testSpinUntil([&] { return !listener.undos.empty(); }));
    EXPECT_EQ(listener.undos[0].first, UndoOutcome::CannotApply);
    EXPECT_EQ(fileReadAll(tree.path("b.txt")), "edited since");
    EXPECT_FALSE(exists(tree.path("a.txt")));
    EXPECT_FALSE(queue.canUndo());
    EXPECT_FALSE(queue.canRedo());
}

TEST(OpQueue, GoingAwayWithAJobWaitingOnAQuestionDoesNotHang)
{
    testApp();
    TempTree tree;
    makeClash(tree);
    QElapsedTimer timer;
    {
        OpQueue queue;
        Listener listener(queue);
        queue.submit({OpKind::Copy, {tree.path("src/n.txt")}, tree.path("dst"), {}});
        ASSERT_TRUE(testSpinUntil([&] { return !listener.conflicts.empty(); }));
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), 5000);
    // The job saw the cancel and left the old file alone.
    testSpinUntil([] { return false; }, 200);
    EXPECT_EQ(fileReadAll(tree.path("dst/n.txt")), "old");
}
