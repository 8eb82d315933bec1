#include "ops/op_engine.h"

#include "fs/dir_fd.h"
#include "fs/sys_calls.h"
#include "ops/op_copy.h"
#include "ops/op_job.h"
#include "ops/trash_restore.h"

#include <cerrno>
#include <climits>
#include <set>
#include <vector>

void OpControl::cancel()
{
    std::lock_guard lock(m_lock);
    m_cancelled.store(true, std::memory_order_release);
    m_wake.notify_all();
}

void OpControl::pause() { m_paused.store(true, std::memory_order_release); }

void OpControl::resume()
{
    std::lock_guard lock(m_lock);
    m_paused.store(false, std::memory_order_release);
    m_wake.notify_all();
}

bool OpControl::waitWhilePaused()
{
    std::unique_lock lock(m_lock);
    m_wake.wait(lock, [this] { return !paused() || cancelled(); });
    return !cancelled();
}

OpResult opRun(const OpRequest& request, OpControl& control, OpObserver& observer, OpRecord* record)
{
    OpJob job(control, observer, record);
    return job.run(request);
}

bool opStampOf(const std::string& path, OpStamp& stamp)
{
    struct stat st;
    if (sysCalls().lstat(path.c_str(), &st) != 0)
        return false;
    stamp.dev = st.st_dev;
    stamp.ino = st.st_ino;
    stamp.isDir = S_ISDIR(st.st_mode);
    // A folder's size and time change with what is put in it, which an undo of the
    // folder itself does not care about.
    stamp.size = stamp.isDir ? 0 : int64_t(st.st_size);
    stamp.mtimeNs = stamp.isDir ? 0 : int64_t(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    return true;
}

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

namespace {

const char* kindTitle(OpKind kind)
{
    switch (kind) {
    case OpKind::Copy: return "Copy";
    case OpKind::Move: return "Move";
    case OpKind::Rename: return "Rename";
    case OpKind::NewFolder: return "New Folder";
    case OpKind::Trash: return "Move to Trash";
    case OpKind::Restore: return "Put Back";
    }
    return "";
}

} // namespace

std::string opUndoText(OpKind kind) { return std::string("Undo ") + kindTitle(kind); }
std::string opRedoText(OpKind kind) { return std::string("Redo ") + kindTitle(kind); }

std::string opKeepBothName(const std::string& name, int n, bool isDir)
{
    size_t dot = isDir ? std::string::npos : name.rfind('.');
    if (dot == 0)
        dot = std::string::npos; // a hidden file's leading dot starts no extension
    // "archive.tar.gz" numbers the archive, not the "tar".
    if (dot != std::string::npos && dot >= 5 && name.compare(dot - 4, 4, ".tar") == 0)
        dot -= 4;
    std::string stem = name.substr(0, dot);
    const std::string ext = dot == std::string::npos ? std::string() : name.substr(dot);
    const std::string number = " (" + std::to_string(n) + ")";
    // Shortened to fit one component, never inside a UTF-8 sequence.
    if (stem.size() + number.size() + ext.size() > NAME_MAX) {
        stem.resize(NAME_MAX > number.size() + ext.size() ? NAME_MAX - number.size() - ext.size() : 0);
        // Drop a sequence the cut left incomplete: find where the last one starts.
        size_t lead = stem.size();
        while (lead > 0 && stem.size() - lead < 4 && (static_cast<unsigned char>(stem[lead - 1]) & 0xC0) == 0x80)
            --lead;
        if (lead > 0) {
            const unsigned char first = static_cast<unsigned char>(stem[lead - 1]);
            const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
            if (stem.size() - (lead - 1) < length)
                stem.resize(lead - 1);
        }
    }
    return stem + number + ext;
}
