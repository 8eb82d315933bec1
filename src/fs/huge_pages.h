#pragma once
// Large buffers that are about to be filled (a million-entry folder's names, records,
// sort items and keys) ask the system for huge pages. Filling fresh memory costs one
// page fault per 4 KiB page, and on virtual machines a fault costs several microseconds:
// for a million entries that was 40% of the whole read. With transparent huge pages
// ("madvise" mode, the usual default) one fault brings 2 MiB. Small buffers and systems
// without huge pages are left alone; the advice never changes what a buffer holds.

#include <cstddef>

// Advises huge pages for the whole 2 MiB pages inside [data, data + bytes).
void hugePagesAdvise(const void* data, size_t bytes);

// Reserves room for `count` items in `container` (a vector or string not yet filled)
// and advises huge pages for it.
template <typename Container>
void hugePagesReserve(Container& container, size_t count)
{
    container.reserve(count);
    hugePagesAdvise(container.data(), container.capacity() * sizeof(*container.data()));
}
