#pragma once
// The in-process announcement that computed information (folder sizes, drive listings)
// changed: views connect to brondelInfoChanged and redraw their info texts. Bursts are
// coalesced: at most one signal every 0.3 s, the first 0.3 s after the first post of a
// burst. The signal is always emitted on the main thread.

#include <QObject>

#include <atomic>

class InfoNotifier : public QObject {
    Q_OBJECT

public:
    // The one process-wide notifier, living in the application's main thread (ask for
    // it once the application object exists).
    static InfoNotifier& instance();

    // Callable from any thread.
    void post();

    static constexpr int kCoalesceMs = 300;

signals:
    void brondelInfoChanged();

private:
    InfoNotifier();
    Q_INVOKABLE void schedule(); // main thread

    // Set from the first post of a burst until just before its signal; a post that finds
    // it set is absorbed (its news is already there when the signal goes out).
    std::atomic<bool> m_scheduled{false};
};

// InfoNotifier::instance().post() once there is an application object; nothing before.
void infoChangedPost();
