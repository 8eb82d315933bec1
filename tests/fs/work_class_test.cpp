#include "fs/work_class.h"
#include "fs/work_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <sys/resource.h>
#include <unistd.h>

namespace {

int niceOfThisThread() { return ::getpriority(PRIO_PROCESS, id_t(::gettid())); }

} // namespace

TEST(WorkClass, PoolThreadsYieldToTheUiThreadInOrderOfUrgency)
{
    EXPECT_LT(workClassNice(WorkClass::UserInitiated), workClassNice(WorkClass::Utility));
    EXPECT_LT(workClassNice(WorkClass::Utility), workClassNice(WorkClass::Background));
    const int before = niceOfThisThread();
    for (WorkClass work : {WorkClass::UserInitiated, WorkClass::Background}) {
        std::promise<int> seen;
        {
            WorkPool pool(1, work);
            pool.start([&] { seen.set_value(niceOfThisThread()); });
        }
        EXPECT_EQ(seen.get_future().get(), std::max(before, workClassNice(work)));
    }
    EXPECT_EQ(niceOfThisThread(), before); // the caller's own thread is untouched
}

TEST(WorkPool, AnAbandoningPoolDoesNotWaitForAStuckTask)
{
    // A task that blocks (as on a drive that does not answer) must not hold up the
    // pool's destruction, i.e. quitting; queued tasks behind it are dropped.
    auto gate = std::make_shared<std::promise<void>>();
    std::shared_future<void> opened = gate->get_future().share();
    auto ranQueued = std::make_shared<std::atomic<bool>>(false);
    std::promise<void> started;
    auto destroyed = std::async(std::launch::async, [&] {
        WorkPool pool(1, WorkClass::Background, PoolExit::Abandon);
        pool.start([opened, &started] {
            started.set_value();
            opened.wait();
        });
        pool.start([ranQueued] { *ranQueued = true; });
        started.get_future().wait();
    });
    const bool returned = destroyed.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    gate->set_value(); // lets the task end either way
    destroyed.wait();
    EXPECT_TRUE(returned);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(*ranQueued);
}

TEST(WorkPool, ADrainingPoolRunsEveryQueuedTask)
{
    std::atomic<int> ran{0};
    {
        WorkPool pool(2, WorkClass::Background);
        for (int i = 0; i < 20; ++i)
            pool.start([&] { ++ran; });
    }
    EXPECT_EQ(ran.load(), 20);
}
