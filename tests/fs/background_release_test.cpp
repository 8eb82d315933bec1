#include "fs/background_release.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace {

// Records the thread that destroys it.
struct Witness {
    std::shared_ptr<std::promise<std::thread::id>> died = std::make_shared<std::promise<std::thread::id>>();
    Witness() = default;
    Witness(Witness&&) = default;
    ~Witness()
    {
        if (died)
            died->set_value(std::this_thread::get_id());
    }
};

} // namespace

TEST(BackgroundRelease, TheValueDiesOnTheReleaseThreadEveryTime)
{
    // Many rounds: a race in who frees last would show up as the caller's thread.
    for (int i = 0; i < 200; ++i) {
        Witness w;
        auto died = w.died->get_future();
        releaseInBackground(std::move(w));
        EXPECT_NE(died.get(), std::this_thread::get_id()) << "round " << i;
    }
}
