#pragma once
// Letting go of large structures off the UI thread. Leaving a folder of 100,000 entries
// frees as many nodes and rows; done where the user is waiting, that is a visible stall.
// The value is handed to one low-priority thread and destroyed there. Only structures
// that nothing else will read again belong here (shared nodes are fine: their counts are
// atomic, and the last owner frees them wherever it is).

#include "fs/work_pool.h"

#include <utility>

// The thread that destroys what is handed over; it lives as long as the process.
WorkPool& backgroundReleasePool();

template <typename T>
void releaseInBackground(T value)
{
    // The task alone owns the value: were the caller to keep a reference too, whichever
    // side let go last would do the freeing, the UI thread as often as not.
    auto* owned = new T(std::move(value));
    backgroundReleasePool().start([owned] { delete owned; });
}
