#pragma once
// What every pane and view of a window needs from the application: the folder reads,
// the settings, and a way to run something a little later (a seam so that tests can
// fire the delayed dimming check themselves instead of waiting for it).

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <QObject>

#include <functional>
#include <string>
#include <vector>

class ScanService;

struct BrowserContext {
    using Defer = std::function<void(int milliseconds, QObject* context, std::function<void()> call)>;

    ScanService* scans = nullptr;
    const BrondelSettings* settings = nullptr;
    Defer defer; // empty: a QTimer single shot
    bool animate = true; // fades; off in tests and benchmarks
    // Stand-ins for the core services (tests give their own); empty: the real ones.
    std::function<DirNodePtr()> computerRootBuild;
    std::function<std::vector<DirNodePtr>()> pinnedNodes;
    std::function<void(const std::string&)> recentsNote;

    void later(int milliseconds, QObject* context, std::function<void()> call) const;
    using Build = std::function<DirNodePtr()>;
    Build computerRootBuilder() const; // callable from any thread
    std::vector<DirNodePtr> headers() const;
    void noteRecent(const std::string& path) const;
};
