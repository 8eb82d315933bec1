#include "services/browser_context.h"

#include "services/core_bridge.h"
#include "services/scan_service.h"

#include <QTimer>

void BrowserContext::later(int milliseconds, QObject* context, std::function<void()> call) const
{
    if (defer)
        defer(milliseconds, context, std::move(call));
    else
        QTimer::singleShot(milliseconds, context, std::move(call));
}

BrowserContext::Build BrowserContext::computerRootBuilder() const
{
    return computerRootBuild ? computerRootBuild : Build(bridgeComputerRoot);
}

void BrowserContext::headersLoad(QObject* context, std::function<void(std::vector<DirNodePtr>)> done) const
{
    // The favourites and palette files are read and every entry is looked up on disk:
    // one entry on a mount that does not answer would freeze the window.
    editQueue().submit(context, [read = pinnedNodes, settings = *settings, done = std::move(done)] {
        std::vector<DirNodePtr> headers = read ? read() : bridgePinnedNodes(settings);
        return std::function<void()>([done, headers] { done(headers); });
    });
}

void BrowserContext::noteRecent(const std::string& path) const
{
    // Every recent folder is looked up and the file written with an fsync: never on the
    // main thread. One thread keeps the notes in the order of the navigation.
    editQueue().submit(nullptr, [note = recentsNote, settings = *settings, path] {
        if (note)
            note(path);
        else
            bridgeRecentsNote(path, settings);
        return std::function<void()>();
    });
}
