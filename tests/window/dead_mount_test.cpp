// A window whose recent folders, favourites, sidebar and drive rows include a folder on
// a mount that never answers: the UI thread keeps beating while the user navigates,
// switches modes and refreshes, it makes no disk call of its own after start-up, and
// quitting returns at once although background threads are stuck on that mount.
//
// The mount is played by the system-call seam: every stat, statx and open of a path
// under the "dead" folder waits until the test lets go (a call on the UI thread waits
// 300 ms only, so that a fault shows as a failed beat rather than a test that hangs).

#include "gui_test_main.h"

#include "config/pinned_file.h"
#include "config/recents.h"
#include "config/sidebar_file.h"
#include "fs/sys_calls.h"
#include "sizes/info_module.h"
#include "support/temp_tree.h"
#include "views/row_info_cache.h"
#include "window/app_delegate.h"
#include "window/browser_frame.h"
#include "window/sidebar_view.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

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

// Ticks every 5 ms on the UI thread and keeps the longest gap between two ticks.
class Heartbeat {
public:
    Heartbeat()
    {
        m_timer.setInterval(5);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { m_longest = std::max(m_longest, m_clock.restart()); });
        m_timer.start();
        m_clock.start();
    }
    qint64 longestMs() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

DirNodePtr folderNode(const std::string& path, const std::string& name)
{
    auto node = DirNode::make();
    node->path = path;
    node->name = name;
    node->isDir = true;
    return node;
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
        QTRY_VERIFY(!frame->activePane()->rootNode()->children.empty());
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
        qInfo("longest UI-thread gap %lld ms; %d calls waiting on the dead mount", (long long)longest,
            g_dead.backgroundWaits.load());
        QVERIFY2(g_dead.faults().empty(), g_dead.faults().empty() ? "" : g_dead.faults().front().c_str());
        QCOMPARE(g_moduleUiCalls.load(), 0);
        QVERIFY2(longest < 50, qPrintable(QStringLiteral("UI thread stalled %1 ms").arg(longest)));
        QVERIFY(g_dead.backgroundWaits > 0); // the dead mount was asked, off the UI thread
        QCOMPARE(pane->rootNode()->children.size(), size_t(3)); // dead, inner, note.txt

        // Quitting: the windows close, the event loop returns and the services go,
        // while their threads are still stuck on the dead mount.
        QElapsedTimer quit;
        quit.start();
        frame->close();
        QEventLoop loop;
        QTimer::singleShot(0, &loop, &QEventLoop::quit);
        loop.exec();
        scans.reset();
        edits.reset();
        QVERIFY2(quit.elapsed() < 1000, qPrintable(QString::number(quit.elapsed())));
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
        QTRY_VERIFY(!delegate->windows().front()->activePane()->rootNode()->children.empty());
        delegate->windows().back()->refresh(); // a second read of the dead folder
        QTest::qWait(100);
        QVERIFY(delegate->windows().back()->activePane()->scanPendingGen()); // stuck for good

        QElapsedTimer quit;
        quit.start();
        for (BrowserFrame* frame : delegate->windows())
            frame->close();
        QEventLoop loop;
        QTimer::singleShot(0, &loop, &QEventLoop::quit);
        loop.exec();
        delegate.reset();
        QVERIFY2(quit.elapsed() < 1000, qPrintable(QString::number(quit.elapsed())));
    }
};

BRONDEL_GUI_TEST_MAIN(DeadMountTest)
#include "dead_mount_test.moc"
