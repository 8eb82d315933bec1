#include "fs/node_meta_fill.h"

#include "fs/sys_calls.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kProgressEvery = std::chrono::milliseconds(50);
constexpr uint32_t kBatch = 256;          // entries read between looks at the visible rows
constexpr uint32_t kVisibleAtMost = 4096; // a window taller than this is read in order

void readOne(int fd, NodeRecord& record)
{
    if (nodeMeta(record) & kMetaKnown)
        return;
    struct stat st;
    int rc;
    do
        rc = sysCalls().fstatat(fd, record.name, &st, 0);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
        nodeMetaPublish(record, 0, nullptr);
        return;
    }
    const int64_t date = int64_t(st.st_mtim.tv_sec);
    nodeMetaPublish(record, S_ISDIR(st.st_mode) ? 0 : int64_t(st.st_size), &date);
}

} // namespace

void MetaFillState::setVisible(uint32_t first, uint32_t last)
{
    m_visible.store((uint64_t(first) << 32) | last, std::memory_order_relaxed);
    m_visibleGeneration.fetch_add(1, std::memory_order_release);
}

void nodeMetaFill(NodeStore& store, NodeRecord& folder, MetaFillState& state, const std::function<void(bool)>& progress)
{
    const uint32_t count = folder.childCount;
    int fd;
    do
        fd = sysCalls().openat(AT_FDCWD, store.path(folder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        for (uint32_t i = 0; i < count; ++i)
            if (!(nodeMeta(folder.children[i]) & kMetaKnown))
                nodeMetaPublish(folder.children[i], 0, nullptr);
        state.m_finished.store(true, std::memory_order_release);
        progress(true);
        return;
    }
    uint32_t seen = 0; // the visible window last read
    auto last = Clock::now();
    for (uint32_t next = 0; next < count && !state.cancelled();) {
        const uint32_t generation = state.m_visibleGeneration.load(std::memory_order_acquire);
        if (generation != seen) {
            seen = generation;
            const uint64_t window = state.m_visible.load(std::memory_order_relaxed);
            const uint32_t first = uint32_t(window >> 32);
            const uint32_t end = std::min({count, uint32_t(window) + 1, first + kVisibleAtMost});
            for (uint32_t i = first; i < end && !state.cancelled(); ++i)
                readOne(fd, folder.children[i]);
        }
        const uint32_t end = std::min(count, next + kBatch);
        for (; next < end; ++next)
            readOne(fd, folder.children[next]);
        if (Clock::now() - last >= kProgressEvery) {
            last = Clock::now();
            progress(false);
        }
    }
    sysClose(fd);
    if (state.cancelled())
        return;
    state.m_finished.store(true, std::memory_order_release);
    progress(true);
}
