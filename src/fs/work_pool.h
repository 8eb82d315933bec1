#pragma once
// A small thread pool owned by the cache that uses it. Threads start on demand, up to a
// limit, run at the pool's work class, and take tasks in the order they were given. Destroying the pool runs the
// tasks still queued (including tasks they add) and joins the threads.

#include "fs/work_class.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class WorkPool {
public:
    WorkPool(int maxThreads, WorkClass work);
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    // Callable from any thread, a task of this pool's included.
    void start(std::function<void()> task);

private:
    void loop();

    const int m_maxThreads;
    const WorkClass m_work;
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    std::vector<std::thread> m_threads;
    int m_idle = 0;
    bool m_stopping = false;
};
