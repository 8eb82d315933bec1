#include "fs/work_pool.h"

#include <system_error>

WorkPool::WorkPool(int maxThreads, WorkClass work, PoolExit exit)
    : m_maxThreads(maxThreads < 1 ? 1 : maxThreads)
    , m_work(work)
    , m_exit(exit)
    , m_shared(std::make_shared<Shared>())
{
}

WorkPool::~WorkPool()
{
    std::deque<std::function<void()>> dropped; // destroyed outside the lock
    bool allEnded = true;
    {
        std::unique_lock guard(m_shared->lock);
        m_shared->stopping = true;
        if (m_exit == PoolExit::Abandon)
            dropped.swap(m_shared->tasks);
        m_shared->wake.notify_all();
        if (m_exit == PoolExit::Abandon)
            allEnded = m_shared->ended.wait_for(guard, kAbandonGrace, [this] { return m_shared->alive == 0; });
    }
    // Tasks may start tasks while the pool drains, but only from its own threads, and
    // those never create new threads once stopping: the list is stable here.
    for (auto& thread : m_threads) {
        if (allEnded)
            thread.join();
        else
            thread.detach(); // still inside a task: it ends on its own, holding m_shared
    }
}

void WorkPool::start(std::function<void()> task)
{
    std::lock_guard guard(m_shared->lock);
    m_shared->tasks.push_back(std::move(task));
    if (int(m_shared->tasks.size()) > m_shared->idle && int(m_threads.size()) < m_maxThreads
        && !m_shared->stopping) {
        try {
            m_threads.emplace_back([shared = m_shared, work = m_work] { loop(shared, work); });
            ++m_shared->alive;
            return;
        } catch (const std::system_error&) {
            // No thread to be had now: a running one takes the task when it is free.
        }
    }
    m_shared->wake.notify_one();
}

void WorkPool::loop(const std::shared_ptr<Shared>& shared, WorkClass work)
{
    threadSetWorkClass(work);
    std::unique_lock guard(shared->lock);
    for (;;) {
        ++shared->idle;
        shared->wake.wait(guard, [&] { return !shared->tasks.empty() || shared->stopping; });
        --shared->idle;
        if (shared->tasks.empty())
            break;
        auto task = std::move(shared->tasks.front());
        shared->tasks.pop_front();
        guard.unlock();
        task();
        task = nullptr; // captured state goes before the lock is taken again
        guard.lock();
    }
    --shared->alive;
    shared->ended.notify_all();
}
