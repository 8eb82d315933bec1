#pragma once
// The kernel's watch of one pane's folder (inotify), on the watcher thread. Each watch
// asked for has a token; the thread takes the requests in the order they were made, so
// the tokens up to the last one it handled are all settled.
//
// What the watch asks of the kernel depends on the folder's size. Entries created,
// removed or renamed are noticed in every folder. Changes inside the entries (a file
// written and closed, a date or permission changed) are noticed only in folders of
// up to some tens of thousands of entries: asking for them makes the kernel mark every
// entry of the folder it holds in memory, one by one, under the folder's own lock. For a
// million entries that is some 80 ms in which any look-up of the folder (its drive's
// free space, a second pane) spins on a processor, and a small machine's UI thread
// finds none free.

#include <QObject>

#include <cstdint>
#include <string>

class QSocketNotifier;

// The events asked for on a folder whose own size (st_size) is `folderBytes`.
uint32_t folderWatchMask(int64_t folderBytes);

class FolderWatcher : public QObject {
    Q_OBJECT
public:
    FolderWatcher();
    ~FolderWatcher() override;

    // Watches `path` (on the watcher thread), then settles `token` and says added().
    void add(const QString& path, quint64 token);

signals:
    void added(quint64 token);
    // Something changed in the folder, or the folder itself went (one per batch of
    // kernel events).
    void noticed();

private:
    void drain();

    int m_fd = -1;
    QSocketNotifier* m_notifier = nullptr;
};
