#pragma once
// A depth-first stack of folder jobs shared by up to N threads: the caller's thread
// works, and helpers join only when there is a backlog for them (starting a thread costs
// more than reading a small folder). Used by the deep scanner and the size walker.
// Each job may push sub-jobs; the run ends when every job pushed has been processed.

#include <condition_variable>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

template <typename Job>
class WorkStack {
public:
    // Processes one job, appending the jobs it uncovers to `subs`.
    using Process = std::function<void(Job& job, std::vector<Job>& subs)>;
    // Asked once, before the first helper would start: whether a core is free for it.
    using MayAddThread = std::function<bool()>;

    static void run(std::vector<Job> initial, int threads, const Process& process, MayAddThread mayAdd = {})
    {
        WorkStack stack(std::move(initial), threads, process, std::move(mayAdd));
        stack.work();
        for (auto& helper : stack.m_helpers) // no one starts a helper once the stack is done
            helper.join();
    }

private:
    WorkStack(std::vector<Job> initial, int threads, const Process& process, MayAddThread mayAdd)
        : m_process(process)
        , m_mayAdd(std::move(mayAdd))
        , m_threads(threads < 1 ? 1 : threads)
        , m_jobs(std::move(initial))
        , m_outstanding(int64_t(m_jobs.size()))
    {
    }

    void work()
    {
        std::vector<Job> subs;
        for (;;) {
            Job job;
            {
                std::unique_lock guard(m_lock);
                m_wake.wait(guard, [this] { return !m_jobs.empty() || m_outstanding == 0; });
                if (m_jobs.empty())
                    return;
                job = std::move(m_jobs.back()); // depth first keeps the stack short
                m_jobs.pop_back();
            }
            subs.clear();
            m_process(job, subs);
            bool finished;
            {
                std::lock_guard guard(m_lock);
                m_outstanding += int64_t(subs.size()) - 1;
                for (auto& sub : subs)
                    m_jobs.push_back(std::move(sub));
                finished = m_outstanding == 0;
                if (int(m_helpers.size()) + 1 < m_threads && m_jobs.size() >= 2)
                    startHelper();
            }
            if (finished || subs.size() > 1)
                m_wake.notify_all();
            else if (!subs.empty())
                m_wake.notify_one();
        }
    }

    // Called under the lock.
    void startHelper()
    {
        if (m_mayAdd) {
            auto ask = std::move(m_mayAdd);
            m_mayAdd = nullptr;
            if (!ask()) {
                m_threads = 1;
                return;
            }
        }
        try {
            m_helpers.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            m_threads = int(m_helpers.size()) + 1; // no more threads to be had: carry on without
        }
    }

    const Process& m_process;
    MayAddThread m_mayAdd;
    int m_threads; // lowered when no core is free or the system refuses a thread
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::vector<Job> m_jobs;
    int64_t m_outstanding; // jobs pushed and not yet processed
    std::vector<std::thread> m_helpers;
};
