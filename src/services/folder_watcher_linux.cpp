#include "services/folder_watcher_linux.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Up to this own size a folder's watch also follows changes inside its entries: some
// 30,000 entries on ext4, whose marking costs the kernel about a millisecond.
constexpr int64_t kEntryChangesUpTo = 1 << 20;

} // namespace

uint32_t folderWatchMask(int64_t folderBytes)
{
    uint32_t mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    if (folderBytes <= kEntryChangesUpTo)
        mask |= IN_ATTRIB | IN_CLOSE_WRITE;
    return mask;
}

FolderWatcher::FolderWatcher() = default;

FolderWatcher::~FolderWatcher()
{
    delete m_notifier;
    if (m_fd >= 0)
        ::close(m_fd);
}

void FolderWatcher::add(const QString& path, quint64 token)
{
    // Looking the path up may hang on a drive that does not answer: only this thread waits.
    const QByteArray local = QFile::encodeName(path);
    struct stat st {};
    if (::stat(local.constData(), &st) == 0 && S_ISDIR(st.st_mode)) {
        m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (m_fd >= 0 && ::inotify_add_watch(m_fd, local.constData(), folderWatchMask(int64_t(st.st_size))) >= 0) {
            m_notifier = new QSocketNotifier(qintptr(m_fd), QSocketNotifier::Read);
            connect(m_notifier, &QSocketNotifier::activated, this, &FolderWatcher::drain);
        } else if (m_fd >= 0) {
            ::close(m_fd); // out of watches: the folder shows as it was read
            m_fd = -1;
        }
    }
    emit added(token);
}

void FolderWatcher::drain()
{
    // Whatever the events say, the pane reads the folder again: they are only counted.
    alignas(inotify_event) char buffer[16 * 1024];
    bool any = false;
    for (;;) {
        const ssize_t n = ::read(m_fd, buffer, sizeof buffer);
        if (n > 0) {
            any = true;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        break; // EAGAIN: drained
    }
    if (any)
        emit noticed();
}
