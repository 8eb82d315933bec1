#pragma once
// Small list edits shared by the configuration files' move-up / move-down operations.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Swaps items[index] with the item `by` places away (negative: towards the front).
// When that place lies outside the list nothing changes and the result is false:
// there is no wrap-around and no clamping.
template <typename T>
bool configSwapBy(std::vector<T>& items, size_t index, int64_t by)
{
    if (index >= items.size())
        return false;
    // Compared without forming index + by, which could overflow for extreme offsets.
    if (by < 0 ? uint64_t(-(by + 1)) >= index : uint64_t(by) >= items.size() - index)
        return false;
    size_t target = by < 0 ? index - size_t(-(by + 1)) - 1 : index + size_t(by);
    std::swap(items[index], items[target]);
    return true;
}
