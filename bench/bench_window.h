#pragma once
// What the GUI benchmarks share: a browser window on /tmp in one view mode, offscreen,
// with its own folder reads and no favourites or recent folders, and a wait that keeps
// the event loop turning.

#include "config/brondel_settings.h"
#include "services/scan_service.h"
#include "window/browser_frame.h"

#include <QApplication>
#include <QElapsedTimer>

#include <memory>

inline void benchSpin(int milliseconds)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

struct BenchWindow {
    BrondelSettings settings;
    ScanService scans{4};
    BrowserContext context;
    std::unique_ptr<BrowserFrame> frame;

    explicit BenchWindow(ViewMode mode)
    {
        context.scans = &scans;
        context.settings = &settings;
        context.animate = false;
        context.pinnedNodes = [] { return std::vector<DirNodePtr>(); };
        context.recentsNote = [](const std::string&) {};
        auto root = DirNode::make();
        root->path = "/tmp";
        root->name = "tmp";
        root->isDir = true;
        frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, context);
        frame->setAttribute(Qt::WA_DeleteOnClose, false);
        frame->resize(1000, 650);
        frame->show();
        frame->activePane()->rebuildMode(mode);
    }
    BrondelWindow* pane() const { return frame->activePane(); }
};
