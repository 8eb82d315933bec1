#include "window/brondel_window.h"

#include "window/window_hooks.h"
#include "fs/background_release.h"

#include "fs/file_io.h"
#include "fs/volume.h"
#include "views/content_view.h"
#include "views/list_view.h"
#include "services/core_bridge.h"
#include "window/dim_veil.h"
#include "services/folder_watch.h"
#include "services/scan_service.h"
#include "fs/folder_diff.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>
#include <QApplication>
#include <QFile>
#include <QVBoxLayout>

namespace {

constexpr int kDimDelayMs = 120;
constexpr int kDimFadeMs = 150;
constexpr double kDimmedAlpha = 0.5;
// How long a folder's read waits for its watch to be in place (a few microseconds
// normally; a drive that does not answer keeps it waiting, and the read goes ahead).
constexpr std::chrono::milliseconds kWatchWait{150};

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

// Whether two readings of the favourites show the same: a fresh reading that changes
// nothing must not rebuild the view (and lose its scroll position and selection).
bool headersSame(const std::vector<DirNodePtr>& a, const std::vector<DirNodePtr>& b)
{
    auto same = [](const DirNodePtr& x, const DirNodePtr& y) {
        return x->name == y->name && x->path == y->path && x->hue == y->hue;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const DirNodePtr& x, const DirNodePtr& y) {
        return same(x, y) && std::equal(x->children.begin(), x->children.end(), y->children.begin(),
                                 y->children.end(), same);
    });
}

} // namespace

BrondelWindow::BrondelWindow(DirNodePtr rootNode, RootKind kind, const BrowserContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
    , m_rootPath(rootNode->path)
    , m_rootNode(std::move(rootNode))
    , m_isComputerRoot(kind == RootKind::Computer)
    , m_title(decode(m_rootNode->name))
    , m_listWidths(std::make_shared<ListColumnWidths>())
    , m_iconMemory(std::make_shared<IconViewMemory>())
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_contentBox = new QWidget(this);
    m_contentLayout = new QVBoxLayout(m_contentBox);
    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_contentBox);
    m_veil = new DimVeil(m_contentBox, kDimFadeMs);
    m_watch = new FolderWatch(this);
    connect(m_watch, &FolderWatch::changed, this, &BrondelWindow::liveReload);
    connect(m_watch, &FolderWatch::watching, this, [this] {
        if (std::exchange(m_liveWhenWatched, false))
            liveReload();
    });
}

BrondelWindow::~BrondelWindow()
{
    if (m_cables)
        m_cables->remove(this);
}

void BrondelWindow::setTitle(const QString& title)
{
    if (m_title == title)
        return;
    m_title = title;
    emit titleChanged(title);
}

void BrondelWindow::setOpacity(double opacity, bool animated)
{
    m_dimmed = opacity < 1.0;
    // The content at `opacity` over the window's ground looks the same as the ground
    // over the content at 1 - opacity.
    m_veil->setStrength(1.0 - opacity, animated && m_context.animate);
}

void BrondelWindow::navigateLocal(const std::string& path)
{
    if (path == currentLocation())
        return;
    m_navHistory.push_back(currentLocation());
    m_forwardHistory.clear();
    showLocation(path);
}

void BrondelWindow::goBack()
{
    stepThrough(m_navHistory, m_forwardHistory);
}

void BrondelWindow::goForward()
{
    stepThrough(m_forwardHistory, m_navHistory);
}

void BrondelWindow::stepThrough(std::vector<std::string>& source, std::vector<std::string>& other)
{
    if (source.empty())
        return;
    std::string target = std::move(source.back());
    source.pop_back();
    other.push_back(currentLocation());
    showLocation(target);
}

void BrondelWindow::goUp()
{
    if (m_isComputerRoot)
        return;
    std::string parent = pathParent(m_rootPath);
    // The file-system root and the folders that hold mounts are never shown on their
    // own: going up from a top-level folder or from a drive lands on the Computer root.
    // Whether the folder is a drive was found out in the background when it was loaded;
    // while that answer is missing (a mount that does not answer), its parent is next.
    if (parent.empty() || parent == "/" || m_rootIsDrive)
        navigateLocal("/");
    else
        navigateLocal(parent);
}

void BrondelWindow::showLocation(const std::string& path)
{
    m_isComputerRoot = path == "/";
    m_rootPath = path;
    if (!m_isComputerRoot) {
        setTitle(decode(pathLastComponent(path) == "/" ? std::string() : pathLastComponent(path)));
        m_context.noteRecent(path);
        loadHeaders(); // after the note: the Recent section then holds this folder
        scanThenShow(path);
    } else {
        loadHeaders();
        showComputerRoot();
    }
    emit locationChanged(currentLocation());
    propagate(currentLocation());
}

void BrondelWindow::scanThenShow(const std::string& path)
{
    const int64_t gen = ++m_scanGeneration;
    m_scanPendingGen = gen;
    m_context.later(kDimDelayMs, this, [this, gen] { dimCheck(gen); });
    checkDrive(path);
    // The folder is watched from before it is read: the read waits (briefly) for the
    // watch, so a change made meanwhile is either in the read or noticed after it. When
    // the watch is late (a slow drive), the folder is read again once it is in place.
    const uint64_t token = m_watch->watch(path);
    m_liveAfterLoad = false;
    m_liveWhenWatched = false;
    auto unwatched = std::make_shared<std::atomic<bool>>(false);
    auto waitForWatch = [token, unwatched] {
        if (token && !folderWatchWait(token, kWatchWait))
            unwatched->store(true);
    };
    m_context.scans->scan(path, *m_context.settings, this, [this, gen, unwatched](DirNodePtr root) {
        if (m_scanGeneration != gen) {
            releaseInBackground(std::move(root)); // the user has moved on: a stale result never shows
            return;
        }
        m_scanPendingGen.reset();
        setOpacity(1.0, false);
        releaseInBackground(std::exchange(m_rootNode, std::move(root))); // a big tree frees off the UI thread
        rebuildMode(m_currentMode);
        if (!m_selectAfterLoad.empty()) {
            const std::vector<std::string> paths = std::exchange(m_selectAfterLoad, {});
            if (std::exchange(m_renameAfterLoad, false))
                contentViewRename(m_contentView, paths.front());
            else
                contentViewSelectAll(m_contentView, paths);
        }
        // Changes noticed while the read was on its way, or a watch that came after it.
        if (unwatched->load() && !m_watch->established())
            m_liveWhenWatched = true;
        else if (std::exchange(m_liveAfterLoad, false) || unwatched->load())
            liveReload();
    }, std::move(waitForWatch));
}

void BrondelWindow::checkDrive(const std::string& path)
{
    m_rootIsDrive = false;
    m_context.scans->submit(this, [this, path]() -> std::function<void()> {
        const bool drive = driveSpace(path).has_value();
        return [this, path, drive] {
            if (m_rootPath == path && !m_isComputerRoot)
                m_rootIsDrive = drive;
        };
    });
}

void BrondelWindow::loadHeaders()
{
    const int64_t gen = ++m_headersGeneration;
    m_context.headersLoad(this, [this, gen](std::vector<DirNodePtr> headers) {
        if (gen != m_headersGeneration || headersSame(headers, m_headers))
            return;
        m_headers = std::move(headers);
        // A load on its way shows them when it lands; otherwise the view shows them now.
        if (!m_scanPendingGen)
            rebuildMode(m_currentMode);
    });
}

void BrondelWindow::showComputerRoot()
{
    m_watch->watch({});
    // Probing the drives may wait on a slow mount, so the node is built off the main
    // thread too; the Computer root is never shown dimmed.
    const int64_t gen = ++m_scanGeneration;
    m_scanPendingGen.reset();
    setOpacity(1.0, false);
    BrowserContext::Build build = m_context.computerRootBuilder();
    m_context.scans->submit(this, [this, gen, build]() -> std::function<void()> {
        DirNodePtr root = build();
        return [this, gen, root] {
            if (m_scanGeneration != gen)
                return;
            releaseInBackground(std::exchange(m_rootNode, root));
            setTitle(decode(root->name));
            rebuildMode(m_currentMode);
        };
    });
}

void BrondelWindow::dimCheck(int64_t gen)
{
    if (m_scanPendingGen && *m_scanPendingGen == gen)
        setOpacity(kDimmedAlpha, true);
}

void BrondelWindow::stepInto(const std::string& path)
{
    m_navHistory.push_back(currentLocation());
    m_forwardHistory.clear();
    showLocation(path);
}

void BrondelWindow::propagate(const std::string& location)
{
    if (!m_cables)
        return;
    // A copy: following panes may change the graph's vectors while we walk.
    std::vector<BrondelWindow*> followers = m_cables->to(this);
    for (BrondelWindow* to : followers)
        if (to->currentLocation() != location)
            to->stepInto(location); // a pane that is already there ends a loop
}

void BrondelWindow::openFolder(const std::string& path)
{
    std::vector<BrondelWindow*> followers = m_cables ? m_cables->to(this) : std::vector<BrondelWindow*>();
    if (followers.empty()) {
        navigateLocal(path);
        return;
    }
    bool mirrored = false;
    for (BrondelWindow* to : followers) {
        if (to->currentLocation() != path)
            to->stepInto(path);
        mirrored = mirrored || m_cables->mirror(to);
    }
    if (mirrored)
        navigateLocal(path);
}

void BrondelWindow::rebuildMode(ViewMode mode)
{
    m_currentMode = mode;
    // Focus follows the new view only when the old one had it: a TO pane that follows
    // its FROM must not take the focus (and with it the active pane) away.
    QWidget* focus = QApplication::focusWidget();
    const bool hadFocus = focus && m_contentBox->isAncestorOf(focus);
    if (m_contentView) {
        m_contentLayout->removeWidget(m_contentView);
        m_contentView->hide();
        m_contentView->deleteLater();
    }
    ContentHooks hooks;
    hooks.openFolder = [this](const std::string& path) { openFolder(path); };
    hooks.openFile = [this](const std::string& path) { emit fileOpenRequested(path); };
    hooks.fillMenu = [this](QMenu& menu, const DirNodePtr& node) {
        if (windowHooks().fillContextMenu)
            windowHooks().fillContextMenu(menu, *this, node);
    };
    hooks.sortBy = m_context.sortByColumn;
    hooks.drop = [this](std::vector<std::string> paths, std::string folder) {
        if (windowHooks().drop)
            windowHooks().drop(*this, std::move(paths), folder);
    };
    hooks.rename = [this](const std::string& path, const std::string& newName) {
        if (windowHooks().rename)
            windowHooks().rename(*this, path, newName);
    };
    hooks.listWidths = m_listWidths;
    hooks.showInList = [this](const std::string& path) {
        rebuildMode(ViewMode::List);
        if (path != currentLocation())
            openFolder(path);
    };
    hooks.peekOrderChanged = [] {
        if (windowHooks().peekOrderChanged)
            windowHooks().peekOrderChanged();
    };
    hooks.iconMemory = m_iconMemory;
    hooks.goUp = [this] { goUp(); };
    m_contentView = contentViewBuild(mode, m_rootNode, m_headers, m_context, hooks);
    m_contentView->setParent(m_contentBox);
    m_contentLayout->addWidget(m_contentView);
    m_veil->raise(); // a view rebuilt while dimmed stays under the veil
    emit modeChanged(mode);
    if (hadFocus)
        contentViewFocus(m_contentView)->setFocus(Qt::OtherFocusReason);
}

void BrondelWindow::refresh()
{
    bridgeSizesForget(m_rootPath);
    reload();
}

void BrondelWindow::reload()
{
    loadHeaders();
    if (m_isComputerRoot)
        showComputerRoot();
    else
        scanThenShow(m_rootPath);
}

void BrondelWindow::liveReload()
{
    if (m_scanPendingGen) {
        m_liveAfterLoad = true; // the read on its way may have passed the change already
        return;
    }
    if (m_isComputerRoot || !m_rootNode || !m_rootNode->store)
        return;
    if (m_liveBusy) {
        m_liveAgain = true;
        return;
    }
    m_liveBusy = true;
    const int64_t gen = m_scanGeneration;
    DirNodePtr before = m_rootNode;
    const std::string path = m_rootPath;
    const BrondelSettings settings = *m_context.settings;
    m_context.scans->submit(this, [this, gen, before, path, settings]() -> std::function<void()> {
        // With the status of every entry: rows that stay keep showing their sizes.
        DirNodePtr fresh = ScanService::scanListing(path, settings, ScanMeta::Full);
        auto diff = std::make_shared<FolderDiff>(folderDiff(before->store->root(), fresh->store->root()));
        return [this, gen, before, fresh, diff]() mutable {
            m_liveBusy = false;
            if (gen == m_scanGeneration && before == m_rootNode) {
                if (fresh->readError != 0 && !fresh->hasEntries()) {
                    reload(); // the folder itself went away: say so
                } else if (diff->changed) {
                    if (!contentViewApplyFresh(m_contentView, fresh, *diff)) {
                        releaseInBackground(std::exchange(m_rootNode, fresh));
                        rebuildMode(m_currentMode);
                    } else {
                        releaseInBackground(std::exchange(m_rootNode, fresh));
                    }
                    emit contentsChanged();
                }
            }
            releaseInBackground(std::move(fresh));
            releaseInBackground(std::move(before));
            if (std::exchange(m_liveAgain, false))
                liveReload();
        };
    });
}

std::vector<std::string> BrondelWindow::selectedPaths() const
{
    return contentViewSelection(m_contentView);
}
