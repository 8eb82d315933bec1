#pragma once
// Follows one folder on disk for a pane: entries created, removed, renamed or changed
// by any program. The kernel's notices are gathered on a watcher thread of their own
// (adding a watch looks the path up, which a dead drive would hang) and reach the UI
// thread as one changed() per burst: once the folder has been quiet for a short while,
// and at least every so often while a burst goes on, so a folder that keeps changing
// still shows its state. The UI thread does a constant amount of work per notice.

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <string>

class FolderWatcher;

// Waits (on any thread but the UI thread) until the watch numbered `token` is in place,
// at most `limit`; true once it is. A read that starts after this returns true misses
// no change: whatever comes later is noticed.
bool folderWatchWait(uint64_t token, std::chrono::milliseconds limit);

class FolderWatch : public QObject {
    Q_OBJECT
public:
    // `quietMs`: the calm that ends a burst; `maxDelayMs`: the longest wait in a burst.
    explicit FolderWatch(QObject* parent = nullptr, int quietMs = 50, int maxDelayMs = 250);
    ~FolderWatch() override;

    // Follows `path` from now on (an empty path follows nothing). Returns the watch's
    // token for folderWatchWait (0 for none); the same path again keeps its watch.
    uint64_t watch(const std::string& path);
    const std::string& path() const { return m_path; }
    // Whether the kernel watches the path now.
    bool established() const { return m_established; }

signals:
    void changed();
    // The watch asked for last is in place (a change from then on is noticed).
    void watching();
    // To the current watcher, on its thread (internal).
    void addRequested(const QString& path, quint64 token);

private:
    void noticed();
    void added(quint64 token);
    void fire();

    std::string m_path;
    uint64_t m_token = 0;
    bool m_established = false;
    QPointer<FolderWatcher> m_watcher; // lives on the watcher thread
    QTimer m_quiet;
    QTimer m_deadline;
};
