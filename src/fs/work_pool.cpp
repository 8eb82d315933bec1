#include "fs/work_pool.h"

#include <system_error>

WorkPool::WorkPool(int maxThreads, WorkClass work)
    : m_maxThreads(maxThreads < 1 ? 1 : maxThreads)
    , m_work(work)
{
}

WorkPool::~WorkPool()
{
    {
        std::lock_guard guard(m_lock);
        m_stopping = true;
    }
    m_wake.notify_all();
    // Tasks may start tasks while the pool drains, but only from its own threads, and
    // those never create new threads once stopping: the list is stable here.
    for (auto& thread : m_threads)
        thread.join();
}

void WorkPool::start(std::function<void()> task)
{
    std::lock_guard guard(m_lock);
    m_tasks.push_back(std::move(task));
    if (int(m_tasks.size()) > m_idle && int(m_threads.size()) < m_maxThreads && !m_stopping) {
        try {
            m_threads.emplace_back([this] { loop(); });
            return;
        } catch (const std::system_error&) {
            // No thread to be had now: a running one takes the task when it is free.
        }
    }
    m_wake.notify_one();
}

void WorkPool::loop()
{
    threadSetWorkClass(m_work);
    std::unique_lock guard(m_lock);
    for (;;) {
        ++m_idle;
        m_wake.wait(guard, [this] { return !m_tasks.empty() || m_stopping; });
        --m_idle;
        if (m_tasks.empty())
            return;
        auto task = std::move(m_tasks.front());
        m_tasks.pop_front();
        guard.unlock();
        task();
        task = nullptr; // captured state goes before the lock is taken again
        guard.lock();
    }
}
