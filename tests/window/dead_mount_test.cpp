// A window whose recent folders, favourites, sidebar and drive rows include a folder on
// a mount that never answers: the UI thread keeps beating while the user navigates,
// switches modes and refreshes, it makes no disk call of its own after start-up, and
// quitting returns at once although background threads are stuck on that mount.
//
// The mount is played twice. By the system-call seam: every stat, statx and open of a
// path under the "dead" folder waits until the test lets go (a call on the UI thread
// waits 300 ms only, so that a fault shows as a failed beat rather than a test that
// hangs). And by a real FUSE file system that stops answering (skipped where FUSE cannot
// be used); there the drive must also be shown as not responding.

#include "gui_test_main.h"

#include "config/pinned_file.h"
#include "config/recents.h"
#include "config/sidebar_file.h"
#include "fs/sys_calls.h"
#include "fs/mount_watchdog.h"
#include "sizes/info_module.h"
#include "support/hang_fs.h"
#include "support/temp_tree.h"
#include "views/row_info_cache.h"
#include "window/app_delegate.h"
#include "window/browser_frame.h"
#include "window/sidebar_view.h"
#include "views/list_source.h"

#include <QAbstractItemView>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

// The longest UI-thread stall allowed: 50 ms, widened in the slower sanitizer builds.
qint64 stallLimitMs()
{
    const int slowdown = qEnvironmentVariableIntValue("BRONDEL_TEST_SLOWDOWN");
    return 50 * (slowdown > 1 ? slowdown : 1);
}


// The dead mount: its folder, the gate its calls wait at, and what reached it from where.
struct DeadMount {
    std::string folder; // set before the seam is installed, never changed while in use
    std::thread::id uiThread;
    std::mutex lock;
    std::condition_variable opened;
    bool released = false;
    std::atomic<bool> started{false}; // after start-up: UI-thread calls are faults
    std::vector<std::string> uiCalls; // under `lock`
    std::atomic<int> backgroundWaits{0};

    bool under(const char* path) const
    {
        return path && std::string_view(path).starts_with(folder)
            && (path[folder.size()] == '\0' || path[folder.size()] == '/');
    }

    // Every call through the seam: noted when on the UI thread after start-up, held when
    // it reaches the dead folder.
    void enter(const char* what, const char* path)
    {
        const bool ui = std::this_thread::get_id() == uiThread;
        if (ui && started) {
            std::lock_guard guard(lock);
            uiCalls.push_back(std::string(what) + " " + (path ? path : "(fd)"));
        }
        if (!under(path))
            return;
        std::unique_lock guard(lock);
        if (ui) {
            opened.wait_for(guard, std::chrono::milliseconds(300), [this] { return released; });
            return;
        }
        ++backgroundWaits;
        opened.wait(guard, [this] { return released; });
    }

    void release()
    {
        {
            std::lock_guard guard(lock);
            released = true;
        }
        opened.notify_all();
    }

    std::vector<std::string> faults()
    {
        std::lock_guard guard(lock);
        return uiCalls;
    }
};

DeadMount g_dead;

// The table lives as long as the process: a thread released late may still be inside it.
const SysCalls kHanging = [] {
    SysCalls calls = sysCallsReal();
    calls.open = [](const char* path, int flags, mode_t mode) {
        g_dead.enter("open", path);
        return sysCallsReal().open(path, flags, mode);
    };
    calls.openat = [](int dirfd, const char* path, int flags, mode_t mode) {
        g_dead.enter("openat", path);
        return sysCallsReal().openat(dirfd, path, flags, mode);
    };
    calls.stat = [](const char* path, struct stat* st) {
        g_dead.enter("stat", path);
        return sysCallsReal().stat(path, st);
    };
    calls.lstat = [](const char* path, struct stat* st) {
        g_dead.enter("lstat", path);
        return sysCallsReal().lstat(path, st);
    };
    calls.fstatat = [](int dirfd, const char* path, struct stat* st, int flags) {
        g_dead.enter("fstatat", path);
        return sysCallsReal().fstatat(dirfd, path, st, flags);
    };
    calls.statx = [](int dirfd, const char* path, int flags, unsigned mask, struct statx* st) {
        g_dead.enter("statx", path);
        return sysCallsReal().statx(dirfd, path, flags, mask, st);
    };
    calls.read = [](int fd, void* buf, size_t count) {
        g_dead.enter("read", nullptr);
        return sysCallsReal().read(fd, buf, count);
    };
    calls.write = [](int fd, const void* buf, size_t count) {
        g_dead.enter("write", nullptr);
        return sysCallsReal().write(fd, buf, count);
    };
    return calls;
}();

// An info module that asks the dead mount about every folder, as the drive-space and
// folder-size modules ask the disk: it notes folders it is asked about on the UI thread.
std::atomic<int> g_moduleUiCalls{0};

class DeadMountInfo : public InfoModule {
public:
    std::string key() const override { return "test-dead-mount"; }
    std::string title() const override { return "Dead Mount Probe"; }
    std::optional<std::string> text(const DirNode& node) const override
    {
        if (!node.isDir)
            return std::nullopt;
        if (std::this_thread::get_id() == g_dead.uiThread)
            ++g_moduleUiCalls;
        struct stat st;
        sysCalls().stat(node.path.c_str(), &st);
        return std::nullopt;
    }
};

// Time the calling thread has spent ready to run but waiting for a core (from the
// scheduler's statistics; 0 where the kernel keeps none).
qint64 runQueueWaitNs()
{
    int fd = ::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC); // not through the seam
    if (fd < 0)
        return 0;
    char buf[128] = {};
    const ssize_t n = ::read(fd, buf, sizeof buf - 1);
    ::close(fd);
    unsigned long long onCpu = 0, waiting = 0;
    if (n <= 0 || std::sscanf(buf, "%llu %llu", &onCpu, &waiting) != 2)
        return 0;
    return qint64(waiting);
}

// Ticks every 5 ms on the UI thread and keeps the longest gap between two ticks. A busy
// machine (other builds on the same two cores) can keep a ready thread off the CPU for
// tens of milliseconds; that wait is no stall of ours, so it is taken out of the gap.
class Heartbeat {
public:
    Heartbeat()
    {
        m_timer.setInterval(5);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
        m_timer.start();
        m_clock.start();
        m_waited = runQueueWaitNs();
    }
    qint64 longestMs() const { return m_longest; }
    qint64 longestRawMs() const { return m_longestRaw; }

private:
    void tick()
    {
        const qint64 gap = m_clock.restart();
        const qint64 waited = runQueueWaitNs();
        const qint64 ours = gap - (waited - m_waited) / 1000000;
        m_waited = waited;
        m_longestRaw = std::max(m_longestRaw, gap);
        m_longest = std::max(m_longest, ours);
    }
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_waited = 0;
    qint64 m_longest = 0;
    qint64 m_longestRaw = 0;
};

DirNodePtr folderNode(const std::string& path, const std::string& name)
{
    auto node = DirNode::make();
    node->path = path;
    node->name = name;
    node->isDir = true;
    return node;
}

// Closes every window, returns from an event loop and destroys the services; how long
// that took.
qint64 quitTimed(std::function<void()> destroyServices)
{
    QElapsedTimer quit;
    quit.start();
    for (QWidget* window : QApplication::topLevelWidgets())
        window->close();
    QEventLoop loop;
    QTimer::singleShot(0, &loop, &QEventLoop::quit);
    loop.exec();
    destroyServices();
    qInfo("quit took %lld ms", (long long)quit.elapsed());
    return quit.elapsed();
}

// The sidebar row of the drive mounted at `path`.
QTreeWidgetItem* sidebarRow(SidebarView* sidebar, const std::string& path)
{
    for (QTreeWidgetItemIterator it(sidebar); *it; ++it)
        if (SidebarView::pathOf(*it) == path && (*it)->parent() && (*it)->parent()->text(0) == "Computer")
            return *it;
    return nullptr;
}

// The size column's text of the top-level row of `path` in a pane's list view.
QString listInfo(BrondelWindow* pane, const std::string& path)
{
    auto* view = qobject_cast<QAbstractItemView*>(pane->contentView());
    auto* source = view ? qobject_cast<ListSource*>(view->model()) : nullptr;
    if (!source)
        return {};
    QModelIndex row = source->indexOfPath(path);
    return row.isValid() ? row.siblingAtColumn(ListSource::Size).data().toString() : QString();
}

} // namespace

BRONDEL_REGISTER(InfoModule, DeadMountInfo)

class DeadMountTest : public QObject {
    Q_OBJECT
private:
    std::unique_ptr<TempTree> m_tree;
    std::unique_ptr<SysCallsOverride> m_seam;
    std::string m_alive;

private slots:
    void initTestCase()
    {
        m_tree = std::make_unique<TempTree>();
        m_alive = m_tree->dir("alive");
        m_tree->dir("alive/inner");
        m_tree->file("alive/note.txt", "hello");
        g_dead.folder = m_tree->dir("alive/dead");
        m_tree->dir("alive/dead/deeper");
        g_dead.uiThread = std::this_thread::get_id();

        // Everything the window reads at once lists the dead folder.
        BrondelSettings settings;
        recentsNote(m_alive, settings);
        recentsNote(g_dead.folder, settings);
        QVERIFY(pinnedWrite(std::string(kPinnedDefaultHeader), {{"Work", {m_alive, g_dead.folder}, std::nullopt}}));
        QVERIFY(sidebarWrite("Favorites", {m_alive, g_dead.folder}));
        m_seam = std::make_unique<SysCallsOverride>(kHanging);
    }

    // A test that fails half-way must not leave the UI-thread record running.
    void init()
    {
        g_dead.started = false;
        std::lock_guard guard(g_dead.lock);
        g_dead.uiCalls.clear();
    }

    void cleanupTestCase()
    {
        g_dead.release();
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // the released threads end
        m_seam.reset();
    }

    void windowKeepsBeatingAndLeavesTheDiskToOtherThreads()
    {
        BrondelSettings settings;
        auto scans = std::make_unique<ScanService>(4);
        auto edits = std::make_unique<ScanService>(1);
        BrowserContext context;
        context.scans = scans.get();
        context.edits = edits.get();
        context.settings = &settings;
        context.animate = false;
        const std::string dead = g_dead.folder, alive = m_alive;
        context.computerRootBuild = [dead, alive] {
            // Home and two drives, one of them on the dead mount.
            auto root = folderNode("/", "TestComputer");
            root->childrenLoaded = true;
            root->children = {folderNode(alive, "Alive Drive"), folderNode(dead, "Dead Drive")};
            return root;
        };

        auto* frame = new BrowserFrame(folderNode(alive, "alive"), RootKind::Folder, context);
        frame->resize(900, 600);
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame));
        frame->activePane()->reload();
        QTRY_VERIFY(frame->activePane()->rootNode()->hasEntries());
        QTest::qWait(100);

        g_dead.started = true;
        Heartbeat beat;
        BrondelWindow* pane = frame->activePane();
        auto step = [&](auto&& action) {
            action();
            QTest::qWait(60);
        };
        step([&] { frame->navigateTo(alive + "/inner"); });
        step([&] { frame->navigateTo(dead); });     // its read hangs; the pane dims
        step([&] { frame->navigateTo(dead + "/deeper"); });
        step([&] { frame->goUp(); });                // no drive check on the UI thread
        step([&] { frame->goBack(); });
        step([&] { frame->goComputer(); });          // drive rows, one of them dead
        for (ViewMode mode : {ViewMode::Column, ViewMode::Icon, ViewMode::Peek, ViewMode::List})
            step([&] { frame->switchMode(mode); });
        step([&] { frame->navigateTo(alive); });    // a folder row on the dead mount
        for (ViewMode mode : {ViewMode::Column, ViewMode::List})
            step([&] { frame->switchMode(mode); });
        step([&] { frame->refresh(); });
        step([&] { frame->goComputer(); });
        step([&] { frame->refresh(); });
        step([&] { frame->navigateTo(alive); });
        QTRY_COMPARE_WITH_TIMEOUT(pane->rootNode()->path, alive, 10000);
        QTest::qWait(200);

        const qint64 longest = beat.longestMs();
        qInfo("longest UI-thread gap %lld ms (%lld ms with the waits for a core); %d calls waiting on the dead mount",
            (long long)longest, (long long)beat.longestRawMs(), g_dead.backgroundWaits.load());
        QVERIFY2(g_dead.faults().empty(), g_dead.faults().empty() ? "" : g_dead.faults().front().c_str());
        QCOMPARE(g_moduleUiCalls.load(), 0);
        QVERIFY2(longest < stallLimitMs(), qPrintable(QStringLiteral("UI thread stalled %1 ms").arg(longest)));
        QVERIFY(g_dead.backgroundWaits > 0); // the dead mount was asked, off the UI thread
        QCOMPARE(entryNames(pane->rootNode()).size(), size_t(3)); // dead, inner, note.txt

        // Quitting: the windows close, the event loop returns and the services go,
        // while their threads are still stuck on the dead mount.
        const qint64 quit = quitTimed([&] {
            scans.reset();
            edits.reset();
        });
        QVERIFY2(quit < 1000, qPrintable(QString::number(quit)));
        g_dead.started = false;
    }

    void quittingTheApplicationNeverWaitsForAStuckRead()
    {
        BrondelSettings settings;
        auto delegate = std::make_unique<AppDelegate>(std::vector<std::string>{m_alive, g_dead.folder},
            RootChoice::Paths, ViewMode::List, settings);
        delegate->setCardsObserver([](std::function<void()>, QObject*) { return false; });
        delegate->applicationDidFinishLaunching();
        QCOMPARE(delegate->windows().size(), size_t(2));
        QTRY_VERIFY(delegate->windows().front()->activePane()->rootNode()->hasEntries());
        delegate->windows().back()->refresh(); // a second read of the dead folder
        QTest::qWait(100);
        QVERIFY(delegate->windows().back()->activePane()->scanPendingGen()); // stuck for good

        const qint64 quit = quitTimed([&] { delegate.reset(); });
        QVERIFY2(quit < 1000, qPrintable(QString::number(quit)));
    }

    void fuseDriveThatStopsAnswering()
    {
        HangFs fs(testHome() + "/media/Stuck");
        if (!fs.mounted())
            QSKIP(qPrintable(QString::fromStdString("FUSE test file system unavailable: " + fs.skipReason())));
        const std::string stuck = fs.mountPoint(), inside = stuck + "/a";
        BrondelSettings settings;
        recentsNote(inside, settings);
        QVERIFY(pinnedWrite(std::string(kPinnedDefaultHeader), {{"Work", {m_alive, inside}, std::nullopt}}));
        QVERIFY(sidebarWrite("Favorites", {m_alive, inside}));
        fs.hang();

        auto delegate = std::make_unique<AppDelegate>(std::vector<std::string>{m_alive}, RootChoice::Paths,
            ViewMode::List, settings);
        delegate->setCardsObserver([](std::function<void()>, QObject*) { return false; });
        delegate->applicationDidFinishLaunching();
        BrowserFrame* frame = delegate->windows().front();
        BrondelWindow* pane = frame->activePane();
        QTRY_VERIFY(pane->rootNode()->hasEntries());
        QTest::qWait(100);

        g_dead.started = true;
        Heartbeat beat;
        auto step = [&](auto&& action) {
            action();
            QTest::qWait(60);
        };
        step([&] { frame->navigateTo(inside); });
        step([&] { frame->navigateTo(stuck); });
        step([&] { frame->goUp(); });
        step([&] { frame->goComputer(); });
        for (ViewMode mode : {ViewMode::Column, ViewMode::Icon, ViewMode::Peek, ViewMode::List})
            step([&] { frame->switchMode(mode); });
        step([&] { frame->refresh(); });
        // The drive is found not to answer (within the watchdog's deadline) and says so,
        // in the sidebar and on the Computer root.
        QTest::qWait(6000);
        for (QTreeWidgetItemIterator it(frame->sidebar()); *it; ++it) qInfo("row %s %s", qPrintable((*it)->text(0)), SidebarView::pathOf(*it).c_str());
        qInfo("stuck %d", (int)mountWatchdogIsStuckAt(stuck));
        QTRY_VERIFY_WITH_TIMEOUT(SidebarView::badged(sidebarRow(frame->sidebar(), stuck)), 8000);
        QVERIFY(sidebarRow(frame->sidebar(), stuck)->text(0).contains(QStringLiteral("not responding")));
        QTRY_COMPARE_WITH_TIMEOUT(listInfo(pane, stuck), QStringLiteral("not responding"), 8000);
        step([&] { frame->switchMode(ViewMode::Column); });
        step([&] { frame->navigateTo(m_alive); });
        QTRY_COMPARE(pane->rootNode()->path, m_alive);
        QTest::qWait(100);

        const qint64 longest = beat.longestMs();
        qInfo("longest UI-thread gap %lld ms (%lld ms with the waits for a core) with a hung FUSE drive",
            (long long)longest, (long long)beat.longestRawMs());
        QVERIFY2(g_dead.faults().empty(), g_dead.faults().empty() ? "" : g_dead.faults().front().c_str());
        QCOMPARE(g_moduleUiCalls.load(), 0);
        QVERIFY2(longest < stallLimitMs(), qPrintable(QStringLiteral("UI thread stalled %1 ms").arg(longest)));
        g_dead.started = false;

        const qint64 quit = quitTimed([&] { delegate.reset(); });
        QVERIFY2(quit < 1000, qPrintable(QString::number(quit)));
        fs.release();
    }
};

BRONDEL_GUI_TEST_MAIN(DeadMountTest)
#include "dead_mount_test.moc"
