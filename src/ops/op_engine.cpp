#include "ops/op_engine.h"

void OpControl::cancel()
{
    m_cancelled.store(true, std::memory_order_release);
    std::lock_guard lock(m_lock);
    m_wake.notify_all();
}

void OpControl::pause() { m_paused.store(true, std::memory_order_release); }

void OpControl::resume()
{
    m_paused.store(false, std::memory_order_release);
    std::lock_guard lock(m_lock);
    m_wake.notify_all();
}

bool OpControl::waitWhilePaused()
{
    std::unique_lock lock(m_lock);
    m_wake.wait(lock, [this] { return !paused() || cancelled(); });
    return !cancelled();
}

OpResult opRun(const OpRequest&, OpControl&, OpObserver&, OpRecord*) { return {OpStatus::Failed, ENOSYS, {}, 0}; }
UndoOutcome opUndo(const OpRecord&, OpControl&, OpObserver&, OpRecord*) { return UndoOutcome::Failed; }
std::string opUndoText(OpKind) { return "Undo"; }
std::string opRedoText(OpKind) { return "Redo"; }
std::string opKeepBothName(const std::string& name, int, bool) { return name; }
bool opStampOf(const std::string&, OpStamp&) { return false; }
