// Undoing a finished job: every step checked first, then reversed in reverse order.

#include "fs/dir_fd.h"
#include "fs/sys_calls.h"
#include "ops/op_engine.h"
#include "ops/op_job.h"
#include "ops/trash_restore.h"

#include <cerrno>
#include <set>
#include <vector>

namespace {

bool folderEmpty(const std::string& path)
{
    int fd = sysOpen(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (fd < 0)
        return false;
    DirFd dir(fd);
    std::vector<char> buffer(4096);
    bool empty = true;
    return dirForEachEntry(dir.fd(), buffer, [&](const char*, unsigned char) { empty = false; }) == 0 && empty;
}

// Whether every step can still be reversed: each item is the one the step left, and the
// place it goes back to is free (or freed by a step reversed before it).
bool undoApplies(const OpRecord& record)
{
    std::set<std::string> freed;
    for (auto step = record.steps.rbegin(); step != record.steps.rend(); ++step) {
        OpStamp now;
        if (!opStampOf(step->to, now) || !(now == step->stamp))
            return false;
        if (step->kind == OpStepKind::NewFolder && !folderEmpty(step->to))
            return false;
        if (step->kind == OpStepKind::Moved || step->kind == OpStepKind::Trashed) {
            OpStamp there;
            if (opStampOf(step->from, there) && !freed.count(step->from))
                return false;
        }
        if (step->kind == OpStepKind::Trashed) {
            TrashEntry entry;
            if (trashEntryOf(step->to, entry) != 0 || entry.original != step->from)
                return false;
        }
        freed.insert(step->to);
    }
    return true;
}

} // namespace

UndoOutcome opUndo(const OpRecord& record, OpControl& control, OpObserver& observer, OpRecord* redo)
{
    if (record.steps.empty())
        return UndoOutcome::Nothing;
    if (!undoApplies(record))
        return UndoOutcome::CannotApply;
    if (redo) {
        redo->request = record.request;
        redo->steps.clear();
    }
    OpJob job(control, observer, nullptr);
    for (auto step = record.steps.rbegin(); step != record.steps.rend(); ++step) {
        OpStep inverse;
        int error = 0;
        switch (step->kind) {
        case OpStepKind::Moved:
            error = job.movePath(step->to, step->from);
            inverse = {OpStepKind::Moved, step->to, step->from, {}};
            break;
        case OpStepKind::Created:
        case OpStepKind::NewFolder:
        case OpStepKind::Restored: {
            std::string trashedTo;
            error = job.trash(step->to, trashedTo);
            inverse = {OpStepKind::Trashed, step->to, trashedTo, {}};
            break;
        }
        case OpStepKind::Trashed: {
            TrashEntry entry;
            error = trashEntryOf(step->to, entry);
            if (!error)
                error = job.restoreTo(step->to, entry.infoPath, step->from);
            inverse = {OpStepKind::Restored, step->to, step->from, {}};
            break;
        }
        }
        if (error)
            return UndoOutcome::Failed;
        if (redo) {
            opStampOf(inverse.to, inverse.stamp);
            redo->steps.push_back(std::move(inverse));
        }
    }
    return UndoOutcome::Done;
}

