#pragma once
// The computed texts of the views' rows (a folder's size, a drive's space), worked out
// off the main thread. The info modules may ask the disk about a folder (its drive's
// free space, its real path, its status): one folder on a mount that does not answer
// would otherwise freeze the window as soon as its row is drawn. The views ask here and
// get at once what is known: a file's text (which comes from its node alone), or a
// folder's as last computed, while a computation runs in the background; changed()
// tells them to ask again. Values are recomputed when older than five seconds or when
// the sizes change. A drive that the mount watchdog remembers as stuck reads "not
// responding" at once.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"
#include "services/background_work.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <optional>
#include <QString>
#include <string>
#include <unordered_map>
#include <unordered_set>

struct SizeCellContent {
    std::optional<double> fraction; // the bar; absent hides it and the free text
    QString text;                   // left text
    QString free;                   // right text
};

// What a size cell shows for a node, computed on the calling thread: it may ask the disk
// about a folder, so the views take it from RowInfoCache instead.
SizeCellContent listSizeCellFill(const DirNode& node, const BrondelSettings& settings);

struct RowInfo {
    SizeCellContent cell; // the list's size column
    QString line;         // the info line ("" when there is none)
};

// What the modules say about a node, computed on the calling thread.
RowInfo rowInfoCompute(const DirNode& node, const BrondelSettings& settings);

class RowInfoCache : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::seconds kFresh{5};

    explicit RowInfoCache(int threads = 2, QObject* parent = nullptr);

    // The process's cache (created on first use, from the main thread; never destroyed,
    // so quitting waits for none of its computations).
    static RowInfoCache& shared();

    // What to show for `node` now; nothing while a folder's first computation runs.
    std::optional<RowInfo> find(const DirNode& node, const BrondelSettings& settings);

    // Forgets every value (tests).
    void clear();
    // Waits until no computation runs (tests, benchmarks).
    void waitForDone() { m_work.waitForDone(); }

signals:
    // New values arrived (at most once per short burst): ask again for the rows shown.
    void changed();

private:
    struct Entry {
        RowInfo info;
        std::chrono::steady_clock::time_point computedAt;
        uint64_t epoch = 0;
        std::string modules; // the enabled modules it was computed with
    };

    void store(const std::string& path, Entry entry);
    void sizesChanged();

    std::unordered_map<std::string, Entry> m_entries;
    std::unordered_set<std::string> m_pending;
    uint64_t m_epoch = 0; // bumped when folder sizes change: every value is due again
    size_t m_pruneAbove = 4096;
    QTimer m_announce;
    BackgroundWork m_work;
};
