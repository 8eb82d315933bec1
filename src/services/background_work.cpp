#include "services/background_work.h"

#include <QPointer>

BackgroundWork::BackgroundWork(int threads, WorkClass work, WhenStuck stuck, QObject* parent)
    : QObject(parent)
    , m_pool(threads, work, stuck)
{
}

// The pool goes first (its tasks not yet started dropped), then the mailbox with the
// continuations that have not run.
BackgroundWork::~BackgroundWork() = default;

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
    m_pool.start([mailbox = m_mailbox.poster(), guarded, guard, work = std::move(work)] {
        const Post post = [&mailbox, guarded, &guard](std::function<void()> then) {
            mailbox.post([guarded, guard, then = std::move(then)] {
                if (!guarded || guard)
                    then();
            });
        };
        work(post);
    });
}
