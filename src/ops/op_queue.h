#pragma once
// The file operations as the GUI sees them: jobs submitted here run in the background,
// one lane per destination device (jobs on one device one after another, different
// devices at once), and report through signals emitted on the thread that made the queue.
// Questions (name clashes, failed items) arrive as signals and are answered through
// answerConflict / answerError; the job waits for the answer and touches nothing in the
// meantime. Finished jobs join the undo stack.

#include "fs/call_mailbox.h"
#include "ops/op_types.h"

#include <QMetaType>
#include <QObject>
#include <QString>
#include <memory>

class OpQueue : public QObject {
    Q_OBJECT
public:
    explicit OpQueue(QObject* parent = nullptr);
    // Cancels every job; a job stuck in a system call finishes on its own.
    ~OpQueue() override;

    OpJobId submit(const OpRequest& request);
    void pause(OpJobId job);
    void resume(OpJobId job);
    void cancel(OpJobId job);
    void answerConflict(OpJobId job, uint64_t questionId, OpConflictAnswer answer);
    void answerError(OpJobId job, uint64_t questionId, ErrorChoice choice);

    // The undo stack (the last 50 jobs). The texts are menu items: "Undo Rename".
    bool canUndo() const;
    bool canRedo() const;
    QString undoText() const;
    QString redoText() const;
    // Runs in the background like a job; undoFinished tells the outcome.
    void undo();
    void redo();

    // Jobs submitted and not yet finished.
    int activeJobs() const;

    // The state shared with the background threads (opaque outside the queue).
    struct Shared;

signals:
    void jobQueued(OpJobId job, OpKind kind);
    void jobStarted(OpJobId job);
    void progressChanged(OpJobId job, const OpProgress& progress); // at most ~10 times a second
    void conflictAsked(OpJobId job, const OpConflict& conflict);
    void errorAsked(OpJobId job, const OpError& error);
    void jobFinished(OpJobId job, const OpResult& result);
    void undoChanged();
    // `text` is the menu text of what was undone or redone ("Undo Rename").
    void undoFinished(UndoOutcome outcome, const QString& text);

private:
    CallMailbox m_mailbox; // the jobs' notices, in the order they were posted
    std::shared_ptr<Shared> m_shared;
};

Q_DECLARE_METATYPE(OpProgress)
Q_DECLARE_METATYPE(OpConflict)
Q_DECLARE_METATYPE(OpError)
Q_DECLARE_METATYPE(OpResult)
Q_DECLARE_METATYPE(OpKind)
Q_DECLARE_METATYPE(UndoOutcome)
