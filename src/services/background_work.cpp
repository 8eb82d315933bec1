#include "services/background_work.h"

#include <QPointer>

#include <mutex>
#include <vector>

// Where the tasks hand their continuations to: this object while it lives, nothing
// afterwards. The continuations wait in a list under our own lock, and the main thread
// is only woken by name: so the hand-over from the worker to the main thread happens
// under a lock every checker can see (Qt's event queue lock is not instrumented), and a
// continuation is never built on one thread and destroyed by Qt on another.
struct BackgroundWork::Mailbox {
    std::mutex lock;
    QObject* receiver = nullptr;
    std::vector<std::function<void()>> pending;

    void post(std::function<void()> call)
    {
        std::lock_guard guard(lock);
        if (!receiver)
            return;
        const bool wake = pending.empty();
        pending.push_back(std::move(call));
        if (wake)
            QMetaObject::invokeMethod(receiver, "drain", Qt::QueuedConnection);
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
    std::vector<std::function<void()>> dropped;
    std::lock_guard guard(m_mailbox->lock);
    m_mailbox->receiver = nullptr;
    dropped.swap(m_mailbox->pending);
}

void BackgroundWork::drain()
{
    std::vector<std::function<void()>> calls;
    {
        std::lock_guard guard(m_mailbox->lock);
        calls.swap(m_mailbox->pending);
    }
    // A continuation may close the window that owns this object: the rest are dropped.
    QPointer<BackgroundWork> alive(this);
    for (auto& call : calls) {
        if (!alive)
            return;
        call();
    }
}

void BackgroundWork::submit(QObject* context, Work work)
{
    submitStreaming(context, [work = std::move(work)](const Post& post) {
        if (std::function<void()> then = work())
            post(std::move(then));
    });
}

void BackgroundWork::submitStreaming(QObject* context, std::function<void(const Post& post)> work)
{
    // The guard is made and read on the main thread only; the worker merely carries it.
    const bool guarded = context != nullptr;
    QPointer<QObject> guard(context);
    m_pool.start([mailbox = m_mailbox, guarded, guard, work = std::move(work)] {
        const Post post = [&mailbox, guarded, &guard](std::function<void()> then) {
            mailbox->post([guarded, guard, then = std::move(then)] {
                if (!guarded || guard)
                    then();
            });
        };
        work(post);
    });
}
