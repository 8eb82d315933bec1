#pragma once
// Two pieces of work at once: the one on a thread of its own, the other on the caller's.

#include <cstddef>
#include <thread>

// Runs `other` on a new thread and `here` on this one; returns when both are done.
template <typename Other, typename Here>
void runBoth(Other&& other, Here&& here)
{
    std::thread helper(std::forward<Other>(other));
    here();
    helper.join();
}

// Runs part(from, to) over [0, count): as two halves at once when `split`, else whole.
template <typename Part>
void runHalves(size_t count, bool split, Part&& part)
{
    if (!split) {
        part(size_t(0), count);
        return;
    }
    const size_t half = count / 2;
    runBoth([&] { part(half, count); }, [&] { part(size_t(0), half); });
}
