#pragma once
// What every pane and view of a window needs from the application: the folder reads,
// the settings, and a way to run something a little later (a seam so that tests can
// fire the delayed dimming check themselves instead of waiting for it). Everything here
// that reads or writes files does so off the main thread.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <QObject>

#include <functional>
#include <string>
#include <vector>

class OpQueue;
class ScanService;

struct BrowserContext {
    using Defer = std::function<void(int milliseconds, QObject* context, std::function<void()> call)>;

    ScanService* scans = nullptr;
    // One thread: edits of the configuration files apply in the order they were made.
    // None: they share `scans`.
    ScanService* edits = nullptr;
    const BrondelSettings* settings = nullptr;
    // The file operations (copy, move, rename, ...) with their undo stack; none in tests
    // that do not need them.
    OpQueue* ops = nullptr;
    Defer defer; // empty: a QTimer single shot
    bool animate = true; // fades; off in tests and benchmarks
    bool peekSlow = false;   // Peek animations six times longer (--slow)
    bool peekNoAnim = false; // the popover chain opens without animation (--no-anim)
    // Stand-ins for the core services (tests give their own); empty: the real ones. All
    // three are called off the main thread.
    std::function<DirNodePtr()> computerRootBuild;
    std::function<std::vector<DirNodePtr>()> pinnedNodes;
    std::function<void(const std::string&)> recentsNote;
    // Opens a new window on `folder` with the item at `select` (if any) selected; empty
    // when windows are not opened from here (tests).
    std::function<void(const std::string& folder, const std::string& select)> openWindow;
    // A click on a list's column header: sorts by `key` ("name", "date", "size",
    // "kind"), or flips the direction when it is the key already. Empty: headers only
    // show the sort.
    std::function<void(const std::string& key)> sortByColumn;

    void later(int milliseconds, QObject* context, std::function<void()> call) const;
    using Build = std::function<DirNodePtr()>;
    Build computerRootBuilder() const; // callable from any thread
    // Reads the favourites headers on the edit queue (after any recent folder noted
    // before) and hands them to `done` on the main thread while `context` lives.
    void headersLoad(QObject* context, std::function<void(std::vector<DirNodePtr>)> done) const;
    // Notes a shown folder in the recent folders, on the edit queue.
    void noteRecent(const std::string& path) const;
    ScanService& editQueue() const { return edits ? *edits : *scans; }
};
