// Every job kind on real temporary trees, with faults fed through the system-call seam:
// a failed or cancelled copy never leaves a partial file under a real name, and a move
// never removes a source before its copy is complete.

#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/trash_op_linux.h"
#include "ops/op_engine.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <functional>
#include <set>
#include <sys/stat.h>

namespace {

// Answers questions from a script and remembers them.
class ScriptedObserver : public OpObserver {
public:
    OpConflictAnswer conflictAnswer{ConflictChoice::Skip, ConflictScope::ThisItem};
    ErrorChoice errorAnswer = ErrorChoice::Skip;
    std::function<void(const OpConflict&)> onConflict;
    std::vector<OpConflict> conflicts;
    std::vector<OpError> errors;
    OpProgress last;

    void progress(const OpProgress& progress) override { last = progress; }
    OpConflictAnswer askConflict(const OpConflict& conflict) override
    {
        conflicts.push_back(conflict);
        if (onConflict)
            onConflict(conflict);
        return conflictAnswer;
    }
    ErrorChoice askError(const OpError& error) override
    {
        errors.push_back(error);
        return errors.size() > 5 ? ErrorChoice::Cancel : errorAnswer;
    }
};

OpResult run(const OpRequest& request, ScriptedObserver& observer, OpRecord* record = nullptr)
{
    OpControl control;
    return opRun(request, control, observer, record);
}

std::set<std::string> namesIn(const std::string& dir)
{
    std::set<std::string> names;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (const dirent* e = ::readdir(d))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names.insert(e->d_name);
        ::closedir(d);
    }
    return names;
}

bool exists(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

std::string content(const std::string& path) { return fileReadAll(path).value_or("<missing>"); }

// Whether two files hold the same bytes (without printing megabytes on a failure).
bool sameContent(const std::string& a, const std::string& b)
{
    std::optional<std::string> x = fileReadAll(a);
    return x && x == fileReadAll(b);
}

std::string describe(const std::vector<OpError>& errors)
{
    std::string text;
    for (const OpError& e : errors)
        text += e.path + ": " + std::strerror(e.error) + "; ";
    return text;
}

// What the Trash's files/ folder holds now.
std::set<std::string> trashed() { return namesIn(trashHomeDir() + "/files"); }

// ---- Faults -------------------------------------------------------------------------

std::atomic<int> g_rangeErrno{0};        // copy_file_range fails with this (0: works)
std::atomic<int> g_writeErrno{0};        // write fails with this once past g_writeAfter bytes
std::atomic<long> g_writeAfter{0};
std::atomic<int> g_renameErrno{0};       // renameat2 fails with this (EXDEV forces the fallback)
std::atomic<int> g_intrLeft{0};          // interrupted calls still to feed
std::atomic<int> g_openErrno{0};         // opening a file for reading fails with this
std::string g_srcRoot;                   // a file removed under here must exist complete
std::string g_dstRoot;                   // at the same place under here
std::atomic<bool> g_unlinkEarly{false};
std::set<std::string> g_syncedFolders;   // folders flushed so far (through their descriptors)
std::atomic<OpControl*> g_cancelOnWrite{nullptr}; // cancelled once the first chunk is written

void resetFaults()
{
    g_rangeErrno = 0;
    g_writeErrno = 0;
    g_writeAfter = 0;
    g_renameErrno = 0;
    g_intrLeft = 0;
    g_openErrno = 0;
    g_srcRoot.clear();
    g_dstRoot.clear();
    g_unlinkEarly = false;
    g_syncedFolders.clear();
    g_cancelOnWrite = nullptr;
}

ssize_t faultyRange(int in, off64_t* inOff, int out, off64_t* outOff, size_t length, unsigned flags)
{
    if (g_intrLeft > 0 && g_intrLeft-- > 0) {
        errno = EINTR;
        return -1;
    }
    if (g_rangeErrno) {
        errno = g_rangeErrno;
        return -1;
    }
    return sysCallsReal().copy_file_range(in, inOff, out, outOff, length, flags);
}

ssize_t faultyWrite(int fd, const void* buf, size_t count)
{
    if (g_intrLeft > 0 && g_intrLeft-- > 0) {
        errno = EINTR;
        return -1;
    }
    if (OpControl* control = g_cancelOnWrite.exchange(nullptr))
        control->cancel();
    if (g_writeErrno) {
        long left = g_writeAfter;
        if (left <= 0) {
            errno = g_writeErrno;
            return -1;
        }
        count = std::min<size_t>(count, size_t(left));
        g_writeAfter -= long(count);
    }
    return sysCallsReal().write(fd, buf, count);
}

int faultyRenameat2(int fromDir, const char* from, int toDir, const char* to, unsigned flags)
{
    // Our own temporaries are renamed within their folder, which never crosses devices.
    if (g_renameErrno && !fileTempWriter(pathLastComponent(from))) {
        errno = g_renameErrno;
        return -1;
    }
    return sysCallsReal().renameat2(fromDir, from, toDir, to, flags);
}

int faultyOpen(const char* path, int flags, mode_t mode)
{
    if (g_openErrno && (flags & O_ACCMODE) == O_RDONLY && !(flags & O_DIRECTORY)) {
        errno = g_openErrno;
        return -1;
    }
    return sysCallsReal().open(path, flags, mode);
}

int checkedUnlink(const char* path)
{
    const std::string source = path;
    if (!g_srcRoot.empty() && source.rfind(g_srcRoot, 0) == 0) {
        const std::string target = g_dstRoot + source.substr(g_srcRoot.size());
        struct stat from;
        struct stat to;
        if (::lstat(path, &from) == 0
            && (::lstat(target.c_str(), &to) != 0 || to.st_size != from.st_size || fileTempWriter(target)
                || !g_syncedFolders.count(pathParent(target))))
            g_unlinkEarly = true;
    }
    return sysCallsReal().unlink(path);
}

int recordingFsync(int fd)
{
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t n = ::readlink(link, path, sizeof path - 1);
    struct stat st;
    if (n > 0 && ::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode))
        g_syncedFolders.insert(std::string(path, size_t(n)));
    return sysCallsReal().fsync(fd);
}

SysCalls faultyCalls()
{
    SysCalls calls = sysCallsReal();
    calls.copy_file_range = faultyRange;
    calls.write = faultyWrite;
    calls.renameat2 = faultyRenameat2;
    calls.open = faultyOpen;
    calls.unlink = checkedUnlink;
    calls.fsync = recordingFsync;
    return calls;
}

bool anyTemp(const std::string& dir)
{
    for (const std::string& name : namesIn(dir))
        if (fileTempWriter(name))
            return true;
    return false;
}

} // namespace

TEST(OpCopy, CopiesATreeKeepingModesTimesLinksAndOddNames)
{
    TempTree tree;
    const std::string odd = "caf\xe9-\xff.txt"; // not UTF-8
    tree.file("src/a.txt", "alpha");
    tree.file("src/sub/" + odd, "odd bytes");
    tree.sized("src/sub/big.bin", (3 << 20) + 17);
    tree.symlink("src/link", "a.txt");
    tree.chmod("src/a.txt", 0640);
    tree.setMtime("src/a.txt", 1000000000, 5000);
    tree.chmod("src/sub", 0750);
    tree.setMtime("src/sub", 1200000000);
    tree.dir("dst");

    ScriptedObserver observer;
    OpRecord record;
    OpResult result = run({OpKind::Copy, {tree.path("src")}, tree.path("dst"), {}}, observer, &record);
    EXPECT_EQ(result.status, OpStatus::Done);
    EXPECT_TRUE(observer.errors.empty());
    EXPECT_EQ(result.created, std::vector<std::string>{tree.path("dst/src")});
    EXPECT_EQ(content(tree.path("dst/src/a.txt")), "alpha");
    EXPECT_EQ(content(tree.path("dst/src/sub/" + odd)), "odd bytes");
    EXPECT_TRUE(sameContent(tree.path("dst/src/sub/big.bin"), tree.path("src/sub/big.bin")));
    struct stat st;
    ASSERT_EQ(::lstat(tree.path("dst/src/a.txt").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    EXPECT_EQ(st.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(st.st_mtim.tv_nsec, 5000);
    ASSERT_EQ(::lstat(tree.path("dst/src/sub").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0750u);
    EXPECT_EQ(st.st_mtim.tv_sec, 1200000000); // set after its content went in
    ASSERT_EQ(::lstat(tree.path("dst/src/link").c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    EXPECT_EQ(observer.last.itemsDone, observer.last.itemsTotal);
    EXPECT_EQ(observer.last.bytesDone, observer.last.bytesTotal);
    EXPECT_EQ(observer.last.bytesTotal, uint64_t(5 + 9 + (3 << 20) + 17));
    EXPECT_FALSE(anyTemp(tree.path("dst/src/sub")));
    EXPECT_EQ(content(tree.path("src/a.txt")), "alpha"); // the source stays
}

TEST(OpCopy, FallbackAndInterruptionsStillCopyEverything)
{
    for (int error : {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, 0}) {
        TempTree tree;
        tree.sized("src.bin", (2 << 20) + 3);
        tree.file("src.bin.txt", "small");
        tree.dir("dst");
        resetFaults();
        g_rangeErrno = error;
        g_intrLeft = error == 0 ? 3 : 0; // EINTR on copy_file_range and write is retried
        const SysCalls calls = faultyCalls();
        SysCallsOverride fault(calls);
        ScriptedObserver observer;
        OpResult result = run({OpKind::Copy, {tree.path("src.bin"), tree.path("src.bin.txt")}, tree.path("dst"), {}},
                              observer);
        EXPECT_EQ(result.status, OpStatus::Done) << error;
        EXPECT_TRUE(observer.errors.empty()) << error;
        EXPECT_TRUE(sameContent(tree.path("dst/src.bin"), tree.path("src.bin"))) << error;
        EXPECT_EQ(content(tree.path("dst/src.bin.txt")), "small") << error;
    }
}

TEST(OpCopy, FailuresLeaveNoPartialFileUnderARealName)
{
    struct Case {
        const char* what;
        int writeErrno;   // after some bytes
        int openErrno;    // the source cannot be read (gone, forbidden)
        bool cancelMid;
    };
    const Case cases[] = {
        {"disk full mid-file", ENOSPC, 0, false},
        {"I/O error mid-file", EIO, 0, false},
        {"source vanished", 0, ENOENT, false},
        {"permission denied", 0, EACCES, false},
        {"cancelled mid-file", 0, 0, true},
    };
    for (const Case& c : cases) {
        TempTree tree;
        tree.sized("big.bin", 4 << 20);
        tree.dir("dst");
        resetFaults();
        g_rangeErrno = EXDEV; // read and write, so the write fault bites
        g_writeErrno = c.writeErrno;
        g_writeAfter = 1 << 20;
        g_openErrno = c.openErrno;
        const SysCalls calls = faultyCalls();
        SysCallsOverride fault(calls);
        ScriptedObserver observer;
        OpControl control;
        if (c.cancelMid)
            g_cancelOnWrite = &control;
        OpResult result = opRun({OpKind::Copy, {tree.path("big.bin")}, tree.path("dst"), {}}, control, observer);
        EXPECT_FALSE(exists(tree.path("dst/big.bin"))) << c.what;
        EXPECT_TRUE(namesIn(tree.path("dst")).empty()) << c.what << ": the temporary stayed";
        if (c.cancelMid) {
            EXPECT_EQ(result.status, OpStatus::Cancelled) << c.what;
        } else {
            ASSERT_EQ(observer.errors.size(), 1u) << c.what;
            EXPECT_EQ(observer.errors[0].error, c.writeErrno ? c.writeErrno : c.openErrno) << c.what;
            EXPECT_EQ(observer.errors[0].path, tree.path("big.bin")) << c.what;
            EXPECT_EQ(result.skipped, 1u) << c.what;
        }
        EXPECT_TRUE(result.created.empty()) << c.what;
    }
}

TEST(OpCopy, RetryAfterAFailureCompletesTheCopy)
{
    TempTree tree;
    tree.sized("big.bin", 3 << 20);
    tree.dir("dst");
    resetFaults();
    g_rangeErrno = EXDEV;
    g_writeErrno = ENOSPC;
    g_writeAfter = 1 << 20;
    const SysCalls calls = faultyCalls();
    SysCallsOverride fault(calls);
    struct FreeingObserver : ScriptedObserver {
        ErrorChoice askError(const OpError& error) override
        {
            errors.push_back(error);
            g_writeErrno = 0; // space was made
            return ErrorChoice::Retry;
        }
    } observer;
    OpResult result = run({OpKind::Copy, {tree.path("big.bin")}, tree.path("dst"), {}}, observer);
    EXPECT_EQ(result.status, OpStatus::Done);
    EXPECT_EQ(observer.errors.size(), 1u);
    EXPECT_TRUE(sameContent(tree.path("dst/big.bin"), tree.path("big.bin")));
    EXPECT_EQ(observer.last.bytesDone, uint64_t(3 << 20)); // the failed attempt is not counted twice
    EXPECT_EQ(namesIn(tree.path("dst")), std::set<std::string>{"big.bin"});
}

TEST(OpCopy, IntoItselfIsRefused)
{
    TempTree tree;
    tree.file("a/b/c.txt", "x");
    ScriptedObserver observer;
    OpResult result = run({OpKind::Copy, {tree.path("a")}, tree.path("a/b"), {}}, observer);
    EXPECT_EQ(result.status, OpStatus::Failed);
    EXPECT_EQ(result.error, EINVAL);
    EXPECT_FALSE(exists(tree.path("a/b/a")));
}

TEST(OpMove, WithinAndAcrossDevices)
{
    for (bool across : {false, true}) {
        TempTree tree;
        tree.file("src/a.txt", "alpha");
        tree.sized("src/sub/big.bin", 2 << 20);
        tree.file("one.txt", "one");
        tree.dir("dst");
        const std::string big = content(tree.path("src/sub/big.bin"));
        resetFaults();
        g_renameErrno = across ? EXDEV : 0;
        g_srcRoot = tree.path("src/");
        g_dstRoot = tree.path("dst/src/");
        const SysCalls calls = faultyCalls();
        SysCallsOverride fault(calls);
        ScriptedObserver observer;
        OpRecord record;
        OpResult result = run({OpKind::Move, {tree.path("src"), tree.path("one.txt")}, tree.path("dst"), {}},
                              observer, &record);
        EXPECT_EQ(result.status, OpStatus::Done) << across;
        EXPECT_TRUE(observer.errors.empty()) << across << describe(observer.errors);
        EXPECT_EQ(content(tree.path("dst/src/a.txt")), "alpha") << across;
        EXPECT_EQ(content(tree.path("dst/src/sub/big.bin")).size(), big.size()) << across;
        EXPECT_EQ(content(tree.path("dst/one.txt")), "one") << across;
        EXPECT_FALSE(exists(tree.path("src"))) << across;
        EXPECT_FALSE(exists(tree.path("one.txt"))) << across;
        EXPECT_EQ(record.steps.size(), 2u) << across;
        EXPECT_EQ(result.created.size(), 2u) << across;
        EXPECT_FALSE(g_unlinkEarly) << across << ": a source went before its copy was complete";
    }
}

TEST(OpMove, AcrossDevicesRemovesNoSourceBeforeItsCopyIsComplete)
{
    TempTree tree;
    tree.sized("src/a.bin", 2 << 20);
    tree.sized("src/b.bin", 2 << 20);
    tree.dir("dst");
    resetFaults();
    g_renameErrno = EXDEV;
    g_rangeErrno = EXDEV;
    g_writeErrno = ENOSPC;
    g_writeAfter = (3 << 20); // the first file fits, the second does not
    g_srcRoot = tree.path("src/");
    g_dstRoot = tree.path("dst/src/");
    const SysCalls calls = faultyCalls();
    SysCallsOverride fault(calls);
    ScriptedObserver observer;
    observer.errorAnswer = ErrorChoice::Skip;
    OpResult result = run({OpKind::Move, {tree.path("src")}, tree.path("dst"), {}}, observer);
    ASSERT_EQ(observer.errors.size(), 1u);
    EXPECT_EQ(observer.errors[0].error, ENOSPC);
    // One of the two moved whole; the other is still only at its source, with no
    // partial copy; the source folder stays because it is not empty.
    const std::set<std::string> moved = namesIn(tree.path("dst/src"));
    const std::set<std::string> left = namesIn(tree.path("src"));
    EXPECT_EQ(moved.size(), 1u);
    EXPECT_EQ(left.size(), 1u);
    for (const std::string& name : moved)
        EXPECT_EQ(content(tree.path("dst/src/" + name)).size(), size_t(2 << 20));
    for (const std::string& name : left)
        EXPECT_EQ(content(tree.path("src/" + name)).size(), size_t(2 << 20));
    EXPECT_EQ(result.skipped, 1u);
    EXPECT_FALSE(g_unlinkEarly);
}

TEST(OpMove, IntoItsOwnFolderOrItselfChangesNothing)
{
    TempTree tree;
    tree.file("a/b/c.txt", "c");
    ScriptedObserver observer;
    // Into its own subfolder: the rename is refused and reported.
    OpResult inside = run({OpKind::Move, {tree.path("a")}, tree.path("a/b"), {}}, observer);
    ASSERT_EQ(observer.errors.size(), 1u);
    EXPECT_EQ(observer.errors[0].error, EINVAL);
    EXPECT_EQ(inside.skipped, 1u);
    EXPECT_EQ(content(tree.path("a/b/c.txt")), "c");
    // Into the folder it is already in: nothing to do, nothing asked.
    OpRecord record;
    OpResult same = run({OpKind::Move, {tree.path("a/b/c.txt")}, tree.path("a/b"), {}}, observer, &record);
    EXPECT_EQ(same.status, OpStatus::Done);
    EXPECT_TRUE(observer.conflicts.empty());
    EXPECT_EQ(observer.errors.size(), 1u);
    EXPECT_TRUE(record.steps.empty());
    EXPECT_EQ(namesIn(tree.path("a/b")), std::set<std::string>{"c.txt"});
}

TEST(OpConflicts, AnswersTable)
{
    struct Case {
        ConflictChoice choice;
        const char* expectOld;   // content at the clashing name afterwards
        const char* extraName;   // where the new one went when both stay
        bool oldTrashed;
    };
    const Case cases[] = {
        {ConflictChoice::Replace, "new", nullptr, true},
        {ConflictChoice::Skip, "old", nullptr, false},
        {ConflictChoice::KeepBoth, "old", "notes (2).txt", false},
        {ConflictChoice::Cancel, "old", nullptr, false},
    };
    for (const Case& c : cases) {
        for (OpKind kind : {OpKind::Copy, OpKind::Move}) {
            TempTree tree;
            tree.file("src/notes.txt", "new");
            tree.file("dst/notes.txt", "old");
            const std::set<std::string> trashBefore = trashed();
            ScriptedObserver observer;
            observer.conflictAnswer = {c.choice, ConflictScope::ThisItem};
            observer.onConflict = [&](const OpConflict& conflict) {
                // Nothing is touched before the answer.
                EXPECT_EQ(content(conflict.target), "old");
                EXPECT_EQ(namesIn(tree.path("dst")), std::set<std::string>{"notes.txt"});
            };
            OpResult result = run({kind, {tree.path("src/notes.txt")}, tree.path("dst"), {}}, observer);
            ASSERT_EQ(observer.conflicts.size(), 1u);
            EXPECT_EQ(observer.conflicts[0].target, tree.path("dst/notes.txt"));
            EXPECT_EQ(content(tree.path("dst/notes.txt")), c.expectOld) << int(c.choice);
            if (c.extraName) {
                EXPECT_EQ(content(tree.path("dst/") + c.extraName), "new");
            }
            EXPECT_EQ(trashed().size(), trashBefore.size() + (c.oldTrashed ? 1 : 0)) << int(c.choice);
            EXPECT_EQ(result.status, c.choice == ConflictChoice::Cancel ? OpStatus::Cancelled : OpStatus::Done);
            const bool sourceGone = kind == OpKind::Move
                && (c.choice == ConflictChoice::Replace || c.choice == ConflictChoice::KeepBoth);
            EXPECT_EQ(exists(tree.path("src/notes.txt")), !sourceGone);
        }
    }
}

TEST(OpConflicts, MergeFoldersAndApplyToAll)
{
    TempTree tree;
    tree.file("src/photos/a.jpg", "new a");
    tree.file("src/photos/b.jpg", "new b");
    tree.file("src/photos/c.jpg", "new c");
    tree.file("dst/photos/a.jpg", "old a");
    tree.file("dst/photos/b.jpg", "old b");
    tree.file("dst/photos/mine.txt", "mine");
    struct MergingObserver : ScriptedObserver {
        OpConflictAnswer askConflict(const OpConflict& conflict) override
        {
            conflicts.push_back(conflict);
            if (conflict.targetIsDir)
                return {ConflictChoice::Merge, ConflictScope::ThisItem};
            return {ConflictChoice::KeepBoth, ConflictScope::AllItems};
        }
    } observer;
    OpRecord record;
    OpResult result = run({OpKind::Copy, {tree.path("src/photos")}, tree.path("dst"), {}}, observer, &record);
    EXPECT_EQ(result.status, OpStatus::Done);
    EXPECT_EQ(observer.conflicts.size(), 2u); // the folder, then one file; the second file used "all"
    EXPECT_EQ(namesIn(tree.path("dst/photos")),
              (std::set<std::string>{"a.jpg", "a (2).jpg", "b.jpg", "b (2).jpg", "c.jpg", "mine.txt"}));
    EXPECT_EQ(content(tree.path("dst/photos/a.jpg")), "old a");
    EXPECT_EQ(content(tree.path("dst/photos/a (2).jpg")), "new a");
    EXPECT_EQ(record.steps.size(), 3u); // each item made inside the merged folder
}

TEST(OpConflicts, CopyIntoItsOwnFolderMakesADuplicate)
{
    TempTree tree;
    tree.file("report.pdf", "pdf");
    ScriptedObserver observer;
    OpResult result = run({OpKind::Copy, {tree.path("report.pdf")}, tree.root(), {}}, observer);
    EXPECT_TRUE(observer.conflicts.empty());
    EXPECT_EQ(result.created, std::vector<std::string>{tree.path("report (2).pdf")});
    EXPECT_EQ(content(tree.path("report (2).pdf")), "pdf");
}

TEST(OpNames, KeepBothNames)
{
    struct Case {
        const char* name;
        int n;
        bool isDir;
        const char* expected;
    };
    const Case cases[] = {
        {"notes.txt", 2, false, "notes (2).txt"},
        {"notes.txt", 3, false, "notes (3).txt"},
        {"archive.tar.gz", 2, false, "archive (2).tar.gz"},
        {".bashrc", 2, false, ".bashrc (2)"},
        {"Makefile", 2, false, "Makefile (2)"},
        {"my.folder", 2, true, "my.folder (2)"},
        {"caf\xe9.txt", 2, false, "caf\xe9 (2).txt"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(opKeepBothName(c.name, c.n, c.isDir), c.expected) << c.name;
    // A long name is shortened to fit, never inside a UTF-8 sequence.
    std::string longName;
    for (int i = 0; i < 100; ++i)
        longName += "\xc3\xa9"; // é
    longName += ".txt";
    const std::string shortened = opKeepBothName(longName, 12, false);
    EXPECT_LE(shortened.size(), size_t(NAME_MAX));
    EXPECT_EQ(shortened.substr(shortened.size() - 9), " (12).txt");
    EXPECT_EQ((shortened.size() - 9) % 2, 0u);
}

TEST(OpRename, RenamesOrRefuses)
{
    TempTree tree;
    tree.file("a.txt", "a");
    tree.file("taken.txt", "taken");
    ScriptedObserver observer;
    OpResult ok = run({OpKind::Rename, {tree.path("a.txt")}, {}, "b\xff.txt"}, observer);
    EXPECT_EQ(ok.status, OpStatus::Done);
    EXPECT_EQ(content(tree.path("b\xff.txt")), "a");
    OpResult taken = run({OpKind::Rename, {tree.path("b\xff.txt")}, {}, "taken.txt"}, observer);
    EXPECT_EQ(taken.status, OpStatus::Failed);
    EXPECT_EQ(taken.error, EEXIST);
    EXPECT_EQ(content(tree.path("taken.txt")), "taken");
    for (const char* bad : {"", ".", "..", "x/y"}) {
        OpResult refused = run({OpKind::Rename, {tree.path("b\xff.txt")}, {}, bad}, observer);
        EXPECT_EQ(refused.error, EINVAL) << bad;
    }
    EXPECT_TRUE(observer.errors.empty());
}

TEST(OpNewFolder, TakesAFreeName)
{
    TempTree tree;
    tree.dir("untitled folder");
    ScriptedObserver observer;
    OpResult result = run({OpKind::NewFolder, {}, tree.root(), "untitled folder"}, observer);
    EXPECT_EQ(result.created, std::vector<std::string>{tree.path("untitled folder (2)")});
    struct stat st;
    EXPECT_EQ(::stat(tree.path("untitled folder (2)").c_str(), &st), 0);
}

TEST(OpTrash, TrashAndRestoreRoundTrip)
{
    TempTree tree;
    tree.file("docs/plan\xff.txt", "plan");
    ScriptedObserver observer;
    OpRecord record;
    OpResult result = run({OpKind::Trash, {tree.path("docs/plan\xff.txt")}, {}, {}}, observer, &record);
    EXPECT_EQ(result.status, OpStatus::Done);
    ASSERT_EQ(record.steps.size(), 1u);
    const std::string inTrash = record.steps[0].to;
    EXPECT_FALSE(exists(tree.path("docs/plan\xff.txt")));
    EXPECT_EQ(content(inTrash), "plan");

    // The folder it came from is gone too: restoring makes it again.
    ASSERT_EQ(::rmdir(tree.path("docs").c_str()), 0);
    OpResult restored = run({OpKind::Restore, {inTrash}, {}, {}}, observer);
    EXPECT_EQ(restored.status, OpStatus::Done);
    EXPECT_EQ(restored.created, std::vector<std::string>{tree.path("docs/plan\xff.txt")});
    EXPECT_EQ(content(tree.path("docs/plan\xff.txt")), "plan");
    EXPECT_FALSE(exists(inTrash));
    EXPECT_FALSE(exists(trashHomeDir() + "/info/" + pathLastComponent(inTrash) + ".trashinfo"));
    EXPECT_TRUE(observer.errors.empty());
}

TEST(OpTrash, RestoreOntoATakenNameAsks)
{
    TempTree tree;
    tree.file("x.txt", "first");
    ScriptedObserver observer;
    OpRecord record;
    run({OpKind::Trash, {tree.path("x.txt")}, {}, {}}, observer, &record);
    tree.file("x.txt", "second");
    observer.conflictAnswer = {ConflictChoice::KeepBoth, ConflictScope::ThisItem};
    OpResult restored = run({OpKind::Restore, {record.steps[0].to}, {}, {}}, observer);
    EXPECT_EQ(observer.conflicts.size(), 1u);
    EXPECT_EQ(content(tree.path("x.txt")), "second");
    EXPECT_EQ(content(tree.path("x (2).txt")), "first");
    EXPECT_EQ(restored.created, std::vector<std::string>{tree.path("x (2).txt")});
}

// ---- Undo and redo ----------------------------------------------------------------

namespace {

struct Undoer {
    ScriptedObserver observer;
    OpRecord record;

    OpResult run(const OpRequest& request) { return ::run(request, observer, &record); }
    UndoOutcome undo(OpRecord* redo = nullptr)
    {
        OpControl control;
        OpRecord scratch;
        return opUndo(record, control, observer, redo ? redo : &scratch);
    }
};

} // namespace

TEST(OpUndo, EveryKindGoesBackAndComesAgain)
{
    struct Case {
        const char* what;
        std::function<OpRequest(TempTree&)> request;
        std::function<void(TempTree&)> checkDone;
        std::function<void(TempTree&)> checkUndone;
    };
    const Case cases[] = {
        {"rename", [](TempTree& t) { return OpRequest{OpKind::Rename, {t.path("a.txt")}, {}, "b.txt"}; },
         [](TempTree& t) { EXPECT_EQ(content(t.path("b.txt")), "a"); },
         [](TempTree& t) {
             EXPECT_EQ(content(t.path("a.txt")), "a");
             EXPECT_FALSE(exists(t.path("b.txt")));
         }},
        {"move", [](TempTree& t) { return OpRequest{OpKind::Move, {t.path("a.txt"), t.path("d")}, t.path("dst"), {}}; },
         [](TempTree& t) { EXPECT_EQ(content(t.path("dst/d/in.txt")), "in"); },
         [](TempTree& t) {
             EXPECT_EQ(content(t.path("a.txt")), "a");
             EXPECT_EQ(content(t.path("d/in.txt")), "in");
             EXPECT_TRUE(namesIn(t.path("dst")).empty());
         }},
        {"copy", [](TempTree& t) { return OpRequest{OpKind::Copy, {t.path("a.txt"), t.path("d")}, t.path("dst"), {}}; },
         [](TempTree& t) { EXPECT_EQ(content(t.path("dst/a.txt")), "a"); },
         [](TempTree& t) {
             EXPECT_TRUE(namesIn(t.path("dst")).empty());
             EXPECT_EQ(content(t.path("a.txt")), "a");
         }},
        {"new folder", [](TempTree& t) { return OpRequest{OpKind::NewFolder, {}, t.path("dst"), "fresh"}; },
         [](TempTree& t) { EXPECT_TRUE(exists(t.path("dst/fresh"))); },
         [](TempTree& t) { EXPECT_FALSE(exists(t.path("dst/fresh"))); }},
        {"trash", [](TempTree& t) { return OpRequest{OpKind::Trash, {t.path("a.txt"), t.path("d")}, {}, {}}; },
         [](TempTree& t) { EXPECT_FALSE(exists(t.path("a.txt"))); },
         [](TempTree& t) {
             EXPECT_EQ(content(t.path("a.txt")), "a");
             EXPECT_EQ(content(t.path("d/in.txt")), "in");
         }},
    };
    for (const Case& c : cases) {
        TempTree tree;
        tree.file("a.txt", "a");
        tree.file("d/in.txt", "in");
        tree.dir("dst");
        Undoer u;
        ASSERT_EQ(u.run(c.request(tree)).status, OpStatus::Done) << c.what;
        c.checkDone(tree);
        const size_t trashBefore = trashed().size();
        OpRecord redo;
        ASSERT_EQ(u.undo(&redo), UndoOutcome::Done) << c.what;
        c.checkUndone(tree);
        if (std::string(c.what) == "copy" || std::string(c.what) == "new folder") {
            EXPECT_GT(trashed().size(), trashBefore) << c.what << ": undone copies go to the Trash";
        }
        // Redo: the reversing record reversed again.
        OpControl control;
        OpRecord again;
        ASSERT_EQ(opUndo(redo, control, u.observer, &again), UndoOutcome::Done) << c.what;
        c.checkDone(tree);
        // And once more back.
        OpRecord redo2;
        ASSERT_EQ(opUndo(again, control, u.observer, &redo2), UndoOutcome::Done) << c.what;
        c.checkUndone(tree);
        EXPECT_TRUE(u.observer.errors.empty()) << c.what;
    }
}

TEST(OpUndo, RestoreUndoneGoesBackToTheTrash)
{
    TempTree tree;
    tree.file("r.txt", "r");
    Undoer trash;
    trash.run({OpKind::Trash, {tree.path("r.txt")}, {}, {}});
    Undoer restore;
    ASSERT_EQ(restore.run({OpKind::Restore, {trash.record.steps[0].to}, {}, {}}).status, OpStatus::Done);
    EXPECT_EQ(content(tree.path("r.txt")), "r");
    ASSERT_EQ(restore.undo(), UndoOutcome::Done);
    EXPECT_FALSE(exists(tree.path("r.txt")));
}

TEST(OpUndo, ChangedSinceChangesNothing)
{
    struct Case {
        const char* what;
        OpKind kind;
        std::function<void(TempTree&)> meddle;
    };
    const Case cases[] = {
        {"renamed file edited", OpKind::Rename, [](TempTree& t) { t.file("b.txt", "edited!"); }},
        {"renamed file gone", OpKind::Rename, [](TempTree& t) { ::unlink(t.path("b.txt").c_str()); }},
        {"old name taken again", OpKind::Rename, [](TempTree& t) { t.file("a.txt", "new a"); }},
        {"copy touched", OpKind::Copy, [](TempTree& t) { t.setMtime("dst/a.txt", 12345); }},
        {"new folder filled", OpKind::NewFolder, [](TempTree& t) { t.file("dst/fresh/x", "x"); }},
        {"moved file replaced", OpKind::Move,
         [](TempTree& t) {
             ::unlink(t.path("dst/a.txt").c_str());
             t.file("dst/a.txt", "a");
         }},
    };
    for (const Case& c : cases) {
        TempTree tree;
        tree.file("a.txt", "a");
        tree.dir("dst");
        Undoer u;
        OpRequest request{c.kind, {tree.path("a.txt")}, tree.path("dst"), c.kind == OpKind::Rename ? "b.txt" : "fresh"};
        ASSERT_EQ(u.run(request).status, OpStatus::Done) << c.what;
        c.meddle(tree);
        const std::set<std::string> before = namesIn(tree.root());
        const std::set<std::string> beforeDst = namesIn(tree.path("dst"));
        const size_t trashBefore = trashed().size();
        EXPECT_EQ(u.undo(), UndoOutcome::CannotApply) << c.what;
        EXPECT_EQ(namesIn(tree.root()), before) << c.what;
        EXPECT_EQ(namesIn(tree.path("dst")), beforeDst) << c.what;
        EXPECT_EQ(trashed().size(), trashBefore) << c.what;
    }
}

TEST(OpUndo, CopyThatReplacedBringsTheOldOneBack)
{
    TempTree tree;
    tree.file("src/n.txt", "new");
    tree.file("dst/n.txt", "old");
    Undoer u;
    u.observer.conflictAnswer = {ConflictChoice::Replace, ConflictScope::ThisItem};
    ASSERT_EQ(u.run({OpKind::Copy, {tree.path("src/n.txt")}, tree.path("dst"), {}}).status, OpStatus::Done);
    EXPECT_EQ(content(tree.path("dst/n.txt")), "new");
    ASSERT_EQ(u.undo(), UndoOutcome::Done);
    EXPECT_EQ(content(tree.path("dst/n.txt")), "old");
}

TEST(OpUndo, MenuTexts)
{
    EXPECT_EQ(opUndoText(OpKind::Rename), "Undo Rename");
    EXPECT_EQ(opRedoText(OpKind::Copy), "Redo Copy");
    EXPECT_EQ(opUndoText(OpKind::Trash), "Undo Move to Trash");
}
