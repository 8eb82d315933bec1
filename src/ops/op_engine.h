#pragma once
// The synchronous heart of the file operations: runs one job on the calling thread,
// reporting through an observer and asking it the questions (name clashes, failed
// items). OpQueue runs it on the per-device lanes; tests call it directly.

#include "ops/op_types.h"

#include <atomic>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

// Pause and cancel, set from any thread and checked by the running job between chunks.
class OpControl {
public:
    void cancel();
    void pause();
    void resume();
    bool cancelled() const { return m_cancelled.load(std::memory_order_acquire); }
    bool paused() const { return m_paused.load(std::memory_order_acquire); }
    // Blocks while paused; false once cancelled.
    bool waitWhilePaused();

private:
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_paused{false};
    std::mutex m_lock;
    std::condition_variable m_wake;
};

// What a job reports and asks. The ask* calls block the job until answered, so they may
// hand the question to another thread and wait there.
class OpObserver {
public:
    virtual ~OpObserver() = default;
    virtual void progress(const OpProgress& progress) { (void)progress; }
    virtual OpConflictAnswer askConflict(const OpConflict& conflict) = 0;
    virtual ErrorChoice askError(const OpError& error) = 0;
};

// Which file a path named when a step was made, to tell later whether it changed since.
struct OpStamp {
    dev_t dev = 0;
    ino_t ino = 0;
    int64_t size = 0;
    int64_t mtimeNs = 0;
    bool isDir = false;
    bool operator==(const OpStamp&) const = default;
};

// What one step did, which says how to reverse it.
enum class OpStepKind {
    Moved,     // `from` was renamed or moved to `to`: moved back
    Created,   // `to` is a copy (`from` its source): goes to the Trash
    NewFolder, // `to` is a new folder: goes to the Trash while still empty
    Trashed,   // `from` went to the Trash as `to`: comes back through its .trashinfo
    Restored,  // `from` in the Trash came back as `to`: goes to the Trash again
};

// One step an undo reverses.
struct OpStep {
    OpStepKind kind = OpStepKind::Moved;
    std::string from;
    std::string to;
    OpStamp stamp; // of `to` right after the step
};

// Enough to reverse a finished job, and to do it again.
struct OpRecord {
    OpRequest request;
    std::vector<OpStep> steps;
};

// Runs `request`. `record` (optional) receives the steps made, for undo.
OpResult opRun(const OpRequest& request, OpControl& control, OpObserver& observer, OpRecord* record = nullptr);

// Reverses `record`: renames and moves go back, copies and new (still empty) folders go
// to the Trash, trashed items come back through their .trashinfo. When any item changed
// since (another file, another size or time, or missing) nothing is changed and the
// answer is CannotApply. `redo` receives the record that undoes this undo.
UndoOutcome opUndo(const OpRecord& record, OpControl& control, OpObserver& observer, OpRecord* redo);

// The menu item texts: "Undo Rename", "Redo Copy", ...
std::string opUndoText(OpKind kind);
std::string opRedoText(OpKind kind);

// The n-th free name tried for `name` when keeping both (2: "name (2).ext", 3:
// "name (3).ext"; a folder or a name without extension gets the number at its end). The
// extension is what follows the last dot that is not the first byte; ".tar.gz" style
// double extensions keep both parts.
std::string opKeepBothName(const std::string& name, int n, bool isDir);

// The stamp of what `path` names (not following a link), or nothing when it is missing.
bool opStampOf(const std::string& path, OpStamp& stamp);
