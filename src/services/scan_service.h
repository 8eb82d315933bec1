#pragma once
// Folder reads for the windows and views, on a thread pool the service owns. Results
// come back on the main thread, and only while the object that asked still exists.
// Destroying the service never waits: a read stuck on a dead mount is let go.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"
#include "fs/node_meta_fill.h"
#include "fs/scanner.h"
#include "services/background_work.h"

#include <QObject>

#include <functional>
#include <string>

class ScanService : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void(DirNodePtr)>;
    // Runs off the main thread and returns what to do on the main thread afterwards.
    using Work = BackgroundWork::Work;

    explicit ScanService(int threads = 2, QObject* parent = nullptr);
    ~ScanService() override; // drops queued reads, lets running ones go

    // Scans `path` to depth 1 in the background; `done` receives the fresh root on the
    // main thread unless `context` has been destroyed by then. Virtual so that tests can
    // hold results back and release them in any order. The root holds its entries in
    // the compact store, names first (scanListing): their status follows through
    // fillMeta. `before`, when given, runs on the pool first (a wait for the folder's
    // watch to be in place, so no change falls between the read and the watch).
    virtual void scan(const std::string& path, const BrondelSettings& settings, QObject* context, Done done,
        std::function<void()> before = {});

    // What scan() hands over, read on the calling thread.
    // With ScanMeta::Full every entry's status is read before it returns.
    static DirNodePtr scanListing(const std::string& path, const BrondelSettings& settings,
        ScanMeta meta = ScanMeta::NamesFirst);

    // Reads the status of the folder's entries in the background (nodeMetaFill), the
    // rows `state` says are visible first; `progress` runs on the main thread while
    // `context` lives.
    void fillMeta(NodeStorePtr store, const NodeRecord* folder, std::shared_ptr<MetaFillState> state,
        QObject* context, std::function<void(bool finished)> progress);

    // Any other background read: `work` runs on the pool, its continuation on the main
    // thread unless `context` has been destroyed by then (no context: always). With one
    // thread, tasks run one after the other in the order they were submitted, even when
    // one is stuck; with more, tasks queued behind stuck ones get spare threads.
    void submit(QObject* context, Work work);

    // Waits until nothing is running (tests, benchmarks).
    void waitForDone() { m_work.waitForDone(); }

private:
    BackgroundWork m_work;
};
