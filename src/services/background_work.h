#pragma once
// Background work for the windows and views: tasks run on a pool that is let go of at
// quit (a task stuck on a dead mount never holds the exit back), and what a task leaves
// to do afterwards runs on the main thread, only while the object that asked still
// exists.

#include "fs/call_mailbox.h"
#include "fs/detached_pool.h"

#include <QObject>

#include <functional>
#include <memory>

class BackgroundWork : public QObject {
    Q_OBJECT
public:
    // Runs off the main thread and returns what to do on the main thread afterwards
    // (empty: nothing).
    using Work = std::function<std::function<void()>()>;

    BackgroundWork(int threads, WorkClass work, WhenStuck stuck = WhenStuck::AddThread, QObject* parent = nullptr);
    ~BackgroundWork() override; // never waits: queued tasks are dropped, running ones let go

    // `work` on the pool, its continuation on the main thread unless `context` has been
    // destroyed by then (no context: the continuation always runs while this object lives).
    void submit(QObject* context, Work work);

    // A task that hands the main thread several results as it goes: `post` delivers each
    // to the main thread, under the same rule as a continuation.
    using Post = std::function<void(std::function<void()>)>;
    void submitStreaming(QObject* context, std::function<void(const Post& post)> work);

    // Waits until nothing is queued or running (tests, benchmarks).
    void waitForDone() { m_pool.waitForDone(); }

private:
    CallMailbox m_mailbox; // continuations; a continuation may destroy this object
    DetachedPool m_pool;
};
