#include "window/browser_context.h"

#include "window/core_bridge.h"

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

std::vector<DirNodePtr> BrowserContext::headers() const
{
    return pinnedNodes ? pinnedNodes() : bridgePinnedNodes(*settings);
}

void BrowserContext::noteRecent(const std::string& path) const
{
    if (recentsNote)
        recentsNote(path);
    else
        bridgeRecentsNote(path, *settings);
}
