#include "ops/op_job.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/new_folder.h"
#include "fs/trash_op_linux.h"
#include "ops/trash_restore.h"

#include <cerrno>
#include <ctime>
#include <set>
#include <utility>

namespace {

constexpr auto kTickEvery = std::chrono::milliseconds(100);

int lstatError(const std::string& path, struct stat& st)
{
    return sysCalls().lstat(path.c_str(), &st) == 0 ? 0 : errno;
}

bool sameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

// The names in folder `path`, or the errno that kept them unread.
int listNames(const std::string& path, std::vector<std::string>& names)
{
    int fd = sysOpen(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (fd < 0)
        return errno;
    DirFd dir(fd);
    std::vector<char> buffer(size_t(64) << 10);
    names.clear();
    return dirForEachEntry(dir.fd(), buffer, [&](const char* name, unsigned char) { names.emplace_back(name); });
}

OpResult failedWith(int error)
{
    OpResult result;
    result.status = OpStatus::Failed;
    result.error = error;
    return result;
}

// A name a rename or a new folder may take: one component, not "." or "..".
bool validName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos
        && name.find('\0') == std::string::npos;
}

} // namespace

OpJob::OpJob(OpControl& control, OpObserver& observer, OpRecord* record)
    : m_control(control)
    , m_observer(observer)
    , m_record(record)
    , m_lastTick(std::chrono::steady_clock::now())
    , m_rateMark(m_lastTick)
{
}

bool OpJob::checkpoint()
{
    if (m_control.paused()) {
        m_progress.paused = true;
        tick(true);
        m_control.waitWhilePaused();
        m_progress.paused = false;
        tick(true);
    }
    return !m_control.cancelled();
}

void OpJob::tick(bool force)
{
    const auto now = std::chrono::steady_clock::now();
    if (!force && now - m_lastTick < kTickEvery)
        return;
    // The rate follows the last few seconds (a moving average over the ticks), so a
    // slow start or a change of disk does not skew the time left for long.
    // Forced ticks may come microseconds apart: those do not make a rate.
    const double seconds = std::chrono::duration<double>(now - m_rateMark).count();
    if (seconds >= 0.05 && m_progress.bytesDone >= m_lastBytes) {
        const double rate = double(m_progress.bytesDone - m_lastBytes) / seconds;
        m_progress.bytesPerSecond = m_progress.bytesPerSecond > 0 ? 0.8 * m_progress.bytesPerSecond + 0.2 * rate : rate;
        m_rateMark = now;
        m_lastBytes = m_progress.bytesDone;
    }
    m_lastTick = now;
    m_progress.secondsLeft = m_progress.bytesPerSecond > 0 && !m_progress.counting
        ? int64_t(double(m_progress.bytesTotal - std::min(m_progress.bytesDone, m_progress.bytesTotal))
                  / m_progress.bytesPerSecond)
        : -1;
    m_observer.progress(m_progress);
}

void OpJob::count(const std::string& path)
{
    struct stat st;
    if (sysCalls().lstat(path.c_str(), &st) != 0)
        return; // reported when the item itself is reached
    ++m_progress.itemsTotal;
    if (S_ISREG(st.st_mode))
        m_progress.bytesTotal += uint64_t(st.st_size);
    if (!S_ISDIR(st.st_mode))
        return;
    std::vector<std::string> names;
    listNames(path, names);
    for (const std::string& name : names) {
        if (m_control.cancelled())
            return;
        count(opJoin(path, name));
    }
    tick();
}

void OpJob::note(OpStepKind kind, const std::string& from, const std::string& to)
{
    if (!m_record)
        return;
    OpStep step{kind, from, to, {}};
    opStampOf(to, step.stamp);
    m_record->steps.push_back(std::move(step));
}

std::string OpJob::freeName(const std::string& target, bool isDir) const
{
    const std::string dir = pathParent(target);
    const std::string name = pathLastComponent(target);
    for (int n = 2;; ++n) {
        std::string candidate = opJoin(dir, opKeepBothName(name, n, isDir));
        struct stat st;
        if (sysCalls().lstat(candidate.c_str(), &st) != 0 && errno == ENOENT)
            return candidate;
    }
}

ConflictChoice OpJob::resolve(const std::string& source, const struct stat& st, std::string& target,
                              const struct stat& existing)
{
    const bool folders = S_ISDIR(st.st_mode) && S_ISDIR(existing.st_mode);
    ConflictChoice choice;
    if (sameFile(st, existing)) {
        choice = ConflictChoice::KeepBoth; // a copy onto itself: a duplicate beside it
    } else {
        std::optional<ConflictChoice>& all = folders ? m_allFolders : m_allFiles;
        if (all) {
            choice = *all;
        } else {
            OpConflict question{++m_questions, source, target, S_ISDIR(st.st_mode), S_ISDIR(existing.st_mode),
                                int64_t(st.st_size), int64_t(existing.st_size), int64_t(st.st_mtime),
                                int64_t(existing.st_mtime)};
            const OpConflictAnswer answer = m_observer.askConflict(question);
            choice = answer.choice;
            if (answer.scope == ConflictScope::AllItems)
                all = choice;
        }
    }
    if (choice == ConflictChoice::Merge && !folders)
        choice = ConflictChoice::KeepBoth;
    if (choice == ConflictChoice::KeepBoth)
        target = freeName(target, S_ISDIR(st.st_mode));
    if (choice == ConflictChoice::Cancel)
        m_control.cancel();
    if (choice == ConflictChoice::Skip)
        ++m_result.skipped;
    return choice;
}

int OpJob::trash(const std::string& path, std::string& trashedTo)
{
    TrashMove moved = trashMoveLinux(path, std::time(nullptr));
    trashedTo = moved.trashedTo;
    return moved.error;
}

int OpJob::trashAside(const std::string& target)
{
    struct stat st;
    if (lstatError(target, st) == ENOENT)
        return 0; // already gone (a retry after it went)
    std::string trashedTo;
    if (int error = trash(target, trashedTo))
        return error;
    note(OpStepKind::Trashed, target, trashedTo);
    return 0;
}

OpJob::Flow OpJob::reach(const std::string& source, struct stat& st)
{
    const Flow flow = attempt(source, [&] { return lstatError(source, st); });
    if (flow == Flow::Ok)
        m_progress.currentItem = source;
    return flow;
}

OpJob::Flow OpJob::copyItem(const std::string& source, const std::string& targetDir, const std::string& name,
                            Mode mode, bool record)
{
    struct stat st;
    Flow flow = reach(source, st);
    if (flow != Flow::Ok)
        return flow;
    std::string target = opJoin(targetDir, name);
    bool merge = false;
    bool replace = false;
    struct stat existing;
    if (sysCalls().lstat(target.c_str(), &existing) == 0) {
        switch (resolve(source, st, target, existing)) {
        case ConflictChoice::Skip:
            return Flow::Skipped;
        case ConflictChoice::Cancel:
            return Flow::Stop;
        case ConflictChoice::Merge:
            merge = true;
            break;
        case ConflictChoice::Replace:
            replace = true;
            break;
        case ConflictChoice::KeepBoth:
            break;
        }
    }
    if (S_ISDIR(st.st_mode))
        return copyFolder(source, st, target, mode, merge, replace, record);

    const OpDurability durability = mode == Mode::MoveAcross ? OpDurability::Synced : OpDurability::Cached;
    const OpChunkDone chunkDone = [this](uint64_t bytes) {
        m_progress.bytesDone += bytes;
        tick();
        return checkpoint();
    };
    if (S_ISREG(st.st_mode)) {
        const std::function<int()> beforePlace = replace ? std::function<int()>([&] { return trashAside(target); })
                                                         : std::function<int()>();
        flow = attempt(source, [&] {
            const uint64_t before = m_progress.bytesDone;
            const int error = opCopyRegular(source, st, target, durability, chunkDone, beforePlace);
            if (error)
                m_progress.bytesDone = before; // a retry counts the bytes again
            return error;
        });
    } else if (S_ISLNK(st.st_mode)) {
        flow = attempt(source, [&] {
            int error = replace ? trashAside(target) : 0;
            return error ? error : opCopySymlink(source, st, target);
        });
    } else {
        flow = attempt(source, [] { return EOPNOTSUPP; }); // a device, a FIFO, a socket
    }
    if (flow != Flow::Ok)
        return flow;
    ++m_progress.itemsDone;
    if (mode == Mode::MoveAcross) {
        // The copy is complete and on the disk, and so is its name: only now does the
        // source go.
        flow = attempt(source, [&] {
            if (int error = opSyncFolder(pathParent(target)))
                return error;
            return sysCalls().unlink(source.c_str()) == 0 ? 0 : errno;
        });
        if (flow == Flow::Stop)
            return flow;
    }
    if (record)
        note(mode == Mode::MoveAcross ? OpStepKind::Moved : OpStepKind::Created, source, target);
    m_placed = target;
    return Flow::Ok;
}

OpJob::Flow OpJob::copyFolder(const std::string& source, const struct stat& st, const std::string& target,
                              Mode mode, bool merge, bool replace, bool record)
{
    Flow flow = Flow::Ok;
    if (replace)
        flow = attempt(target, [&] { return trashAside(target); });
    // Made private until its content is in; its own mode and times come last.
    if (flow == Flow::Ok && !merge)
        flow = attempt(target, [&] { return sysCalls().mkdir(target.c_str(), 0700) == 0 ? 0 : errno; });
    if (flow != Flow::Ok)
        return flow;
    std::vector<std::string> names;
    flow = attempt(source, [&] { return listNames(source, names); });
    for (size_t i = 0; flow == Flow::Ok && i < names.size(); ++i)
        if (copyItem(opJoin(source, names[i]), target, names[i], mode, record && merge) == Flow::Stop)
            flow = Flow::Stop;
    if (!merge)
        opFinishFolder(target, st);
    if (flow == Flow::Stop)
        return flow;
    ++m_progress.itemsDone;
    // The source folder of a move goes once it is empty; a skipped item keeps it.
    if (mode == Mode::MoveAcross && sysCalls().rmdir(source.c_str()) != 0 && errno != ENOTEMPTY && errno != EEXIST)
        return attempt(source, [&] { return sysCalls().rmdir(source.c_str()) == 0 ? 0 : errno; });
    if (record && !merge)
        note(mode == Mode::MoveAcross ? OpStepKind::Moved : OpStepKind::Created, source, target);
    m_placed = target;
    return flow;
}

OpJob::Flow OpJob::moveItem(const std::string& source, const std::string& targetDir, const std::string& name)
{
    if (!checkpoint())
        return Flow::Stop;
    std::string target = opJoin(targetDir, name);
    // The common case in one call: a rename that refuses to replace anything. Clashes,
    // failures and other devices take the long way below.
    int first = opRenameNoReplace(source, target);
    if (first == 0) {
        ++m_progress.itemsDone;
        note(OpStepKind::Moved, source, target);
        m_placed = target;
        tick();
        return Flow::Ok;
    }
    if (first == EEXIST)
        first = 0; // asked about below, and tried again once answered
    struct stat st;
    Flow flow = reach(source, st);
    if (flow != Flow::Ok)
        return flow;
    struct stat existing;
    if (sysCalls().lstat(target.c_str(), &existing) == 0) {
        struct stat here;
        struct stat there;
        if (sameFile(st, existing) && sysCalls().stat(pathParent(source).c_str(), &here) == 0
            && sysCalls().stat(targetDir.c_str(), &there) == 0 && sameFile(here, there)) {
            ++m_progress.itemsDone; // already where it should go
            m_placed = target;
            return Flow::Ok;
        }
        switch (resolve(source, st, target, existing)) {
        case ConflictChoice::Skip:
            return Flow::Skipped;
        case ConflictChoice::Cancel:
            return Flow::Stop;
        case ConflictChoice::Merge: {
            std::vector<std::string> names;
            flow = attempt(source, [&] { return listNames(source, names); });
            for (size_t i = 0; flow != Flow::Stop && i < names.size(); ++i)
                flow = moveItem(opJoin(source, names[i]), target, names[i]);
            if (flow != Flow::Stop)
                sysCalls().rmdir(source.c_str()); // emptied, unless an item was skipped
            m_placed = target;
            return flow;
        }
        case ConflictChoice::Replace:
            flow = attempt(target, [&] { return trashAside(target); });
            if (flow != Flow::Ok)
                return flow;
            break;
        case ConflictChoice::KeepBoth:
            break;
        }
    }
    bool across = false;
    flow = attempt(source, [&] {
        const int error = first ? std::exchange(first, 0) : opRenameNoReplace(source, target);
        across = error == EXDEV;
        return across ? 0 : error;
    });
    if (flow != Flow::Ok)
        return flow;
    if (across) {
        count(source);
        --m_progress.itemsTotal; // the item itself was counted already
        return copyItem(source, targetDir, pathLastComponent(target), Mode::MoveAcross, true);
    }
    ++m_progress.itemsDone;
    note(OpStepKind::Moved, source, target);
    m_placed = target;
    return Flow::Ok;
}

int OpJob::restoreTo(const std::string& trashed, const std::string& infoPath, const std::string& to)
{
    if (int error = movePath(trashed, to))
        return error;
    sysCalls().unlink(infoPath.c_str()); // the record of an item no longer in the Trash
    return 0;
}

OpJob::Flow OpJob::restoreItem(const std::string& trashed)
{
    TrashEntry entry;
    Flow flow = attempt(trashed, [&] { return trashEntryOf(trashed, entry); });
    if (flow != Flow::Ok)
        return flow;
    struct stat st;
    flow = attempt(trashed, [&] { return lstatError(trashed, st); });
    if (flow != Flow::Ok)
        return flow;
    m_progress.currentItem = trashed;
    std::string target = entry.original;
    struct stat existing;
    if (sysCalls().lstat(target.c_str(), &existing) == 0) {
        ConflictChoice choice = resolve(trashed, st, target, existing);
        if (choice == ConflictChoice::Merge) // restoring into a folder would split the item
            target = freeName(target, true);
        if (choice == ConflictChoice::Skip)
            return Flow::Skipped;
        if (choice == ConflictChoice::Cancel)
            return Flow::Stop;
        if (choice == ConflictChoice::Replace && (flow = attempt(target, [&] { return trashAside(target); })) != Flow::Ok)
            return flow;
    }
    flow = attempt(trashed, [&] { return restoreTo(trashed, entry.infoPath, target); });
    if (flow != Flow::Ok)
        return flow;
    ++m_progress.itemsDone;
    m_result.created.push_back(target);
    note(OpStepKind::Restored, trashed, target);
    return Flow::Ok;
}

int OpJob::movePath(const std::string& from, const std::string& to)
{
    fileMakeDirs(pathParent(to));
    const int error = opRenameNoReplace(from, to);
    if (error != EXDEV)
        return error;
    count(from);
    OpRecord* keep = m_record;
    m_record = nullptr; // the caller records the move as one step
    const Flow flow = copyItem(from, pathParent(to), pathLastComponent(to), Mode::MoveAcross, false);
    m_record = keep;
    if (flow == Flow::Ok)
        return 0;
    return m_result.error ? m_result.error : ECANCELED;
}

OpResult OpJob::runCopyOrMove(const OpRequest& request)
{
    struct stat dir;
    if (sysCalls().stat(request.targetDir.c_str(), &dir) != 0)
        return failedWith(errno);
    if (!S_ISDIR(dir.st_mode))
        return failedWith(ENOTDIR);
    // Never into itself: no source folder may be the destination or one of its ancestors.
    // (A rename into itself the kernel refuses on its own.)
    const bool copy = request.kind == OpKind::Copy;
    std::set<std::pair<dev_t, ino_t>> folders;
    for (const std::string& source : copy ? request.sources : std::vector<std::string>()) {
        struct stat st;
        if (sysCalls().lstat(source.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
            folders.emplace(st.st_dev, st.st_ino);
    }
    for (std::string at = request.targetDir; !folders.empty() && !at.empty(); at = pathParent(at)) {
        struct stat up;
        if (sysCalls().stat(at.c_str(), &up) == 0 && folders.count({up.st_dev, up.st_ino}))
            return failedWith(EINVAL);
        if (at == "/")
            break;
    }
    if (copy) {
        m_progress.counting = true;
        for (const std::string& source : request.sources)
            count(source);
        m_progress.counting = false;
    } else {
        m_progress.itemsTotal = request.sources.size();
    }
    tick(true);
    for (const std::string& source : request.sources) {
        const std::string name = pathLastComponent(source);
        const Flow flow = copy ? copyItem(source, request.targetDir, name, Mode::Copy, true)
                               : moveItem(source, request.targetDir, name);
        if (flow == Flow::Ok)
            m_result.created.push_back(m_placed);
        if (flow == Flow::Stop)
            break;
    }
    return m_result;
}

OpResult OpJob::runRename(const OpRequest& request)
{
    if (request.sources.size() != 1 || !validName(request.name))
        return failedWith(EINVAL);
    const std::string& source = request.sources[0];
    const std::string target = opJoin(pathParent(source), request.name);
    if (target == source)
        return m_result;
    struct stat st;
    struct stat existing;
    int error = lstatError(source, st);
    if (error == 0 && sysCalls().lstat(target.c_str(), &existing) == 0 && sameFile(st, existing)) {
        // Another spelling of the same entry (a case change on a file system that ignores case).
        error = sysCalls().rename(source.c_str(), target.c_str()) == 0 ? 0 : errno;
    } else if (error == 0) {
        error = opRenameNoReplace(source, target);
    }
    if (error)
        return failedWith(error);
    note(OpStepKind::Moved, source, target);
    m_result.created.push_back(target);
    return m_result;
}

OpResult OpJob::runNewFolder(const OpRequest& request)
{
    if (request.name.empty()) {
        errno = 0;
        const std::optional<std::string> made = newFolderCreate(request.targetDir);
        if (!made)
            return failedWith(errno ? errno : EEXIST);
        note(OpStepKind::NewFolder, {}, *made);
        m_result.created.push_back(*made);
        return m_result;
    }
    if (!validName(request.name))
        return failedWith(EINVAL);
    std::string target = opJoin(request.targetDir, request.name);
    for (int n = 2;; ++n) {
        if (sysCalls().mkdir(target.c_str(), 0777) == 0)
            break;
        if (errno != EEXIST || n > 10000)
            return failedWith(errno);
        target = opJoin(request.targetDir, opKeepBothName(request.name, n, true));
    }
    note(OpStepKind::NewFolder, {}, target);
    m_result.created.push_back(target);
    return m_result;
}

OpResult OpJob::run(const OpRequest& request)
{
    m_onError = request.onError;
    if (m_record)
        m_record->request = request;
    switch (request.kind) {
    case OpKind::Copy:
    case OpKind::Move:
        m_result = runCopyOrMove(request);
        if (m_result.status == OpStatus::Failed)
            return m_result;
        break;
    case OpKind::Rename:
        return runRename(request);
    case OpKind::NewFolder:
        return runNewFolder(request);
    case OpKind::Trash:
        m_progress.itemsTotal = request.sources.size();
        for (const std::string& source : request.sources) {
            std::string trashedTo;
            m_progress.currentItem = source;
            const Flow flow = attempt(source, [&] { return trash(source, trashedTo); });
            if (flow == Flow::Stop)
                break;
            if (flow == Flow::Ok) {
                ++m_progress.itemsDone;
                note(OpStepKind::Trashed, source, trashedTo);
            }
            tick();
        }
        break;
    case OpKind::Restore:
        m_progress.itemsTotal = request.sources.size();
        for (const std::string& source : request.sources)
            if (restoreItem(source) == Flow::Stop)
                break;
        break;
    case OpKind::Delete:
        runDelete(request);
        break;
    }
    tick(true);
    if (m_control.cancelled())
        m_result.status = OpStatus::Cancelled;
    return m_result;
}

OpResult opRun(const OpRequest& request, OpControl& control, OpObserver& observer, OpRecord* record)
{
    OpJob job(control, observer, record);
    return job.run(request);
}
