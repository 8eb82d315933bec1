// Peek benchmark: every Peek style, offscreen, drills 20 times into a folder and climbs
// back (four levels down and up, five times), with its animations on. For each style it
// prints the time from the press on a plate to the first frame of the new level
// (median and worst), and the longest interval between two animation frames.
//
//   peek_bench [--slow]
//
// With PEEK_BENCH_SHOTS set to a folder, each style's view two levels down is saved
// there as <key>.png (to look at the styles without a display).
//
// The folders are made in a temporary directory: four levels, each with six folders
// and twenty files.

#include "config/brondel_settings.h"
#include "config/lab_variant.h"
#include "services/scan_service.h"
#include "services/theme_icons.h"
#include "views/peek/peek_style_view.h"

#include <QAbstractAnimation>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kDepth = 4;
constexpr int kRounds = 5; // kDepth drill-downs each

void makeLevel(const QString& dir, int depth)
{
    QDir().mkpath(dir);
    for (int i = 0; i < 20; ++i) {
        QFile file(dir + QStringLiteral("/file%1.txt").arg(i, 2, 10, QLatin1Char('0')));
        (void)file.open(QIODevice::WriteOnly);
    }
    for (int i = 0; i < 6; ++i) {
        const QString sub = dir + QStringLiteral("/dir%1").arg(i);
        if (i == 0 && depth < kDepth)
            makeLevel(sub, depth + 1);
        else
            QDir().mkpath(sub);
    }
}

void processUntil(const std::function<bool()>& done, int limitMs = 10000)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < limitMs)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

bool animating(const QWidget* view)
{
    return !view->findChildren<QAbstractAnimation*>().isEmpty();
}

qint64 median(std::vector<qint64> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv)
{
    if (!std::getenv("QT_QPA_PLATFORM"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const bool slow = argc > 1 && std::strcmp(argv[1], "--slow") == 0;
    QApplication app(argc, argv);
    iconsInstallTheme();
    QTemporaryDir temp;
    const QString root = temp.path() + QStringLiteral("/peek");
    makeLevel(root, 1);

    const char* shots = std::getenv("PEEK_BENCH_SHOTS");
    BrondelSettings settings;
    ScanService scans(2);
    std::printf("Peek styles: %d drill-downs and back each, offscreen%s\n", kDepth * kRounds, slow ? ", --slow" : "");
    std::printf("  %-14s %26s %14s %22s\n", "style", "press to first frame", "worst", "longest frame interval");
    for (const LabVariant* type : labVariantTypes()) {
        PeekSetup setup;
        setup.rootPath = root.toStdString();
        setup.context.scans = &scans;
        setup.context.settings = &settings;
        setup.context.animate = true;
        setup.context.peekSlow = slow;
        std::unique_ptr<PeekStyleView> view(peekStyleMake(type->key(), setup));
        if (!view)
            continue;
        view->resize(1000, 650);
        view->show();
        view->start();
        processUntil([&] { return view->levelCount() == 1; });

        QElapsedTimer clock;
        clock.start();
        qint64 lastTick = -1;
        qint64 longestFrame = 0;
        QObject::connect(view.get(), &PeekStyleView::animationTick, view.get(), [&] {
            const qint64 now = clock.elapsed();
            if (lastTick >= 0)
                longestFrame = std::max(longestFrame, now - lastTick);
            lastTick = now;
        });
        int drawnLevel = -1;
        QObject::connect(view.get(), &PeekStyleView::frameDrawn, view.get(), [&](int level) { drawnLevel = level; });
        std::vector<qint64> toFrame;
        for (int round = 0; round < kRounds; ++round) {
            for (int depth = 0; depth < kDepth; ++depth) {
                PeekPlateGrid* grid = view->grid(view->levelCount() - 1);
                int folder = 0;
                while (folder < grid->count() && !grid->plate(folder)->item().isDir)
                    ++folder;
                drawnLevel = -1;
                const int next = view->levelCount();
                const qint64 pressed = clock.elapsed();
                lastTick = -1;
                grid->plate(folder)->click();
                processUntil([&] { return drawnLevel == next; });
                toFrame.push_back(clock.elapsed() - pressed);
                processUntil([&] { return !animating(view.get()); });
                lastTick = -1;
                if (round == 0 && depth == 1 && shots)
                    view->grab().save(QString::fromLocal8Bit(shots) + QLatin1Char('/') +
                        QString::fromStdString(type->key()) + QStringLiteral(".png"));
            }
            while (view->levelCount() > 1) {
                view->climb();
                processUntil([&] { return !animating(view.get()); });
                lastTick = -1;
            }
        }
        std::printf("  %-14s %23lld ms %11lld ms %19lld ms\n", type->title().c_str(), (long long)median(toFrame),
            (long long)*std::max_element(toFrame.begin(), toFrame.end()), (long long)longestFrame);
        std::fflush(stdout);
    }
    scans.waitForDone();
    return 0;
}
