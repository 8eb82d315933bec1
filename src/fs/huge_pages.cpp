#include "fs/huge_pages.h"

#include <cstdint>
#include <sys/mman.h>

namespace {

constexpr uintptr_t kHugePage = uintptr_t(2) << 20;

} // namespace

void hugePagesAdvise(const void* data, size_t bytes)
{
    const auto start = reinterpret_cast<uintptr_t>(data);
    const uintptr_t from = (start + kHugePage - 1) & ~(kHugePage - 1);
    const uintptr_t to = (start + bytes) & ~(kHugePage - 1);
    if (!data || to <= from)
        return;
    // Only advice: where the system has no huge pages the buffer is filled as before.
    ::madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
}
