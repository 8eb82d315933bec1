#include "fs/work_class.h"
#include "fs/work_pool.h"

#include <gtest/gtest.h>

#include <future>
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
