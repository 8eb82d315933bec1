#pragma once
// A small thread pool owned by the cache that uses it. Threads start on demand, up to a
// limit, run at the pool's work class, and take tasks in the order they were given.
//
// What destroying the pool does is chosen when it is made:
// - PoolExit::Drain runs the tasks still queued (including tasks they add) and joins
//   the threads;
// - PoolExit::Abandon drops the queued tasks, gives running ones a short grace period,
//   and then leaves any that are still running to finish on their own: a task blocked
//   on a drive that does not answer never holds up quitting. The pool's own state stays
//   alive for such stragglers; whatever their tasks captured must too (or be shared).

#include "fs/work_class.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

enum class PoolExit { Drain, Abandon };

class WorkPool {
public:
    // How long an abandoning pool waits for running tasks before leaving them.
    static constexpr std::chrono::milliseconds kAbandonGrace{200};

    WorkPool(int maxThreads, WorkClass work, PoolExit exit = PoolExit::Drain);
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    // Callable from any thread, a task of this pool's included.
    void start(std::function<void()> task);

private:
    // Shared with the threads, so a thread left running outlives the pool safely.
    struct Shared {
        std::mutex lock;
        std::condition_variable wake;
        std::condition_variable ended; // a thread left its loop
        std::deque<std::function<void()>> tasks;
        int idle = 0;
        int alive = 0;
        bool stopping = false;
    };

    static void loop(const std::shared_ptr<Shared>& shared, WorkClass work);

    const int m_maxThreads;
    const WorkClass m_work;
    const PoolExit m_exit;
    const std::shared_ptr<Shared> m_shared;
    std::vector<std::thread> m_threads; // under m_shared->lock
};
