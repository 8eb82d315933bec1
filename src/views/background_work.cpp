#include "views/background_work.h"

#include <QPointer>

#include <mutex>

// Where the tasks hand their continuations to: this object while it lives, nothing
// afterwards. The lock makes "post, unless closed" one step against the destructor, and
// a continuation posted before that is dropped with the object's pending events.
struct BackgroundWork::Mailbox {
    std::mutex lock;
    QObject* receiver = nullptr;

    void post(std::function<void()> call)
    {
        std::lock_guard guard(lock);
        if (receiver)
            QMetaObject::invokeMethod(receiver, std::move(call), Qt::QueuedConnection);
    }
};

BackgroundWork::BackgroundWork(int threads, WorkClass work, WhenStuck stuck, QObject* parent)
    : QObject(parent)
    , m_mailbox(std::make_shared<Mailbox>())
    , m_pool(threads, work, stuck)
{
    m_mailbox->receiver = this;
}

BackgroundWork::~BackgroundWork()
{
    std::lock_guard guard(m_mailbox->lock);
    m_mailbox->receiver = nullptr;
}

void BackgroundWork::submit(QObject* context, Work work)
{
    // The guard is made and read on the main thread only; the worker merely carries it.
    const bool guarded = context != nullptr;
    QPointer<QObject> guard(context);
    m_pool.start([mailbox = m_mailbox, guarded, guard, work = std::move(work)] {
        std::function<void()> then = work();
        if (!then)
            return;
        mailbox->post([guarded, guard, then = std::move(then)] {
            if (!guarded || guard)
                then();
        });
    });
}
