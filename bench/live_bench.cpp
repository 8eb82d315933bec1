// GUI benchmark of a live folder: an empty folder is shown in the list view (offscreen)
// while another thread creates files in it at full speed. Prints the time from the last
// file created to its row being shown, and the longest stall of the UI thread meanwhile.
//
//   live_bench WORK_DIR [COUNT]     (COUNT defaults to 10,000)

#include "bench_window.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

int shownRows(BrondelWindow* pane)
{
    auto* view = qobject_cast<QAbstractItemView*>(pane->contentView());
    return view && view->model() ? view->model()->rowCount(view->rootIndex()) : 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    if (argc < 2) {
        std::printf("usage: live_bench WORK_DIR [COUNT]\n");
        return 2;
    }
    const int count = argc > 2 ? std::atoi(argv[2]) : 10000;
    const std::string folder = std::string(argv[1]) + "/live-" + std::to_string(::getpid());
    QDir(QString::fromStdString(folder)).removeRecursively();
    QDir().mkpath(QString::fromStdString(folder));
    QApplication app(argc, argv);

    BenchWindow window(ViewMode::List);
    BrowserFrame& frame = *window.frame;
    BrondelWindow* pane = window.pane();
    pane->navigateLocal(folder);
    while (pane->scanPendingGen())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    benchSpin(300); // the watch is in place

    std::atomic<int64_t> lastCreated{0};
    std::thread writer([&] {
        for (int i = 0; i < count; ++i) {
            const std::string path = folder + "/file-" + std::to_string(i) + ".txt";
            const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
            if (fd >= 0)
                ::close(fd);
        }
        lastCreated.store(Clock::now().time_since_epoch().count());
    });
    // The UI thread's heartbeat: the longest gap between two turns of the event loop.
    QElapsedTimer beat;
    beat.start();
    qint64 longest = 0;
    QTimer tick;
    tick.setInterval(2);
    QObject::connect(&tick, &QTimer::timeout, [&] { longest = std::max(longest, beat.restart()); });
    tick.start();
    QElapsedTimer limit;
    limit.start();
    int64_t shownAt = 0;
    while (limit.elapsed() < 30000) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        if (shownRows(pane) == count) {
            frame.repaint();
            shownAt = Clock::now().time_since_epoch().count();
            break;
        }
    }
    writer.join();
    const double lag = shownAt ? std::chrono::duration<double, std::milli>(Clock::duration(shownAt - lastCreated.load())).count() : -1;
    std::printf("live folder: %d files created at full speed: last row shown %.0f ms after the last file "
                "(target <= 500 ms); longest UI-thread stall %lld ms\n",
        count, lag, (long long)longest);
    std::fflush(stdout);
    QDir(QString::fromStdString(folder)).removeRecursively();
    return shownAt ? 0 : 1;
}
