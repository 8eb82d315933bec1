#include "ops/op_queue.h"

struct OpQueue::Shared {};

OpQueue::OpQueue(QObject* parent) : QObject(parent), m_shared(std::make_shared<Shared>()) {}
OpQueue::~OpQueue() = default;
OpJobId OpQueue::submit(const OpRequest&) { return 0; }
void OpQueue::pause(OpJobId) {}
void OpQueue::resume(OpJobId) {}
void OpQueue::cancel(OpJobId) {}
void OpQueue::answerConflict(OpJobId, uint64_t, OpConflictAnswer) {}
void OpQueue::answerError(OpJobId, uint64_t, ErrorChoice) {}
bool OpQueue::canUndo() const { return false; }
bool OpQueue::canRedo() const { return false; }
QString OpQueue::undoText() const { return {}; }
QString OpQueue::redoText() const { return {}; }
void OpQueue::undo() {}
void OpQueue::redo() {}
int OpQueue::activeJobs() const { return 0; }
