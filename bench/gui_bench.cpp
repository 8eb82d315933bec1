// GUI benchmark: opens a large folder in one view (offscreen) and prints the time to the
// first drawn rows, the longest stall of the UI thread while the names load, while the
// sizes and dates stream in, while scrolling from end to end and while leaving the
// folder again, and the memory the open view costs.
//
//   gui_bench FOLDER list|columns|icons
//   gui_bench FOLDER previews THREADS
//
// One view per process, so that the peak memory is that of one open view. bench/run
// runs it for the 100,000- and the 1,000,000-entry folders, the icon view for the
// 100,000-entry one. "previews" fills the previews of a folder of images from an empty
// thumbnail cache with THREADS threads and prints the time and the longest stall.
//
// BRONDEL_BENCH_SLOW_EVENTS=N also prints every stall of the UI thread over N ms with the
// events that filled it, and when the rows came in and how long the first draw took.

#include "bench_window.h"
#include "config/brondel_settings.h"
#include "sizes/info_notifier.h"
#include "views/icon_card_view.h"
#include "views/node_tree_model.h"
#include "services/thumbnail_loader.h"
#include "window/browser_frame.h"
#include "services/scan_service.h"
#include "services/theme_icons.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QThread>
#include <QTimer>

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// With BRONDEL_BENCH_SLOW_EVENTS=N set, every gap of the heartbeat over N ms is printed
// with the UI-thread events dispatched in it, summed by type and receiver, and the time
// spent outside them: where a stall comes from.
class TimedApplication : public QApplication {
public:
    using QApplication::QApplication;
    static int limit()
    {
        static const char* const set = std::getenv("BRONDEL_BENCH_SLOW_EVENTS");
        static const int value = set ? std::atoi(set) : -1;
        return value;
    }
    bool notify(QObject* receiver, QEvent* event) override
    {
        // Events of other threads pass untimed (and untouched: the tally is the UI thread's).
        if (limit() < 0 || m_depth > 0 || QThread::currentThread() != thread())
            return QApplication::notify(receiver, event);
        ++m_depth;
        QElapsedTimer clock;
        clock.start();
        const int type = event->type();
        const QByteArray what = QByteArray::number(type) + " to " + receiver->metaObject()->className();
        const bool done = QApplication::notify(receiver, event);
        --m_depth;
        Spent& spent = m_spent[what];
        spent.us += clock.nsecsElapsed() / 1000;
        ++spent.count;
        return done;
    }
    // A gap of `ms` ended: prints what filled it when it is long, and starts afresh.
    void gap(qint64 ms)
    {
        if (limit() >= 0 && ms > limit()) {
            qint64 inside = 0;
            for (const Spent& spent : m_spent)
                inside += spent.us;
            std::printf("    gap %lld ms, %lld ms outside events:", (long long)ms, (long long)(ms - inside / 1000));
            for (auto it = m_spent.begin(); it != m_spent.end(); ++it)
                if (it->us >= 1000)
                    std::printf(" [%s: %lld ms in %d]", it.key().constData(), (long long)(it->us / 1000), it->count);
            std::printf("\n");
        }
        m_spent.clear();
    }

private:
    struct Spent {
        qint64 us = 0;
        int count = 0;
    };
    int m_depth = 0;
    QHash<QByteArray, Spent> m_spent;
};

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
        const qint64 gap = m_clock.restart();
        m_longest = std::max(m_longest, gap);
        if (auto* app = static_cast<TimedApplication*>(qApp))
            app->gap(gap);
    }
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

void spin(int milliseconds)
{
    benchSpin(milliseconds);
}

QAbstractItemView* itemView(BrondelWindow* pane)
{
    auto* self = qobject_cast<QAbstractItemView*>(pane->contentView());
    return self ? self : pane->contentView()->findChild<QAbstractItemView*>();
}

// The view whose rows are the folder's: the first column in column mode.
QAbstractItemView* rowsView(BrondelWindow* pane)
{
    QAbstractItemView* view = itemView(pane);
    if (!view)
        return nullptr;
    const auto lists = view->findChildren<QAbstractItemView*>();
    return lists.isEmpty() ? view : lists.first();
}

bool hasRows(BrondelWindow* pane)
{
    QAbstractItemView* v = itemView(pane);
    return v && v->model() && v->model()->rowCount(v->rootIndex()) > 0;
}

// A figure of /proc/self/status, in MB.
double statusMb(const char* field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string key = std::string(field) + ":";
    while (std::getline(status, line))
        if (line.rfind(key, 0) == 0)
            return std::stod(line.substr(key.size())) / 1024.0;
    return 0;
}

double residentMb()
{
    return statusMb("VmRSS");
}

// The process's own peak: not getrusage's, which keeps the peak of the process that
// started this one when that was higher (the kernel carries it across exec).
double peakMb()
{
    return statusMb("VmHWM");
}

// The icon view's run: first items drawn, stalls while loading and while paging down,
// peak memory.
int iconsRun(BrowserFrame& frame, BrondelWindow* pane, const std::string& folder)
{
    spin(300);
    const double baseline = residentMb();
    Heartbeat beat;
    beat.reset();
    QElapsedTimer clock;
    clock.start();
    pane->navigateLocal(folder);
    auto shown = [pane] {
        auto* view = qobject_cast<IconCardView*>(pane->contentView());
        return view && view->ready() && view->data()->count(0) > 0 ? view : nullptr;
    };
    while (pane->scanPendingGen() || !shown())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    IconCardView* view = shown();
    frame.repaint(); // the first items drawn
    const qint64 firstItems = clock.elapsed();
    spin(100);
    const qint64 loadStall = beat.longestMs();
    const size_t entries = view->data()->count(0);

    // Paging down, each page drawn, across the whole folder.
    beat.reset();
    QScrollBar* bar = view->verticalScrollBar();
    int pages = 0;
    QElapsedTimer paging;
    paging.start();
    while (bar->value() < bar->maximum() && pages < 4000) {
        bar->setValue(bar->value() + bar->pageStep());
        view->viewport()->repaint();
        QApplication::processEvents();
        ++pages;
    }
    const qint64 pagingMs = paging.elapsed();
    spin(100);
    const qint64 scrollStall = beat.longestMs();
    const double peakOpen = peakMb();
    std::printf("  %-7s %8zu entries: first items %5lld ms; longest stall: loading %3lld ms, paging down %d pages "
                "(%.2f ms a page) %3lld ms\n",
        "icons", entries, (long long)firstItems, (long long)loadStall, pages,
        pages ? double(pagingMs) / pages : 0.0, (long long)scrollStall);
    std::printf("  %-7s peak %.1f MB (%.1f MB before the folder opened): %.0f bytes per entry\n", "", peakOpen,
        baseline, entries ? (peakOpen - baseline) * 1024 * 1024 / double(entries) : 0.0);
    std::fflush(stdout);
    return 0;
}

// Previews of every image of `folder` from an empty cache, asked in display order.
int previewsRun(const std::string& folder, int threads)
{
    std::vector<std::string> images;
    if (DIR* dir = ::opendir(folder.c_str())) {
        while (dirent* entry = ::readdir(dir))
            if (entry->d_name[0] != '.')
                images.push_back(folder + "/" + entry->d_name);
        ::closedir(dir);
    }
    std::sort(images.begin(), images.end());
    const std::string cache = "/tmp/brondel-bench-thumbs-" + std::to_string(::getpid());
    ThumbnailLoader loader(threads, cache);
    Heartbeat beat;
    spin(50);
    beat.reset();
    QElapsedTimer clock;
    clock.start();
    // As a view asks: a screenful at a time, the newest requests first.
    for (size_t i = 0; i < images.size(); ++i) {
        loader.preview(images[i], 64);
        if (i % 40 == 39)
            QApplication::processEvents();
    }
    while (loader.pending() > 0)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    const qint64 total = clock.elapsed();
    const qint64 stall = beat.longestMs();
    std::printf("  previews %5zu images, %d thread%s: all in %6lld ms (made %d, failed %d), longest stall %3lld ms\n",
        images.size(), threads, threads == 1 ? " " : "s", (long long)total, loader.finished(ThumbOutcome::Made),
        loader.finished(ThumbOutcome::Failed), (long long)stall);
    std::fflush(stdout);
    std::error_code ignored;
    std::filesystem::remove_all(cache, ignored); // the bench's own scratch cache
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    if (argc < 3) {
        std::printf("usage: gui_bench FOLDER list|columns|icons | FOLDER previews THREADS\n");
        return 2;
    }
    const std::string folder = argv[1];
    const bool columns = std::string(argv[2]) == "columns";
    const bool icons = std::string(argv[2]) == "icons";
    TimedApplication app(argc, argv);
    iconsInstallTheme();
    if (std::string(argv[2]) == "previews")
        return previewsRun(folder, argc > 3 ? std::atoi(argv[3]) : 3);

    BenchWindow window(icons ? ViewMode::Icon : columns ? ViewMode::Column : ViewMode::List);
    BrowserFrame& frame = *window.frame;
    BrondelWindow* pane = window.pane();
    if (icons)
        return iconsRun(frame, pane, folder);
    spin(300);
    const double baseline = residentMb();
    Heartbeat beat;

    beat.reset();
    QElapsedTimer clock;
    clock.start();
    pane->navigateLocal(folder);
    if (TimedApplication::limit() >= 0)
        std::printf("    navigating took %lld ms\n", (long long)clock.elapsed());
    while (pane->scanPendingGen() || !hasRows(pane))
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const qint64 beforePaint = clock.elapsed();
    frame.repaint(); // the first rows drawn
    const qint64 firstRows = clock.elapsed();
    if (TimedApplication::limit() >= 0)
        std::printf("    rows in after %lld ms, first drawn in %lld ms\n", (long long)beforePaint, (long long)(firstRows - beforePaint));
    spin(100);
    const qint64 loadStall = beat.longestMs();
    QAbstractItemView* view = itemView(pane);
    const int entries = view->model()->rowCount(view->rootIndex());

    // Sizes and dates stream in (the visible rows first), and folder sizes are announced
    // as the size cache posts them.
    beat.reset();
    auto* model = qobject_cast<NodeTreeModel*>(view->model());
    QElapsedTimer meta;
    meta.start();
    int posts = 0;
    while (model && model->metaPending() && meta.elapsed() < 120000) {
        spin(300);
        emit InfoNotifier::instance().brondelInfoChanged();
        ++posts;
    }
    const qint64 metaMs = meta.elapsed();
    spin(200);
    const qint64 metaStall = beat.longestMs();

    // Scrolling from the first row to the last in 40 steps, each drawn.
    beat.reset();
    QAbstractItemView* rows = rowsView(pane);
    QScrollBar* bar = rows->verticalScrollBar();
    for (int step = 0; step <= 40; ++step) {
        bar->setValue(bar->minimum() + int(int64_t(bar->maximum() - bar->minimum()) * step / 40));
        rows->viewport()->repaint();
        spin(20);
    }
    const qint64 scrollStall = beat.longestMs();
    const double peakOpen = peakMb();

    // Leaving the folder: its rows and records go.
    beat.reset();
    pane->navigateLocal("/tmp");
    while (pane->scanPendingGen())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    spin(300);
    const qint64 leaveStall = beat.longestMs();

    std::printf("  %-7s %8d entries: first rows %5lld ms; longest stall: loading %3lld ms, while sizes and dates "
                "stream in %3lld ms (all in after %lld ms), scrolling end to end %3lld ms, leaving %3lld ms\n",
        columns ? "columns" : "list", entries, (long long)firstRows, (long long)loadStall, (long long)metaStall,
        (long long)metaMs, (long long)scrollStall, (long long)leaveStall);
    std::printf("  %-7s peak %.1f MB (%.1f MB before the folder opened): %.0f bytes per entry\n", "", peakOpen,
        baseline, entries ? (peakOpen - baseline) * 1024 * 1024 / entries : 0.0);
    std::fflush(stdout);
    return 0;
}
