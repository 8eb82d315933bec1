#include "sizes/drive_children.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_notifier.h"

#include "fs/volume_list.h"
#include "support/temp_tree.h"
#include "support/test_app.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>

using namespace std::chrono_literals;

namespace {

// Counts brondelInfoChanged announced and checks they arrive on the main thread.
struct SignalCounter {
    int count = 0;
    bool offMainThread = false;
    QMetaObject::Connection connection;
    SignalCounter()
    {
        connection = QObject::connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, [this] {
            ++count;
            offMainThread |= QThread::currentThread() != testApp().thread();
        });
    }
    ~SignalCounter() { QObject::disconnect(connection); }

    // Runs the event loop until `count` reaches `n` (gives up after a generous while).
    void waitFor(int n)
    {
        QEventLoop loop;
        QTimer poll, limit;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (count >= n)
                loop.quit();
        });
        QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
        poll.start(5);
        limit.start(20s);
        loop.exec();
    }
};

void spinEvents(std::chrono::milliseconds span)
{
    QEventLoop loop;
    QTimer::singleShot(span, &loop, &QEventLoop::quit);
    loop.exec();
}

// A walker the test holds: each walk records its start and then waits for release.
class HeldWalker {
public:
    FolderSizes::Walker walker()
    {
        return [this](const std::vector<std::string>& paths) {
            const std::string& path = paths.front();
            const std::string lane = path.substr(0, path.find('/', 5)); // "/vol/a/x" -> "/vol/a"
            std::unique_lock guard(m_lock);
            m_started.push_back(path);
            m_maxRunning[lane] = std::max(m_maxRunning[lane], ++m_running[lane]);
            m_changed.notify_all();
            m_changed.wait(guard, [&] { return m_released.count(path) > 0; });
            --m_running[lane];
            return std::vector<int64_t>{int64_t(path.size())};
        };
    }

    std::vector<std::string> waitStarted(size_t n)
    {
        std::unique_lock guard(m_lock);
        m_changed.wait_for(guard, 20s, [&] { return m_started.size() >= n; });
        return m_started;
    }

    void release(const std::string& path)
    {
        std::lock_guard guard(m_lock);
        m_released.insert(path);
        m_changed.notify_all();
    }

    int maxRunning(const std::string& lane)
    {
        std::lock_guard guard(m_lock);
        return m_maxRunning[lane];
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<std::string> m_started;
    std::set<std::string> m_released;
    std::map<std::string, int> m_running, m_maxRunning;
};

std::optional<std::string> volumes(const std::string& path)
{
    return volumeContainingIn(path, {"/vol/a", "/vol/b"});
}

// Asks until the walk's result is stored (a finished walk stores it a moment later).
int64_t sizeOnceKnown(FolderSizes& sizes, const std::string& path)
{
    for (int i = 0; i < 20000; ++i) {
        if (auto size = sizes.size(path))
            return *size;
        std::this_thread::sleep_for(1ms);
    }
    return -1;
}

} // namespace

TEST(FolderSizes, NewestRequestFirstWithinALane)
{
    HeldWalker held;
    FolderSizes sizes(held.walker(), volumes);
    for (const char* path : {"/vol/a/busy1", "/vol/a/busy2"})
        EXPECT_FALSE(sizes.size(path));
    held.waitStarted(2);
    for (const char* path : {"/vol/a/A", "/vol/a/B", "/vol/a/C"})
        EXPECT_FALSE(sizes.size(path));
    held.release("/vol/a/busy1");
    EXPECT_EQ(held.waitStarted(3).back(), "/vol/a/C");
    held.release("/vol/a/busy2");
    EXPECT_EQ(held.waitStarted(4).back(), "/vol/a/B");
    held.release("/vol/a/C");
    EXPECT_EQ(held.waitStarted(5).back(), "/vol/a/A");
    for (const char* path : {"/vol/a/A", "/vol/a/B"})
        held.release(path);
    EXPECT_EQ(sizeOnceKnown(sizes, "/vol/a/A"), 8);
    EXPECT_EQ(held.maxRunning("/vol/a"), 2);
}

TEST(FolderSizes, LanesRunSideBySideTwoWalksEach)
{
    HeldWalker held;
    FolderSizes sizes(held.walker(), volumes);
    const std::vector<std::string> paths = {"/vol/a/1", "/vol/a/2", "/vol/a/3", "/vol/b/1", "/vol/b/2", "/vol/b/3"};
    for (const auto& path : paths)
        EXPECT_FALSE(sizes.size(path));
    auto started = held.waitStarted(4);
    std::sort(started.begin(), started.end());
    EXPECT_EQ(started, (std::vector<std::string>{"/vol/a/1", "/vol/a/2", "/vol/b/1", "/vol/b/2"}));
    for (const auto& path : paths)
        held.release(path);
    for (const auto& path : paths)
        EXPECT_EQ(sizeOnceKnown(sizes, path), 8);
    EXPECT_EQ(held.maxRunning("/vol/a"), 2);
    EXPECT_EQ(held.maxRunning("/vol/b"), 2);
}

TEST(FolderSizes, HungLanesDoNotStopOtherLanes)
{
    // Six drives whose walks never end hold two walks each; "/" and a live drive still
    // get their sizes (a shared pool of threads would have run dry).
    HeldWalker held;
    const std::vector<std::string> points = {"/vol/d1", "/vol/d2", "/vol/d3", "/vol/d4", "/vol/d5", "/vol/d6", "/vol/ok"};
    FolderSizes sizes(held.walker(), [&](const std::string& path) { return volumeContainingIn(path, points); });
    std::vector<std::string> hung;
    for (int d = 1; d <= 6; ++d)
        for (const char* leaf : {"/x", "/y"})
            hung.push_back("/vol/d" + std::to_string(d) + leaf);
    for (const auto& path : hung)
        EXPECT_FALSE(sizes.size(path));
    held.waitStarted(hung.size());
    for (const std::string path : {"/home/ann", "/vol/ok/z"}) {
        held.release(path);
        EXPECT_EQ(sizeOnceKnown(sizes, path), int64_t(path.size())) << path;
    }
    for (const auto& path : hung)
        held.release(path);
}

TEST(FolderSizes, RepeatedRequestsQueueOneWalk)
{
    HeldWalker held;
    FolderSizes sizes(held.walker(), volumes);
    EXPECT_FALSE(sizes.size("/vol/a/x"));
    EXPECT_FALSE(sizes.size("/vol/a/x"));
    held.waitStarted(1);
    EXPECT_FALSE(sizes.size("/vol/a/x"));
    held.release("/vol/a/x");
    EXPECT_EQ(sizeOnceKnown(sizes, "/vol/a/x"), 8);
    EXPECT_EQ(held.waitStarted(1).size(), 1u);
}

TEST(FolderSizes, ForgetDropsAFolderAndEverythingBelow)
{
    const std::vector<std::string> paths = {"/Users/x", "/Users/x/a", "/Users/xy", "/other"};
    struct Case {
        std::string under;
        std::set<std::string> walkedAgain;
    };
    for (const Case& c : {Case{"/Users/x", {"/Users/x", "/Users/x/a"}}, Case{"/", {paths.begin(), paths.end()}},
                          Case{"/Users/x/a/b", {}}}) {
        std::multiset<std::string> walked;
        FolderSizes sizes([&](const std::vector<std::string>& p) { walked.insert(p.begin(), p.end()); return std::vector<int64_t>(p.size(), 5); },
                          volumes);
        sizes.setMode(SizeMode::Synchronous);
        for (const auto& path : paths)
            EXPECT_EQ(sizes.size(path), 5);
        walked.clear();
        sizes.forget(c.under);
        for (const auto& path : paths)
            sizes.size(path);
        EXPECT_EQ(std::set<std::string>(walked.begin(), walked.end()), c.walkedAgain) << c.under;
    }
}

TEST(FolderSizes, SynchronousModeAlwaysAnswers)
{
    TempTree t;
    t.sized("a/f", 1500);
    t.sized("b/g", 20);
    FolderSizes sizes;
    sizes.setMode(SizeMode::Synchronous);
    EXPECT_EQ(sizes.size(t.path("a")), 1500);
    EXPECT_EQ(sizes.size(t.path("missing")), 0);
    sizes.measure({t.path("b"), t.root(), t.path("b")});
    t.sized("b/later", 1); // cached: not walked again
    EXPECT_EQ(sizes.size(t.path("b")), 20);
    EXPECT_EQ(sizes.size(t.root()), 1520);
}

TEST(FolderSizes, LaneIsTheVolumeHoldingThePathOrTheSystemVolume)
{
    FolderSizes sizes([](const auto& p) { return std::vector<int64_t>(p.size()); }, volumes);
    EXPECT_EQ(sizes.lane("/vol/b/deep/er"), "/vol/b");
    EXPECT_EQ(sizes.lane("/vol/c"), "/");
    TempTree t;
    EXPECT_EQ(FolderSizes().lane(t.root()), "/"); // the test home is on no removable drive
}

TEST(InfoNotifier, ABurstOfPostsGivesOneSignalOnTheMainThread)
{
    testApp();
    SignalCounter announced;
    std::vector<std::thread> posters;
    for (int i = 0; i < 10; ++i)
        posters.emplace_back(infoChangedPost);
    for (auto& poster : posters)
        poster.join();
    EXPECT_EQ(announced.count, 0); // announced from the event loop only
    announced.waitFor(1);
    spinEvents(2 * std::chrono::milliseconds(InfoNotifier::kCoalesceMs));
    EXPECT_EQ(announced.count, 1);
    infoChangedPost(); // the burst is over: a new post is a new signal
    announced.waitFor(2);
    EXPECT_EQ(announced.count, 2);
    EXPECT_FALSE(announced.offMainThread);
}

TEST(FolderSizes, BackgroundWalkAnnouncesItsResult)
{
    testApp();
    TempTree t;
    t.sized("f", 4096);
    FolderSizes sizes;
    SignalCounter announced;
    EXPECT_FALSE(sizes.size(t.root()));
    announced.waitFor(1);
    EXPECT_EQ(sizes.size(t.root()), 4096);
}

TEST(DriveChildren, ListsADriveOnceInTheBackground)
{
    testApp();
    TempTree t;
    t.file("b");
    t.dir("a");
    DriveChildren children;
    SignalCounter announced;
    EXPECT_FALSE(children.of(t.root(), BrondelSettings{}));
    announced.waitFor(1);
    t.file("c"); // never read again
    auto listed = children.of(t.root(), BrondelSettings{});
    ASSERT_TRUE(listed);
    std::vector<std::string> names;
    for (const auto& node : *listed)
        names.push_back(node->name);
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b"}));
}
