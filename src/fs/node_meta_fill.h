#pragma once
// The second half of a names-first read: the status (size, date, folder or not) of a
// listing's entries, read on a background thread after its rows are shown. The rows on
// screen go first: the view says which they are (setVisible), and the filler reads
// those before going on in order. The result is published record by record
// (nodeMetaPublish), so the view may draw any row at any time.

#include "fs/node_store.h"

#include <atomic>
#include <cstdint>
#include <functional>

// What the view and the filler share; every member may be used from any thread.
class MetaFillState {
public:
    // The rows [first, last] (record positions in the folder) are on screen.
    void setVisible(uint32_t first, uint32_t last);
    // Stops the filler at its next entry (the view has gone).
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    bool cancelled() const { return m_cancelled.load(std::memory_order_relaxed); }
    // Whether every entry has been read.
    bool finished() const { return m_finished.load(std::memory_order_acquire); }

private:
    friend void nodeMetaFill(NodeStore&, NodeRecord&, MetaFillState&, const std::function<void(bool)>&);
    std::atomic<uint64_t> m_visible{0}; // first in the high half, last in the low half
    std::atomic<uint32_t> m_visibleGeneration{0};
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_finished{false};
};

// Reads the status of every child of `folder` not read yet, the visible rows first.
// `progress(false)` is called at most every 50 ms while entries arrive, and
// `progress(true)` once at the end (not when cancelled). An entry gone since the folder
// was read keeps its row, with no size and no date. A folder that can no longer be
// opened leaves every entry so, at once.
void nodeMetaFill(NodeStore& store, NodeRecord& folder, MetaFillState& state, const std::function<void(bool finished)>& progress);
