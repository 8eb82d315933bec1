#include "fs/detached_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace {

using namespace std::chrono_literals;

// A gate the tasks wait at until the test opens it (a system call that does not return).
struct Gate {
    std::mutex lock;
    std::condition_variable opened;
    bool open = false;
    std::atomic<int> waiting{0};

    void wait()
    {
        ++waiting;
        std::unique_lock guard(lock);
        opened.wait(guard, [this] { return open; });
    }
    void release()
    {
        {
            std::lock_guard guard(lock);
            open = true;
        }
        opened.notify_all();
    }
};

template <typename Pred>
bool within(std::chrono::milliseconds limit, Pred pred)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

} // namespace

TEST(DetachedPool, OneThreadRunsTasksInOrder)
{
    std::mutex lock;
    std::vector<int> order;
    DetachedPool pool(1, WorkClass::Utility);
    for (int i = 0; i < 50; ++i)
        pool.start([&, i] {
            std::lock_guard guard(lock);
            order.push_back(i);
        });
    ASSERT_TRUE(pool.waitForDone(5s));
    ASSERT_EQ(order.size(), 50u);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(order[size_t(i)], i);
}

TEST(DetachedPool, DestroyingNeverWaitsForAStuckTaskAndDropsTheQueue)
{
    auto gate = std::make_shared<Gate>();
    auto ranLate = std::make_shared<std::atomic<bool>>(false);
    auto pool = std::make_unique<DetachedPool>(1, WorkClass::Utility);
    pool->start([gate] { gate->wait(); });
    pool->start([ranLate] { *ranLate = true; }); // queued behind the stuck one
    ASSERT_TRUE(within(2s, [&] { return gate->waiting == 1; }));
    EXPECT_FALSE(pool->waitForDone(20ms));

    const auto before = std::chrono::steady_clock::now();
    pool.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 100ms);

    gate->release(); // the stuck thread finishes and ends; the queued task never runs
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(*ranLate);
}

TEST(DetachedPool, TasksBehindStuckThreadsGetAThreadOfTheirOwn)
{
    Gate gate;
    DetachedPool pool(1, WorkClass::Utility);
    pool.start([&gate] { gate.wait(); });
    ASSERT_TRUE(within(2s, [&] { return gate.waiting == 1; }));

    std::atomic<bool> early{false};
    pool.start([&early] { early = true; }); // the only thread is busy, but not for long yet
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(early);

    std::this_thread::sleep_for(DetachedPool::kStuckAfter);
    std::atomic<bool> late{false};
    pool.start([&late] { late = true; }); // every thread stuck: one more starts
    EXPECT_TRUE(within(2s, [&] { return early && late; }));
    EXPECT_EQ(pool.threadCount(), 2);
    gate.release();
    EXPECT_TRUE(pool.waitForDone(5s));
}
