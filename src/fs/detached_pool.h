#pragma once
// A thread pool that is let go of, never joined. Its tasks may touch mounts that stop
// answering (a network share gone away, a user file system that hangs): a thread stuck
// in such a system call can neither be woken nor cancelled, so nothing may wait for it.
// Destroying the pool drops the tasks not yet started and returns at once; the threads
// finish their current task, if ever, and end on their own (the process ending ends them
// too). Threads start on demand up to the limit, run at the pool's work class and take
// tasks in the order they were given. When every thread has been busy for a while (stuck,
// most likely), a waiting task gets one extra thread, so that one dead mount does not
// starve every other read; a queue whose tasks must never overlap (WhenStuck::Wait) waits.

#include "fs/work_class.h"

#include <chrono>
#include <functional>
#include <memory>

enum class WhenStuck { AddThread, Wait };

class DetachedPool {
public:
    // Past this, a busy thread counts as stuck when a new task needs a thread.
    static constexpr std::chrono::milliseconds kStuckAfter{400};
    // Extra threads beyond the limit, at most, for tasks queued behind stuck ones.
    static constexpr int kStuckExtra = 16;

    DetachedPool(int maxThreads, WorkClass work, WhenStuck stuck = WhenStuck::AddThread);
    ~DetachedPool(); // never waits
    DetachedPool(const DetachedPool&) = delete;
    DetachedPool& operator=(const DetachedPool&) = delete;

    // Callable from any thread, a task of this pool's included.
    void start(std::function<void()> task);

    // Waits until no task is queued or running (tests and benchmarks only). A timeout
    // below zero waits for ever; false when it ran out first.
    bool waitForDone(std::chrono::milliseconds timeout = std::chrono::milliseconds(-1));

    // Threads alive now (tests).
    int threadCount() const;

private:
    struct State;
    static void loop(std::shared_ptr<State> state);
    static void mind(std::shared_ptr<State> state);
    // Starts a thread for the queued tasks when the rules allow (lock held).
    static bool spawn(const std::shared_ptr<State>& state);
    std::shared_ptr<State> m_state;
};
