// GUI benchmark: opens a large folder in list and column view (offscreen) and prints the
// time to the first drawn rows, the longest stall of the UI thread while loading, while
// size notifications arrive and while leaving the folder again, and the peak memory.
//
//   gui_bench FOLDER          (bench/run passes the 100,000-entry folder that
//                              ../shared/bench/make-tree DIR flat builds)

#include "config/brondel_settings.h"
#include "fs/scanner.h"
#include "window/browser_frame.h"
#include "sizes/info_notifier.h"
#include "window/scan_service.h"
#include "window/theme_icons.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// Ticks every 2 ms on the UI thread and remembers the longest gap between ticks.
class Heartbeat {
public:
    Heartbeat()
    {
        m_timer.setInterval(2);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
        m_timer.start();
        m_clock.start();
    }
    void reset()
    {
        m_longest = 0;
        m_clock.restart();
    }
    qint64 longestMs() const { return m_longest; }

private:
    void tick()
    {
        m_longest = std::max(m_longest, m_clock.restart());
    }
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

void spin(int milliseconds)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool hasRows(BrondelWindow* pane)
{
    auto* view = pane->contentView()->findChild<QAbstractItemView*>();
    auto* self = qobject_cast<QAbstractItemView*>(pane->contentView());
    QAbstractItemView* v = self ? self : view;
    return v && v->model() && v->model()->rowCount(v->rootIndex()) > 0;
}

void run(const char* label, ViewMode mode, const std::string& folder, BrowserContext& context, Heartbeat& beat)
{
    auto root = DirNode::make();
    root->path = "/tmp";
    root->name = "tmp";
    root->isDir = true;
    BrowserFrame frame(root, RootKind::Folder, context);
    frame.setAttribute(Qt::WA_DeleteOnClose, false);
    frame.resize(1000, 650);
    frame.show();
    BrondelWindow* pane = frame.activePane();
    pane->rebuildMode(mode);
    spin(200);

    beat.reset();
    QElapsedTimer clock;
    clock.start();
    pane->navigateLocal(folder);
    // Waits for events rather than spinning: the reads need both cores.
    while (pane->scanPendingGen() || !hasRows(pane))
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    frame.repaint(); // the first rows drawn
    const qint64 firstRows = clock.elapsed();
    spin(300);
    const qint64 loadStall = beat.longestMs();

    // Sizes arriving: the notification as the size cache posts it (at most every 0.3 s).
    beat.reset();
    qint64 longestPost = 0;
    for (int i = 0; i < 10; ++i) {
        QElapsedTimer post;
        post.start();
        emit InfoNotifier::instance().brondelInfoChanged();
        longestPost = std::max(longestPost, post.elapsed());
        spin(300);
    }
    std::printf("(longest infoChanged handling %lld ms)\n", (long long)longestPost);
    const qint64 sizeStall = beat.longestMs();

    // Leaving the folder: its rows and nodes go.
    beat.reset();
    pane->navigateLocal("/tmp");
    while (pane->scanPendingGen())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    spin(300);
    const qint64 leaveStall = beat.longestMs();

    std::printf("%-8s first rows %5lld ms   longest stall loading %4lld ms   while sizes arrive %4lld ms   leaving %4lld ms\n",
        label, (long long)firstRows, (long long)loadStall, (long long)sizeStall, (long long)leaveStall);
}

} // namespace

int main(int argc, char** argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    if (argc < 2) {
        std::printf("usage: gui_bench FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    QApplication app(argc, argv);
    iconsInstallTheme();

    BrondelSettings settings;
    ScanService scans(4);
    BrowserContext context;
    context.scans = &scans;
    context.settings = &settings;
    context.animate = false;
    context.pinnedNodes = [] { return std::vector<DirNodePtr>(); };
    context.recentsNote = [](const std::string&) {};

    {
        QElapsedTimer scan;
        scan.start();
        DirNodePtr node = Scanner(settings).scan(folder, 1);
        std::printf("scan alone %lld ms (%zu entries)\n", (long long)scan.elapsed(), node->children.size());
    }
    Heartbeat beat;
    std::printf("folder %s\n", folder.c_str());
    run("list", ViewMode::List, folder, context, beat);
    run("columns", ViewMode::Column, folder, context, beat);

    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("peak memory %.1f MB\n", usage.ru_maxrss / 1024.0);
    return 0;
}
