#include "services/folder_watch.h"

#include "services/folder_watcher.h"

#include <QFile>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace {

std::atomic<uint64_t> g_lastToken{0};

// The last token settled, for the reads that wait on it. Never destroyed: a watcher
// thread may still be inside a watch on a dead drive when the process exits.
struct Settled {
    std::mutex mutex;
    std::condition_variable moved;
    uint64_t through = 0;
    uint64_t late = 0; // a token waited for in vain: the thread is stuck until it settles
};

Settled& settled()
{
    static Settled* state = new Settled;
    return *state;
}

// One thread for every pane's watcher. It is never stopped: a watch being added on a
// drive that does not answer may hold it, and quitting must not wait for that.
QThread* watcherThread()
{
    static QThread* thread = [] {
        auto* made = new QThread;
        made->setObjectName(QStringLiteral("folder watch"));
        made->start(QThread::LowPriority);
        return made;
    }();
    return thread;
}

// On the watcher thread: the reads waiting for `token` may start.
void settle(uint64_t token)
{
    {
        Settled& state = settled();
        std::lock_guard lock(state.mutex);
        state.through = std::max(state.through, token);
    }
    settled().moved.notify_all();
}

} // namespace

bool folderWatchWait(uint64_t token, std::chrono::milliseconds limit)
{
    Settled& state = settled();
    std::unique_lock lock(state.mutex);
    if (state.through < state.late)
        return state.through >= token; // stuck on a drive that does not answer: no wait
    if (state.moved.wait_for(lock, limit, [&] { return state.through >= token; }))
        return true;
    state.late = std::max(state.late, token);
    return false;
}

FolderWatch::FolderWatch(QObject* parent, int quietMs, int maxDelayMs)
    : QObject(parent)
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quietMs);
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(maxDelayMs);
    connect(&m_quiet, &QTimer::timeout, this, &FolderWatch::fire);
    connect(&m_deadline, &QTimer::timeout, this, &FolderWatch::fire);
}

FolderWatch::~FolderWatch()
{
    if (m_watcher)
        m_watcher->deleteLater(); // on its own thread, once it is free
}

uint64_t FolderWatch::watch(const std::string& path)
{
    if (path == m_path && m_watcher)
        return m_token;
    m_path = path;
    m_token = 0;
    m_established = false;
    m_quiet.stop();
    m_deadline.stop();
    if (m_watcher) {
        m_watcher->disconnect(this);
        disconnect(this, &FolderWatch::addRequested, m_watcher, nullptr);
        m_watcher->deleteLater();
    }
    if (path.empty())
        return 0;
    auto* watcher = new FolderWatcher;
    watcher->moveToThread(watcherThread());
    m_watcher = watcher;
    // Queued: the notices come from the watcher thread.
    connect(watcher, &FolderWatcher::noticed, this, &FolderWatch::noticed, Qt::QueuedConnection);
    connect(watcher, &FolderWatcher::added, watcher, [](quint64 token) { settle(token); }, Qt::DirectConnection);
    connect(watcher, &FolderWatcher::added, this, &FolderWatch::added, Qt::QueuedConnection);
    // The path travels as a queued signal's argument, copied by Qt into the event: a
    // functor built here and read on the watcher thread would be shared memory between
    // the two threads with only Qt's event-queue lock between them.
    connect(this, &FolderWatch::addRequested, watcher, &FolderWatcher::add, Qt::QueuedConnection);
    m_token = ++g_lastToken;
    emit addRequested(QFile::decodeName(QByteArray::fromStdString(path)), m_token);
    return m_token;
}

void FolderWatch::added(quint64 token)
{
    if (token != m_token || m_established)
        return;
    m_established = true;
    emit watching();
}

void FolderWatch::noticed()
{
    m_quiet.start(); // restarts: the burst is not over
    if (!m_deadline.isActive())
        m_deadline.start();
}

void FolderWatch::fire()
{
    m_quiet.stop();
    m_deadline.stop();
    emit changed();
}

