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

TEST(DetachedPool, TasksBehindStuckThreadsGetThreadsOfTheirOwnUnlessTheQueueIsStrict)
{
    // Both modes in one wait: the gates hold a thread of each pool past the stuck mark.
    struct Case {
        WhenStuck mode;
        bool runsBeforeRelease;
    };
    const Case cases[] = {{WhenStuck::AddThread, true}, {WhenStuck::Wait, false}};
    std::vector<std::unique_ptr<Gate>> gates;
    std::vector<std::unique_ptr<DetachedPool>> pools;
    std::vector<std::unique_ptr<std::atomic<int>>> ran;
    for (const Case& c : cases) {
        gates.push_back(std::make_unique<Gate>());
        pools.push_back(std::make_unique<DetachedPool>(1, WorkClass::Utility, c.mode));
        ran.push_back(std::make_unique<std::atomic<int>>(0));
        Gate* gate = gates.back().get();
        std::atomic<int>* count = ran.back().get();
        pools.back()->start([gate] { gate->wait(); });
        ASSERT_TRUE(within(2s, [&] { return gate->waiting == 1; }));
        pools.back()->start([count] { ++*count; }); // busy, but not for long yet: waits
    }
    std::this_thread::sleep_for(100ms);
    for (const auto& count : ran)
        EXPECT_EQ(*count, 0);

    // Once the busy thread counts as stuck, the waiting task gets a thread of its own.
    std::this_thread::sleep_for(DetachedPool::kStuckAfter + 200ms);
    for (size_t i = 0; i < pools.size(); ++i)
        EXPECT_EQ(*ran[i], cases[i].runsBeforeRelease ? 1 : 0) << i;
    for (size_t i = 0; i < pools.size(); ++i) {
        std::atomic<int>* count = ran[i].get();
        pools[i]->start([count] { ++*count; }); // every thread stuck now
    }
    for (size_t i = 0; i < pools.size(); ++i) {
        SCOPED_TRACE(i);
        if (cases[i].runsBeforeRelease) {
            EXPECT_TRUE(within(2s, [&] { return *ran[i] == 2; }));
            EXPECT_EQ(pools[i]->threadCount(), 2);
        } else {
            std::this_thread::sleep_for(100ms);
            EXPECT_EQ(*ran[i], 0);
            EXPECT_EQ(pools[i]->threadCount(), 1);
        }
        gates[i]->release();
        EXPECT_TRUE(pools[i]->waitForDone(5s));
        EXPECT_EQ(*ran[i], 2);
    }
}
