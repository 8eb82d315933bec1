#include "services/folder_watch.h"

#include <QFile>
#include <QFileSystemWatcher>
#include <QThread>

namespace {

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

} // namespace

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

void FolderWatch::watch(const std::string& path)
{
    if (path == m_path && m_watcher)
        return;
    m_path = path;
    m_quiet.stop();
    m_deadline.stop();
    if (m_watcher) {
        m_watcher->disconnect(this);
        disconnect(this, &FolderWatch::addRequested, m_watcher, nullptr);
        m_watcher->deleteLater();
    }
    if (path.empty())
        return;
    auto* watcher = new QFileSystemWatcher;
    watcher->moveToThread(watcherThread());
    m_watcher = watcher;
    // Queued: the notices come from the watcher thread.
    connect(watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatch::noticed, Qt::QueuedConnection);
    // The path travels as a queued signal's argument, copied by Qt into the event: a
    // functor built here and read on the watcher thread would be shared memory between
    // the two threads with only Qt's event-queue lock between them.
    connect(this, &FolderWatch::addRequested, watcher, &QFileSystemWatcher::addPath, Qt::QueuedConnection);
    emit addRequested(QFile::decodeName(QByteArray::fromStdString(path)));
}

void FolderWatch::noticed(const QString&)
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
