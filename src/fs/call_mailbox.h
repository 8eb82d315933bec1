#pragma once
// Calls handed from worker threads to the thread of one object. The calls wait in a list
// under our own lock and the receiving thread is woken by name only, so the hand-over
// happens under a lock every checker can see (Qt's event-queue lock is not instrumented)
// and no call is built on one thread and destroyed by Qt on another. Workers hold a
// `CallPoster`, which may outlive the mailbox: what is posted after the mailbox has gone
// is dropped on the posting thread.

#include <QObject>

#include <functional>
#include <memory>

class CallPoster {
public:
    CallPoster() = default; // posts nowhere

    // Any thread: `call` runs on the mailbox's thread, in posting order, unless the
    // mailbox is gone by then.
    void post(std::function<void()> call) const;

private:
    friend class CallMailbox;
    struct State;
    explicit CallPoster(std::shared_ptr<State> state)
        : m_state(std::move(state))
    {
    }
    std::shared_ptr<State> m_state;
};

class CallMailbox : public QObject {
    Q_OBJECT
public:
    explicit CallMailbox(QObject* parent = nullptr);
    ~CallMailbox() override; // what has not run is dropped

    CallPoster poster() const { return CallPoster(m_state); }

private slots:
    void drain(); // runs the calls that have arrived

private:
    std::shared_ptr<CallPoster::State> m_state;
};
