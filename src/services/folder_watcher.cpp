#include "services/folder_watcher.h"

#include "fs/folder_notify_linux.h"
#include "fs/sys_calls.h"

#include <QFile>
#include <QSocketNotifier>

FolderWatcher::FolderWatcher()
{
    std::lock_guard made(m_handOver);
}

FolderWatcher::~FolderWatcher()
{
    { std::lock_guard received(m_handOver); } // may go before add() ran
    delete m_notifier;
    if (m_fd >= 0)
        sysClose(m_fd);
}

void FolderWatcher::add(const QString& path, quint64 token)
{
    { std::lock_guard received(m_handOver); }
    // Out of watches, or not a folder: the folder shows as it was read.
    m_fd = folderNotifyOpen(QFile::encodeName(path).toStdString());
    if (m_fd >= 0) {
        m_notifier = new QSocketNotifier(qintptr(m_fd), QSocketNotifier::Read);
        connect(m_notifier, &QSocketNotifier::activated, this, [this] {
            if (folderNotifyDrain(m_fd))
                emit noticed();
        });
    }
    emit added(token);
}
