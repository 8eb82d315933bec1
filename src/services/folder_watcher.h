#pragma once
// The kernel's watch of one pane's folder (fs/folder_notify_linux), on the watcher
// thread. Each watch asked for has a token; the thread takes the requests in the order
// they were made, so the tokens up to the last one it handled are all settled.

#include <QObject>

#include <mutex>

class QSocketNotifier;

class FolderWatcher : public QObject {
    Q_OBJECT
public:
    FolderWatcher();
    ~FolderWatcher() override;

    // Watches `path` (on the watcher thread), then says added(), which settles `token`.
    void add(const QString& path, quint64 token);

signals:
    void added(quint64 token);
    // Something changed in the folder, or the folder itself went (one per batch of
    // kernel notices).
    void noticed();

private:
    // Made on the main thread, used on the watcher thread: the constructor releases this,
    // add() and the destructor take it, so the thread checker sees the hand-over (Qt's
    // event-queue lock, the one actually between the two, is not instrumented).
    std::mutex m_handOver;
    int m_fd = -1;
    QSocketNotifier* m_notifier = nullptr;
};
