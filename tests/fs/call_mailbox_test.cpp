// Calls handed from worker threads to the main thread: all of them, in each poster's
// order, on the main thread; none once the mailbox is gone, and none after a call has
// destroyed it.

#include "fs/call_mailbox.h"
#include "support/test_app.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(CallMailbox, everyCallRunsOnTheMainThreadInEachPostersOrder)
{
    testApp();
    constexpr int kThreads = 4;
    constexpr int kCalls = 2000;
    CallMailbox mailbox;
    std::vector<std::vector<int>> seen(kThreads);
    bool offMain = false;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, poster = mailbox.poster(), &seen, &offMain] {
            for (int i = 0; i < kCalls; ++i) {
                // A capture built here and read there: the thread checker sees the hand-over.
                poster.post([t, i, text = std::to_string(i), &seen, &offMain] {
                    offMain |= QThread::currentThread() != QCoreApplication::instance()->thread();
                    seen[t].push_back(std::stoi(text) == i ? i : -1);
                });
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    testSpinUntil([&] {
        size_t total = 0;
        for (const auto& s : seen)
            total += s.size();
        return total == size_t(kThreads) * kCalls;
    });
    EXPECT_FALSE(offMain);
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(seen[t].size(), size_t(kCalls)) << "poster " << t;
        for (int i = 0; i < kCalls; ++i)
            ASSERT_EQ(seen[t][i], i) << "poster " << t;
    }
}

TEST(CallMailbox, nothingRunsOnceTheMailboxIsGoneOrAfterACallDestroysIt)
{
    testApp();
    int ran = 0;
    auto capture = std::make_shared<int>(0);

    // Gone before delivery: the waiting call and a later one are dropped, captures freed.
    auto* early = new CallMailbox;
    CallPoster orphan = early->poster();
    orphan.post([&ran, capture] { ++ran; });
    delete early;
    orphan.post([&ran, capture] { ++ran; });
    CallPoster().post([&ran] { ++ran; }); // a poster of no mailbox
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(capture.use_count(), 1);

    // A call closes the mailbox's owner: the calls behind it in the same batch are dropped.
    auto* owner = new QObject;
    auto* mailbox = new CallMailbox(owner);
    CallPoster poster = mailbox->poster();
    poster.post([&ran] { ++ran; });
    poster.post([&ran, owner] { ++ran; delete owner; });
    poster.post([&ran] { ran += 100; });
    testSpinUntil([&] { return ran >= 2; });
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 2);
}

} // namespace
