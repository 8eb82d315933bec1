#include "fs/detached_pool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

using Clock = std::chrono::steady_clock;

// Shared by the pool and its threads: a thread keeps it alive for as long as it runs, so
// a pool destroyed under a stuck thread leaves nothing dangling.
struct DetachedPool::State {
    int maxThreads;
    WorkClass work;
    WhenStuck whenStuck;
    std::mutex lock;
    std::condition_variable wake; // tasks queued, or stopping
    std::condition_variable done; // nothing queued or running
    std::condition_variable minder; // stopping
    std::deque<std::function<void()>> tasks;
    std::vector<Clock::time_point> busySince; // one per running task
    int threads = 0;
    int idle = 0;
    int starting = 0; // started, not yet waiting for tasks: each will take one
    bool minding = false; // a minder thread watches for stuck threads
    bool stopping = false;

    bool allStuck(Clock::time_point now) const
    {
        return !busySince.empty() && std::all_of(busySince.begin(), busySince.end(),
            [now](Clock::time_point t) { return now - t >= kStuckAfter; });
    }
};

DetachedPool::DetachedPool(int maxThreads, WorkClass work, WhenStuck stuck)
    : m_state(std::make_shared<State>())
{
    m_state->maxThreads = std::max(1, maxThreads);
    m_state->work = work;
    m_state->whenStuck = stuck;
}

DetachedPool::~DetachedPool()
{
    std::deque<std::function<void()>> dropped;
    {
        std::lock_guard guard(m_state->lock);
        m_state->stopping = true;
        dropped.swap(m_state->tasks);
    }
    m_state->wake.notify_all();
    m_state->done.notify_all();
    m_state->minder.notify_all();
    // `dropped` goes here, outside the lock: the captured state of tasks never run.
}

void DetachedPool::start(std::function<void()> task)
{
    std::lock_guard guard(m_state->lock);
    if (m_state->stopping)
        return;
    m_state->tasks.push_back(std::move(task));
    if (!spawn(m_state))
        m_state->wake.notify_one();
}

bool DetachedPool::spawn(const std::shared_ptr<State>& state)
{
    State& s = *state;
    if (int(s.tasks.size()) <= s.idle + s.starting)
        return false; // an idle or starting thread takes it
    const bool room = s.threads < s.maxThreads;
    const bool addStuck = s.whenStuck == WhenStuck::AddThread;
    const bool stuck = addStuck && s.threads < s.maxThreads + kStuckExtra && s.idle + s.starting == 0
        && s.allStuck(Clock::now());
    try {
        if (room || stuck) {
            std::thread(loop, state).detach();
            ++s.threads;
            ++s.starting;
            return true;
        }
        if (addStuck && !s.minding) {
            // The task waits for a busy thread: should they all turn out to be stuck, the
            // minder gives it a thread of its own then.
            std::thread(mind, state).detach();
            s.minding = true;
        }
    } catch (const std::system_error&) {
        // No thread to be had now: a running one takes the task when it is free.
    }
    return false;
}

void DetachedPool::mind(std::shared_ptr<State> state)
{
    State& s = *state;
    std::unique_lock guard(s.lock);
    while (!s.stopping && int(s.tasks.size()) > s.idle + s.starting) {
        if (spawn(state))
            continue;
        if (s.threads >= s.maxThreads + kStuckExtra)
            break;
        // Until the youngest running task counts as stuck (or something changes).
        const auto youngest = s.busySince.empty() ? Clock::now() : *std::max_element(s.busySince.begin(), s.busySince.end());
        s.minder.wait_until(guard, youngest + kStuckAfter + std::chrono::milliseconds(10));
    }
    s.minding = false;
}

bool DetachedPool::waitForDone(std::chrono::milliseconds timeout)
{
    State& s = *m_state;
    std::unique_lock guard(s.lock);
    auto finished = [&s] { return s.stopping || (s.tasks.empty() && s.busySince.empty()); };
    if (timeout.count() < 0) {
        s.done.wait(guard, finished);
        return true;
    }
    return s.done.wait_for(guard, timeout, finished);
}

int DetachedPool::threadCount() const
{
    std::lock_guard guard(m_state->lock);
    return m_state->threads;
}

void DetachedPool::loop(std::shared_ptr<State> state)
{
    DetachedPool::State& s = *state;
    threadSetWorkClass(s.work);
    std::unique_lock guard(s.lock);
    --s.starting;
    for (;;) {
        ++s.idle;
        s.wake.wait(guard, [&s] { return !s.tasks.empty() || s.stopping; });
        --s.idle;
        if (s.stopping || s.tasks.empty())
            break;
        auto task = std::move(s.tasks.front());
        s.tasks.pop_front();
        const Clock::time_point started = Clock::now();
        s.busySince.push_back(started);
        guard.unlock();
        task();
        task = nullptr; // captured state goes before the lock is taken again
        guard.lock();
        s.busySince.erase(std::find(s.busySince.begin(), s.busySince.end(), started));
        if (s.tasks.empty() && s.busySince.empty())
            s.done.notify_all();
    }
    --s.threads;
}
