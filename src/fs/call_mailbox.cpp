#include "fs/call_mailbox.h"

#include <QPointer>

#include <mutex>
#include <vector>

struct CallPoster::State {
    std::mutex lock;
    QObject* receiver = nullptr; // cleared when the mailbox goes
    std::vector<std::function<void()>> pending;
};

void CallPoster::post(std::function<void()> call) const
{
    if (!m_state)
        return;
    std::lock_guard guard(m_state->lock);
    if (!m_state->receiver)
        return;
    const bool wake = m_state->pending.empty();
    m_state->pending.push_back(std::move(call));
    if (wake)
        QMetaObject::invokeMethod(m_state->receiver, "drain", Qt::QueuedConnection);
}

CallMailbox::CallMailbox(QObject* parent)
    : QObject(parent)
    , m_state(std::make_shared<CallPoster::State>())
{
    m_state->receiver = this;
}

CallMailbox::~CallMailbox()
{
    std::vector<std::function<void()>> dropped;
    std::lock_guard guard(m_state->lock);
    m_state->receiver = nullptr;
    dropped.swap(m_state->pending);
}

void CallMailbox::drain()
{
    std::vector<std::function<void()>> calls;
    {
        std::lock_guard guard(m_state->lock);
        calls.swap(m_state->pending);
    }
    // A call may destroy the mailbox (its owner closing a window): the rest are dropped.
    QPointer<CallMailbox> alive(this);
    for (auto& call : calls) {
        if (!alive)
            return;
        call();
    }
}
