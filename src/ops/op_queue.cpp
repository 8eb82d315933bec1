#include "ops/op_queue.h"

#include "fs/detached_pool.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "ops/op_engine.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>

namespace {

// How many finished jobs the undo stack keeps.
constexpr size_t kUndoDepth = 50;

// What a running job waits on while the GUI answers its question.
struct JobState {
    OpControl control;
    std::mutex lock;
    std::condition_variable answered;
    uint64_t question = 0;
    std::optional<OpConflictAnswer> conflict;
    std::optional<ErrorChoice> error;

    void cancel()
    {
        control.cancel();
        std::lock_guard guard(lock);
        answered.notify_all();
    }
};

// The device a job works on, which picks its lane: the destination's for what lands in
// a folder, the item's own for what stays on its device.
dev_t jobDevice(const OpRequest& request)
{
    std::string path = request.targetDir;
    if (request.kind == OpKind::Rename || request.kind == OpKind::Trash || request.kind == OpKind::Restore
        || request.kind == OpKind::Delete)
        path = request.sources.empty() ? std::string() : pathParent(request.sources.front());
    struct stat st;
    return !path.empty() && sysCalls().stat(path.c_str(), &st) == 0 ? st.st_dev : 0;
}

} // namespace

struct OpQueue::Shared {
    Shared(OpQueue* queue, CallPoster notices)
        : queue(queue)
        , notices(std::move(notices))
    {
    }

    OpQueue* const queue; // reached only through the notices, which die with it
    const CallPoster notices;
    std::mutex lock;
    bool open = true; // cleared when the queue goes
    OpJobId next = 1;
    std::map<OpJobId, std::shared_ptr<JobState>> jobs;
    std::map<dev_t, std::unique_ptr<DetachedPool>> lanes;
    // Finds each job's device (a stat may hang on a dead drive: never on the UI thread).
    std::unique_ptr<DetachedPool> router = std::make_unique<DetachedPool>(4, WorkClass::UserInitiated);
    // Undo and redo, strictly one after another.
    std::unique_ptr<DetachedPool> history =
        std::make_unique<DetachedPool>(1, WorkClass::UserInitiated, WhenStuck::Wait);
    std::vector<OpRecord> undo;
    std::vector<OpRecord> redo;

    // Runs `call` on the queue's thread, unless the queue is gone by then (its mailbox
    // with it).
    template <typename Call>
    void post(Call call)
    {
        notices.post([q = queue, call = std::move(call)] { call(q); });
    }

    // Queues `task` on the lane of `device`; dropped when the queue is gone (its lanes
    // with it), which is why the lane is never used outside the lock.
    void startOnLane(dev_t device, std::function<void()> task)
    {
        std::lock_guard guard(lock);
        if (!open)
            return;
        std::unique_ptr<DetachedPool>& pool = lanes[device];
        if (!pool)
            pool = std::make_unique<DetachedPool>(1, WorkClass::UserInitiated, WhenStuck::Wait);
        pool->start(std::move(task));
    }
};

namespace {

// Hands a job's questions to the queue's thread and waits for the answer.
class QueueObserver : public OpObserver {
public:
    QueueObserver(std::shared_ptr<OpQueue::Shared> shared, OpJobId job, JobState& state)
        : m_shared(std::move(shared))
        , m_job(job)
        , m_state(state)
    {
    }

    void progress(const OpProgress& progress) override
    {
        m_shared->post([job = m_job, progress](OpQueue* q) { emit q->progressChanged(job, progress); });
    }

    OpConflictAnswer askConflict(const OpConflict& conflict) override
    {
        std::optional<OpConflictAnswer> answer = ask(m_state.conflict, conflict.questionId,
            [job = m_job, conflict](OpQueue* q) { emit q->conflictAsked(job, conflict); });
        return answer ? *answer : OpConflictAnswer{ConflictChoice::Cancel, ConflictScope::ThisItem};
    }

    ErrorChoice askError(const OpError& error) override
    {
        std::optional<ErrorChoice> answer = ask(m_state.error, error.questionId,
            [job = m_job, error](OpQueue* q) { emit q->errorAsked(job, error); });
        return answer ? *answer : ErrorChoice::Cancel;
    }

private:
    // Posts the question and waits for its answer in `slot`; nothing once cancelled.
    template <typename Answer, typename Notice>
    std::optional<Answer> ask(std::optional<Answer>& slot, uint64_t questionId, Notice notice)
    {
        std::unique_lock guard(m_state.lock);
        m_state.question = questionId;
        slot.reset();
        guard.unlock();
        m_shared->post(std::move(notice));
        guard.lock();
        m_state.answered.wait(guard, [&] { return slot || m_state.control.cancelled(); });
        m_state.question = 0;
        return slot;
    }

    std::shared_ptr<OpQueue::Shared> m_shared;
    const OpJobId m_job;
    JobState& m_state;
};

// Undo and redo ask nothing of the user: a failed step stops them.
class SilentObserver : public OpObserver {
public:
    OpConflictAnswer askConflict(const OpConflict&) override { return {ConflictChoice::Cancel, ConflictScope::AllItems}; }
    ErrorChoice askError(const OpError&) override { return ErrorChoice::Cancel; }
};

} // namespace

OpQueue::OpQueue(QObject* parent)
    : QObject(parent)
    , m_shared(std::make_shared<Shared>(this, m_mailbox.poster()))
{
    qRegisterMetaType<OpJobId>("OpJobId");
    qRegisterMetaType<OpProgress>();
    qRegisterMetaType<OpConflict>();
    qRegisterMetaType<OpError>();
    qRegisterMetaType<OpResult>();
    qRegisterMetaType<OpKind>();
    qRegisterMetaType<UndoOutcome>();
}

OpQueue::~OpQueue()
{
    std::map<dev_t, std::unique_ptr<DetachedPool>> lanes;
    std::unique_ptr<DetachedPool> router;
    std::unique_ptr<DetachedPool> history;
    std::map<OpJobId, std::shared_ptr<JobState>> jobs;
    {
        std::lock_guard guard(m_shared->lock);
        m_shared->open = false;
        lanes.swap(m_shared->lanes);
        router.swap(m_shared->router);
        history.swap(m_shared->history);
        jobs.swap(m_shared->jobs);
    }
    for (auto& [id, state] : jobs)
        state->cancel();
    // The pools drop what has not started; a running job stops at its next chunk.
}

OpJobId OpQueue::submit(const OpRequest& request)
{
    auto state = std::make_shared<JobState>();
    OpJobId id;
    {
        std::lock_guard guard(m_shared->lock);
        id = m_shared->next++;
        m_shared->jobs[id] = state;
        if (!m_shared->router)
            return id;
        m_shared->router->start([shared = m_shared, id, state, request] {
            shared->startOnLane(jobDevice(request), [shared, id, state, request] {
                shared->post([id](OpQueue* q) { emit q->jobStarted(id); });
                OpRecord record;
                OpResult result;
                if (state->control.cancelled()) {
                    result.status = OpStatus::Cancelled;
                } else {
                    QueueObserver observer(shared, id, *state);
                    result = opRun(request, state->control, observer, &record);
                }
                {
                    std::lock_guard guard(shared->lock);
                    shared->jobs.erase(id);
                    if (!record.steps.empty()) {
                        shared->undo.push_back(std::move(record));
                        if (shared->undo.size() > kUndoDepth)
                            shared->undo.erase(shared->undo.begin());
                        shared->redo.clear();
                    }
                }
                shared->post([id, result](OpQueue* q) {
                    emit q->jobFinished(id, result);
                    emit q->undoChanged();
                });
            });
        });
    }
    emit jobQueued(id, request.kind);
    return id;
}

namespace {

std::shared_ptr<JobState> jobState(OpQueue::Shared& shared, OpJobId job)
{
    std::lock_guard guard(shared.lock);
    auto it = shared.jobs.find(job);
    return it == shared.jobs.end() ? nullptr : it->second;
}

} // namespace

void OpQueue::pause(OpJobId job)
{
    if (auto state = jobState(*m_shared, job))
        state->control.pause();
}

void OpQueue::resume(OpJobId job)
{
    if (auto state = jobState(*m_shared, job))
        state->control.resume();
}

void OpQueue::cancel(OpJobId job)
{
    if (auto state = jobState(*m_shared, job))
        state->cancel();
}

namespace {

// Hands a job the answer to its question `questionId`; an answer to a question no longer
// asked is dropped.
template <typename Store>
void answerQuestion(OpQueue::Shared& shared, OpJobId job, uint64_t questionId, Store store)
{
    auto state = jobState(shared, job);
    if (!state)
        return;
    std::lock_guard guard(state->lock);
    if (state->question != questionId)
        return;
    store(*state);
    state->answered.notify_all();
}

} // namespace

void OpQueue::answerConflict(OpJobId job, uint64_t questionId, OpConflictAnswer answer)
{
    answerQuestion(*m_shared, job, questionId, [answer](JobState& state) { state.conflict = answer; });
}

void OpQueue::answerError(OpJobId job, uint64_t questionId, ErrorChoice choice)
{
    answerQuestion(*m_shared, job, questionId, [choice](JobState& state) { state.error = choice; });
}

bool OpQueue::canUndo() const
{
    std::lock_guard guard(m_shared->lock);
    return !m_shared->undo.empty();
}

bool OpQueue::canRedo() const
{
    std::lock_guard guard(m_shared->lock);
    return !m_shared->redo.empty();
}

QString OpQueue::undoText() const
{
    std::lock_guard guard(m_shared->lock);
    return m_shared->undo.empty() ? QString() : QString::fromStdString(opUndoText(m_shared->undo.back().request.kind));
}

QString OpQueue::redoText() const
{
    std::lock_guard guard(m_shared->lock);
    return m_shared->redo.empty() ? QString() : QString::fromStdString(opRedoText(m_shared->redo.back().request.kind));
}

namespace {

enum class HistoryWay { Undo, Redo };

// Takes the top of one stack, reverses it in the background and puts what reverses that
// on the other stack. A record that can no longer apply is dropped.
void historyStep(const std::shared_ptr<OpQueue::Shared>& shared, HistoryWay way)
{
    std::lock_guard guard(shared->lock);
    std::vector<OpRecord>& from = way == HistoryWay::Undo ? shared->undo : shared->redo;
    if (!shared->history)
        return;
    if (from.empty()) {
        shared->history->start([shared] {
            shared->post([](OpQueue* q) { emit q->undoFinished(UndoOutcome::Nothing, QString()); });
        });
        return;
    }
    OpRecord record = std::move(from.back());
    from.pop_back();
    shared->history->start([shared, way, record = std::move(record)] {
        OpControl control;
        SilentObserver observer;
        OpRecord reversed;
        const UndoOutcome outcome = opUndo(record, control, observer, &reversed);
        if (outcome == UndoOutcome::Done) {
            std::lock_guard guard(shared->lock);
            (way == HistoryWay::Undo ? shared->redo : shared->undo).push_back(std::move(reversed));
        }
        const QString text = QString::fromStdString(way == HistoryWay::Undo ? opUndoText(record.request.kind)
                                                                            : opRedoText(record.request.kind));
        shared->post([outcome, text](OpQueue* q) {
            emit q->undoFinished(outcome, text);
            emit q->undoChanged();
        });
    });
}

} // namespace

void OpQueue::undo() { historyStep(m_shared, HistoryWay::Undo); }
void OpQueue::redo() { historyStep(m_shared, HistoryWay::Redo); }

int OpQueue::activeJobs() const
{
    std::lock_guard guard(m_shared->lock);
    return int(m_shared->jobs.size());
}
