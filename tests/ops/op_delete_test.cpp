// Deleting for good on real temporary trees, with faults fed through the system-call
// seam: a failed item leaves the rest deleted and is reported, interruptions are retried,
// a cancel stops between items, and no link (nor a folder swapped for one mid-walk) leads
// the job out of its tree.

#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "ops/op_engine.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Answers : public OpObserver {
public:
    ErrorChoice errorAnswer = ErrorChoice::Skip;
    std::vector<OpError> errors;
    OpProgress last;

    void progress(const OpProgress& progress) override { last = progress; }
    OpConflictAnswer askConflict(const OpConflict&) override { return {ConflictChoice::Cancel, ConflictScope::AllItems}; }
    ErrorChoice askError(const OpError& error) override
    {
        errors.push_back(error);
        return errors.size() > 5 ? ErrorChoice::Cancel : errorAnswer;
    }
};

bool exists(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

OpRequest deleting(std::vector<std::string> sources, OpOnError onError = OpOnError::Ask)
{
    OpRequest request;
    request.kind = OpKind::Delete;
    request.sources = std::move(sources);
    request.onError = onError;
    return request;
}

// ---- Faults: each hook acts on the entries named `g_name` (any entry when empty).

std::string g_name;
std::atomic<int> g_unlinkErrno{0};   // unlinkat of the named entry fails with this
std::atomic<int> g_unlinkFailures{0}; // ... this many times (then it works)
std::atomic<int> g_intrLeft{0};       // every kind of call is interrupted this many times first
std::atomic<int> g_removed{0};        // entries removed so far
std::atomic<int> g_cancelAfter{0};    // cancel once this many are removed (0: never)
std::atomic<OpControl*> g_control{nullptr};
std::function<void(int dirFd, const char* name)> g_beforeOpen; // runs before a folder is opened
std::atomic<bool> g_otherDevice{false}; // the named folder reports another device

void resetFaults()
{
    g_name.clear();
    g_unlinkErrno = 0;
    g_unlinkFailures = 0;
    g_intrLeft = 0;
    g_removed = 0;
    g_cancelAfter = 0;
    g_control = nullptr;
    g_beforeOpen = nullptr;
    g_otherDevice = false;
}

bool named(const char* name) { return g_name.empty() || g_name == name; }

bool interrupted()
{
    if (g_intrLeft > 0 && g_intrLeft-- > 0) {
        errno = EINTR;
        return true;
    }
    return false;
}

int faultyUnlinkat(int dirFd, const char* name, int flags)
{
    if (interrupted())
        return -1;
    if (g_unlinkErrno && named(name) && g_unlinkFailures > 0) {
        --g_unlinkFailures;
        errno = g_unlinkErrno;
        return -1;
    }
    const int result = sysCallsReal().unlinkat(dirFd, name, flags);
    if (result == 0 && ++g_removed == g_cancelAfter && g_control)
        g_control.load()->cancel();
    return result;
}

int faultyFstatat(int dirFd, const char* name, struct stat* st, int flags)
{
    if (interrupted())
        return -1;
    const int result = sysCallsReal().fstatat(dirFd, name, st, flags);
    if (result == 0 && g_otherDevice && named(name))
        st->st_dev += 1;
    return result;
}

int faultyOpenat(int dirFd, const char* name, int flags, mode_t mode)
{
    if (interrupted())
        return -1;
    if (g_beforeOpen)
        g_beforeOpen(dirFd, name);
    return sysCallsReal().openat(dirFd, name, flags, mode);
}

SysCalls faultyCalls()
{
    SysCalls calls = sysCallsReal();
    calls.unlinkat = faultyUnlinkat;
    calls.fstatat = faultyFstatat;
    calls.openat = faultyOpenat;
    return calls;
}

struct Faults {
    SysCalls calls = faultyCalls();
    SysCallsOverride over{calls};
    Faults() { resetFaults(); }
    ~Faults() { resetFaults(); }
};

// A tree of files, folders, hidden and read-only items, a name that is not UTF-8, and
// links that point out of the tree, to a folder and to a file that must survive.
void plantTree(TempTree& tree)
{
    tree.file("outside/keep.txt", "keep");
    tree.file("doomed/a.txt", "alpha");
    tree.file("doomed/.hidden", "h");
    tree.file("doomed/sub/deep/b.bin", std::string(1000, 'b'));
    tree.file("doomed/sub/caf\xe9-\xff.txt", "odd");
    tree.file("doomed/sub/readonly.txt", "ro");
    tree.chmod("doomed/sub/readonly.txt", 0444);
    tree.symlink("doomed/to-folder", tree.path("outside"));
    tree.symlink("doomed/sub/to-file", tree.path("outside/keep.txt"));
    tree.symlink("doomed/dangling", tree.path("nowhere"));
    tree.file("loose.txt", "loose");
}

} // namespace

TEST(OpDelete, RemovesTreesAndRemovesLinksAsLinks)
{
    TempTree tree;
    plantTree(tree);
    Answers answers;
    OpControl control;
    OpRecord record;
    const OpResult result = opRun(deleting({tree.path("doomed"), tree.path("loose.txt")}), control, answers, &record);
    EXPECT_EQ(result.status, OpStatus::Done);
    EXPECT_TRUE(answers.errors.empty());
    EXPECT_TRUE(result.failed.empty());
    EXPECT_FALSE(exists(tree.path("doomed")));
    EXPECT_FALSE(exists(tree.path("loose.txt")));
    EXPECT_EQ(fileReadAll(tree.path("outside/keep.txt")).value_or(""), "keep");
    // 12 items: the folder, the 10 entries below it, and the loose file.
    EXPECT_EQ(answers.last.itemsTotal, 12u);
    EXPECT_EQ(answers.last.itemsDone, 12u);
    EXPECT_EQ(answers.last.bytesTotal, uint64_t(5 + 1 + 1000 + 3 + 2 + 5));
    EXPECT_EQ(answers.last.bytesDone, answers.last.bytesTotal);
    // Nothing to undo: deleting for good never joins the undo stack.
    EXPECT_TRUE(record.steps.empty());
    EXPECT_EQ(opUndo(record, control, answers, nullptr), UndoOutcome::Nothing);
}

TEST(OpDelete, ABadItemIsRefusedAndTheOthersGo)
{
    TempTree tree;
    tree.file("keep/inside.txt");
    Answers answers;
    OpControl control;
    const OpResult result = opRun(deleting({tree.path("keep") + "/..", tree.path("keep/inside.txt")}), control, answers);
    EXPECT_EQ(result.status, OpStatus::Done);
    ASSERT_EQ(result.failed.size(), 1u);
    EXPECT_EQ(result.failed[0].error, EINVAL);
    EXPECT_TRUE(exists(tree.path("keep")));
    EXPECT_FALSE(exists(tree.path("keep/inside.txt")));
}

// One table of faults: what fails, how the job is told to answer, and what is left.
TEST(OpDelete, FaultsTable)
{
    struct Case {
        const char* what;
        const char* name;     // the entry the fault hits
        int error;            // unlinkat's errno for it
        int failures;         // how many times
        int interruptions;    // EINTR fed to every call first
        OpOnError onError;
        ErrorChoice answer;
        size_t asked;         // questions the user saw
        std::vector<std::string> left; // relative to the tree
        std::vector<int> reported;     // errnos in the result
    };
    const std::vector<Case> cases = {
        {"EACCES skipped when asked", "readonly.txt", EACCES, 100, 0, OpOnError::Ask, ErrorChoice::Skip, 1,
         {"doomed", "doomed/sub", "doomed/sub/readonly.txt"}, {EACCES}},
        {"EACCES skipped without asking", "readonly.txt", EACCES, 100, 0, OpOnError::Skip, ErrorChoice::Cancel, 0,
         {"doomed", "doomed/sub", "doomed/sub/readonly.txt"}, {EACCES}},
        {"a retry after a failure", "readonly.txt", EBUSY, 1, 0, OpOnError::Ask, ErrorChoice::Retry, 1, {}, {}},
        {"interrupted calls are retried", "", 0, 0, 7, OpOnError::Ask, ErrorChoice::Cancel, 0, {}, {}},
        {"stop at the failure", "a.txt", EROFS, 100, 0, OpOnError::Ask, ErrorChoice::Cancel, 1,
         {"doomed", "doomed/a.txt"}, {EROFS}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempTree tree;
        plantTree(tree);
        Faults faults;
        g_name = c.name;
        g_unlinkErrno = c.error;
        g_unlinkFailures = c.failures;
        g_intrLeft = c.interruptions;
        Answers answers;
        answers.errorAnswer = c.answer;
        OpControl control;
        const OpResult result = opRun(deleting({tree.path("doomed"), tree.path("loose.txt")}, c.onError), control, answers);
        EXPECT_EQ(answers.errors.size(), c.asked);
        std::vector<int> reported;
        for (const OpItemError& failure : result.failed)
            reported.push_back(failure.error);
        EXPECT_EQ(reported, c.reported);
        for (const std::string& rel : c.left)
            EXPECT_TRUE(exists(tree.path(rel))) << rel;
        if (c.asked == 0 || c.answer != ErrorChoice::Cancel) {
            // Everything else went, the other top-level item too.
            EXPECT_FALSE(exists(tree.path("doomed/a.txt")));
            EXPECT_FALSE(exists(tree.path("doomed/sub/deep")));
            EXPECT_FALSE(exists(tree.path("loose.txt")));
            EXPECT_EQ(result.status, OpStatus::Done);
        } else {
            EXPECT_EQ(result.status, OpStatus::Cancelled);
            EXPECT_TRUE(exists(tree.path("loose.txt")));
        }
        if (!c.reported.empty()) {
            EXPECT_EQ(result.failed[0].path, tree.path(c.left.back()));
        }
        EXPECT_EQ(fileReadAll(tree.path("outside/keep.txt")).value_or(""), "keep");
    }
}

TEST(OpDelete, CancelStopsBetweenItems)
{
    TempTree tree;
    for (int i = 0; i < 20; ++i)
        tree.file("many/f" + std::to_string(i));
    Faults faults;
    OpControl control;
    g_control = &control;
    g_cancelAfter = 3;
    Answers answers;
    const OpResult result = opRun(deleting({tree.path("many")}), control, answers);
    EXPECT_EQ(result.status, OpStatus::Cancelled);
    EXPECT_EQ(g_removed.load(), 3); // not one more after the cancel
    int left = 0;
    for (int i = 0; i < 20; ++i)
        left += exists(tree.path("many/f" + std::to_string(i))) ? 1 : 0;
    EXPECT_EQ(left, 17);
    EXPECT_TRUE(answers.errors.empty());
}

TEST(OpDelete, AFolderSwappedForALinkMidWalkLeadsNowhere)
{
    TempTree tree;
    tree.file("outside/keep.txt", "keep");
    tree.file("doomed/sub/x.txt");
    tree.file("doomed/y.txt");
    Faults faults;
    const std::string sub = tree.path("doomed/sub");
    const std::string aside = tree.path("aside");
    const std::string outside = tree.path("outside");
    // Between the look at "sub" and its opening, someone puts a link to "outside" there.
    g_beforeOpen = [&](int, const char* name) {
        if (std::strcmp(name, "sub") == 0 && ::rename(sub.c_str(), aside.c_str()) == 0)
            ::symlink(outside.c_str(), sub.c_str());
    };
    Answers answers;
    OpControl control;
    const OpResult result = opRun(deleting({tree.path("doomed")}), control, answers);
    ASSERT_EQ(result.failed.size(), 1u);
    EXPECT_EQ(result.failed[0].path, sub);
    EXPECT_EQ(fileReadAll(tree.path("outside/keep.txt")).value_or(""), "keep");
    EXPECT_TRUE(exists(tree.path("aside/x.txt")));
    EXPECT_FALSE(exists(tree.path("doomed/y.txt")));

    // A folder on another device (a mount) is not emptied either.
    resetFaults();
    tree.file("mounted/disk/data.txt");
    g_name = "disk";
    g_otherDevice = true;
    Answers again;
    const OpResult mounted = opRun(deleting({tree.path("mounted")}), control, again);
    ASSERT_EQ(mounted.failed.size(), 1u);
    EXPECT_EQ(mounted.failed[0].error, EBUSY);
    EXPECT_TRUE(exists(tree.path("mounted/disk/data.txt")));
}
