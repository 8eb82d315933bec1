#pragma once
// The graphical run: opens the first windows (one per path, or one on the Computer
// root), opens new windows on request and keeps them.

#include "app/desktop_bus.h"
#include "app/view_mode.h"
#include "window/brondel_window.h"
#include "services/browser_context.h"
#include "services/scan_service.h"
#include "ops/op_queue.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <string>
#include <vector>

class BrowserFrame;

// Nothing: no launch window (a start by the session bus, which then asks for one).
enum class RootChoice { Paths, Computer, Nothing };

class AppDelegate : public QObject {
    Q_OBJECT
public:
    // `paths` are already expanded folders; `settings` stays alive for the whole run.
    AppDelegate(std::vector<std::string> paths, RootChoice choice, ViewMode mode, const BrondelSettings& settings);
    ~AppDelegate() override;

    // Subscribes to `callback` being called whenever another process changed a card
    // (cardsChangedObserve, or a stand-in in tests); returns at once, false when there
    // is no bus to subscribe on.
    using CardsObserver = std::function<bool(std::function<void()> callback, QObject* owner)>;

    // Sets up the icon theme, refreshes every window whenever the cards change, and
    // opens the launch windows; the last one ends up in front.
    void applicationDidFinishLaunching();
    void setCardsObserver(CardsObserver observer) { m_observeCards = std::move(observer); }
    // A new window on the Computer root.
    BrowserFrame* newWindow();
    // A new window on `folder`, with the row of `select` selected once it is read.
    BrowserFrame* openFolder(const std::string& folder, const std::string& select = {});
    // A new window on `folder`, with the rows of `select` selected once it is read.
    BrowserFrame* openFolder(const std::string& folder, std::vector<std::string> select);
    // Answers for Brondel and for the desktop's file manager on the session bus at
    // `address` (see app/desktop_bus.h); returns at once. `done` reports how that went.
    void serveDesktop(const QString& address, std::function<void(DesktopServed)> done = {});
    // What the bus's requests do (public for the tests that call them directly).
    DesktopRequests desktopRequests();
    // The windows opened so far that are still open, in opening order.
    std::vector<BrowserFrame*> windows() const;
    const BrowserContext& context() const { return m_context; }
    // Peek mode's animation flags for every window (before the first opens).
    void setPeekAnimation(bool slow, bool noAnim)
    {
        m_context.peekSlow = slow;
        m_context.peekNoAnim = noAnim;
    }

private:
    BrowserFrame* open(const std::string& path, RootKind kind, ViewMode mode);
    void scheduleScreenshot(const QString& file);

    std::vector<std::string> m_paths;
    bool m_useComputerRoot;
    bool m_openAtLaunch;
    ViewMode m_mode;
    ScanService m_scans;
    ScanService m_edits;
    OpQueue m_ops;
    BrowserContext m_context;
    CardsObserver m_observeCards;
    std::vector<QPointer<BrowserFrame>> m_windows;
};
