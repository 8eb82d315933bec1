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

#include <string>

class QFileSystemWatcher;

class FolderWatch : public QObject {
    Q_OBJECT
public:
    // `quietMs`: the calm that ends a burst; `maxDelayMs`: the longest wait in a burst.
    explicit FolderWatch(QObject* parent = nullptr, int quietMs = 50, int maxDelayMs = 250);
    ~FolderWatch() override;

    // Follows `path` from now on (an empty path follows nothing).
    void watch(const std::string& path);
    const std::string& path() const { return m_path; }

signals:
    void changed();
    // To the current watcher, on its thread (internal).
    void addRequested(const QString& path);

private:
    void noticed(const QString& path);
    void fire();

    std::string m_path;
    QPointer<QFileSystemWatcher> m_watcher; // lives on the watcher thread
    QTimer m_quiet;
    QTimer m_deadline;
};
