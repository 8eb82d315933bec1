#include "sizes/info_notifier.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <chrono>

InfoNotifier::InfoNotifier()
{
    if (auto* app = QCoreApplication::instance(); app && thread() != app->thread())
        moveToThread(app->thread());
}

InfoNotifier& InfoNotifier::instance()
{
    static InfoNotifier* notifier = new InfoNotifier; // outlives every poster
    return *notifier;
}

void InfoNotifier::post()
{
    if (m_scheduled.exchange(true))
        return;
    // Queued by name: the call crosses threads without any state of ours riding along.
    QMetaObject::invokeMethod(this, "schedule", Qt::QueuedConnection);
}

void InfoNotifier::schedule()
{
    QTimer::singleShot(std::chrono::milliseconds(kCoalesceMs), Qt::PreciseTimer, this, [this] {
        m_scheduled = false;
        emit brondelInfoChanged();
    });
}

void infoChangedPost()
{
    // Without an application there is no one to tell (a command-line run), and the
    // notifier must not be created on a thread that may be gone by the time there is.
    if (QCoreApplication::instance())
        InfoNotifier::instance().post();
}
