#include "window/app_delegate.h"

#include "window/window_hooks.h"
#include "cards/cards_changed.h"
#include "fs/file_io.h"
#include "window/browser_frame.h"
#include "services/theme_icons.h"

#include <QApplication>
#include <QFile>
#include <QTimer>

#include <cstdlib>

AppDelegate::AppDelegate(std::vector<std::string> paths, RootChoice choice, ViewMode mode,
    const BrondelSettings& settings)
    : m_paths(std::move(paths))
    , m_useComputerRoot(choice == RootChoice::Computer)
    , m_openAtLaunch(choice != RootChoice::Nothing)
    , m_mode(mode)
    , m_scans(4)
    , m_edits(1)
    , m_observeCards([](std::function<void()> callback, QObject* owner) {
        return cardsChangedObserve(std::move(callback), owner);
    })
{
    m_context.scans = &m_scans;
    m_context.edits = &m_edits;
    m_context.ops = &m_ops;
    m_context.settings = &settings;
    m_context.openWindow = [this](const std::string& folder, const std::string& select) { openFolder(folder, select); };
    m_context.sortByColumn = [this](const std::string& key) {
        if (windowHooks().sortByColumn)
            windowHooks().sortByColumn(m_context, key);
    };
}

AppDelegate::~AppDelegate()
{
    for (const auto& window : m_windows)
        delete window.data();
}

void AppDelegate::applicationDidFinishLaunching()
{
    iconsInstallTheme();
    if (m_openAtLaunch && m_useComputerRoot) {
        open("/", RootKind::Computer, m_mode);
    } else if (m_openAtLaunch) {
        for (const auto& path : m_paths)
            open(path, RootKind::Folder, m_mode);
    }
    // A card changed from the command line (or another instance) shows everywhere. The
    // windows come first: the subscription is made in the background and never waits.
    m_observeCards([] { brondelRefreshAll(); }, this);
    // A hidden aid for documentation and checks: grab the front window and quit.
    if (const char* file = std::getenv("BRONDEL_SCREENSHOT"); file && *file)
        scheduleScreenshot(QFile::decodeName(file));
}

BrowserFrame* AppDelegate::newWindow()
{
    return open("/", RootKind::Computer, m_mode);
}

BrowserFrame* AppDelegate::openFolder(const std::string& folder, const std::string& select)
{
    return openFolder(folder, select.empty() ? std::vector<std::string>() : std::vector<std::string>{select});
}

BrowserFrame* AppDelegate::openFolder(const std::string& folder, std::vector<std::string> select)
{
    BrowserFrame* frame = open(folder, RootKind::Folder, m_mode);
    if (!select.empty())
        frame->activePane()->selectAfterLoad(std::move(select));
    return frame;
}

DesktopRequests AppDelegate::desktopRequests()
{
    DesktopRequests requests;
    requests.showFolders = [this](std::vector<std::string> folders) {
        for (const auto& folder : folders)
            openFolder(folder);
    };
    // One window per folder that holds any of the items, those items selected in it.
    requests.showItems = [this](std::vector<std::string> items) {
        for (auto& [folder, inFolder] : desktopItemsByFolder(items))
            openFolder(folder, std::move(inFolder));
    };
    requests.showProperties = [this](std::vector<std::string> items) {
        if (windowHooks().showProperties)
            windowHooks().showProperties(m_context, this, std::move(items));
    };
    requests.open = [this](std::vector<std::string> folders, ViewMode mode) {
        if (folders.empty())
            open("/", RootKind::Computer, mode);
        for (const auto& folder : folders)
            open(folder, RootKind::Folder, mode);
    };
    return requests;
}

void AppDelegate::serveDesktop(const QString& address, std::function<void(DesktopServed)> done)
{
    if (address.isEmpty()) {
        if (done)
            done(DesktopServed::NoBus);
        return;
    }
    desktopServe(address, desktopRequests(), this, std::move(done));
}

BrowserFrame* AppDelegate::open(const std::string& path, RootKind kind, ViewMode mode)
{
    // The window opens at once on an empty node; the folder (or the drives) arrive from
    // a background read, so a slow disk never holds the window back.
    auto root = DirNode::make();
    root->path = path;
    root->name = kind == RootKind::Computer ? "Computer" : pathLastComponent(path);
    root->isDir = true;
    auto* frame = new BrowserFrame(root, kind, m_context);
    if (windowHooks().installMenus)
        windowHooks().installMenus(*frame);
    connect(frame, &BrowserFrame::newWindowRequested, this, &AppDelegate::newWindow);
    m_windows.emplace_back(frame);

    // Without a desktop's activation rules, "come to the front" is show + raise +
    // activate; BRONDEL_BACKGROUND (set, whatever its value) keeps the focus elsewhere.
    const bool background = std::getenv("BRONDEL_BACKGROUND") != nullptr;
    if (background)
        frame->setAttribute(Qt::WA_ShowWithoutActivating);
    frame->show();
    if (!background) {
        frame->raise();
        frame->activateWindow();
    }
    frame->switchMode(mode);
    frame->activePane()->reload();
    return frame;
}

std::vector<BrowserFrame*> AppDelegate::windows() const
{
    std::vector<BrowserFrame*> open;
    for (const auto& window : m_windows)
        if (window)
            open.push_back(window.data());
    return open;
}

void AppDelegate::scheduleScreenshot(const QString& file)
{
    QTimer::singleShot(1500, this, [this, file] {
        auto open = windows();
        if (open.empty() && !m_openAtLaunch) { // a start by the bus: wait for the window asked for
            scheduleScreenshot(file);
            return;
        }
        if (!open.empty())
            open.back()->grab().save(file);
        QApplication::quit();
    });
}
