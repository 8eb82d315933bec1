#include "fs/trash_op.h"

#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/trash_op_linux.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>
#include <dirent.h>
#include <map>
#include <regex>
#include <set>
#include <string_view>

namespace {

// Everything in the home trash's info/ folder (records and any stray temporary).
std::set<std::string> infoEntries()
{
    std::set<std::string> names;
    if (DIR* dir = ::opendir((trashHomeDir() + "/info").c_str())) {
        while (dirent* e = ::readdir(dir))
            if (std::string_view(e->d_name) != "." && std::string_view(e->d_name) != "..")
                names.insert(e->d_name);
        ::closedir(dir);
    }
    return names;
}

std::string recordOf(const std::string& trashedTo)
{
    return fileReadAll(trashHomeDir() + "/info/" + pathLastComponent(trashedTo) + ".trashinfo").value_or("");
}

TEST(TrashOp, MovesIntoThePrivateHomeTrashWithItsRecord)
{
    TempTree tree;
    // The name is bytes, not valid UTF-8; the record holds it percent-encoded.
    std::string file = tree.file("report\xff 1.txt", "data");
    TrashOp::Outcome outcome = TrashOp::trash(file);
    ASSERT_TRUE(outcome) << TrashOp::describe(outcome.error);
    EXPECT_EQ(outcome.result->path, file);
    EXPECT_EQ(outcome.result->trashedTo, trashHomeDir() + "/files/report\xff 1.txt");
    EXPECT_FALSE(fileReadAll(file));
    EXPECT_EQ(fileReadAll(outcome.result->trashedTo), "data");
    EXPECT_TRUE(std::regex_match(recordOf(outcome.result->trashedTo),
                                 std::regex("\\[Trash Info\\]\nPath=" + tree.root() + "/report%FF%201.txt\n"
                                            "DeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")));
    struct stat st;
    ASSERT_EQ(::stat(trashHomeDir().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST(TrashOp, AnItemWithoutItsRecordIsNeverReplaced)
{
    TempTree tree;
    fileMakeDirs(trashHomeDir() + "/files");
    tree.file("orphan", "old");
    ASSERT_EQ(::rename(tree.path("orphan").c_str(), (trashHomeDir() + "/files/same").c_str()), 0);
    TrashOp::Outcome outcome = TrashOp::trash(tree.file("same", "new"));
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome.result->trashedTo, trashHomeDir() + "/files/same.2");
    EXPECT_EQ(fileReadAll(trashHomeDir() + "/files/same"), "old");
}

// Injected faults: the move of the item itself (the rename into files/) and hard links.
int g_renameErrno = 0;
int g_renameFailures = 0;
int faultyRename(const char* from, const char* to)
{
    if (g_renameFailures > 0 && std::string_view(to).find("/files/") != std::string_view::npos) {
        --g_renameFailures;
        errno = g_renameErrno;
        return -1;
    }
    return sysCallsReal().rename(from, to);
}
int noLink(const char*, const char*)
{
    errno = EPERM;
    return -1;
}

TEST(TrashOp, FailedMoveLeavesTheItemAndNoRecord)
{
    for (int error : {EACCES, EXDEV}) {
        TempTree tree;
        std::string file = tree.file("keep-" + std::to_string(error), "mine");
        std::set<std::string> before = infoEntries();
        SysCalls calls = sysCallsReal();
        calls.rename = faultyRename;
        SysCallsOverride fault(calls);
        g_renameErrno = error;
        g_renameFailures = 1;
        TrashOp::Outcome outcome = TrashOp::trash(file);
        EXPECT_EQ(outcome.error, error);
        EXPECT_EQ(fileReadAll(file), "mine");
        EXPECT_EQ(infoEntries(), before);
    }
}

TEST(TrashOp, InterruptedMoveIsRetriedAndNoLinkFileSystemsWork)
{
    TempTree tree;
    SysCalls calls = sysCallsReal();
    calls.rename = faultyRename;
    calls.link = noLink;
    SysCallsOverride fault(calls);
    g_renameErrno = EINTR;
    g_renameFailures = 1;
    TrashOp::Outcome outcome = TrashOp::trash(tree.file("interrupted"));
    ASSERT_TRUE(outcome);
    EXPECT_NE(recordOf(outcome.result->trashedTo).find("Path=" + tree.path("interrupted") + "\n"), std::string::npos);
    for (const std::string& entry : infoEntries())
        EXPECT_NE(entry.find(".trashinfo"), std::string::npos) << "stray " << entry;
}

TEST(TrashLinux, VolumeTrashChoice)
{
    struct stat sticky {}, plain {}, link {};
    sticky.st_mode = S_IFDIR | 01777;
    plain.st_mode = S_IFDIR | 0777;
    link.st_mode = S_IFLNK | 01777;
    using Dirs = std::vector<std::string>;
    EXPECT_EQ(trashVolumeDirs("/media/usb", 1000, &sticky), (Dirs{"/media/usb/.Trash/1000", "/media/usb/.Trash-1000"}));
    EXPECT_EQ(trashVolumeDirs("/media/usb", 1000, &plain), (Dirs{"/media/usb/.Trash-1000"}));
    EXPECT_EQ(trashVolumeDirs("/media/usb", 1000, &link), (Dirs{"/media/usb/.Trash-1000"}));
    EXPECT_EQ(trashVolumeDirs("/", 7, nullptr), (Dirs{"/.Trash-7"}));

    std::map<std::string, dev_t> devices = {{"/", 1}, {"/media", 1}, {"/media/usb", 2}, {"/media/usb/docs", 2}};
    auto deviceOf = [&](const std::string& p) -> std::optional<dev_t> {
        auto it = devices.find(p);
        return it == devices.end() ? std::nullopt : std::optional<dev_t>(it->second);
    };
    EXPECT_EQ(trashTopDir("/media/usb/docs/a.txt", 2, deviceOf), "/media/usb");
    EXPECT_EQ(trashTopDir("/media/x", 1, deviceOf), "/");

    EXPECT_EQ(trashInfoPath("/media/usb/docs/a.txt", "/media/usb"), "docs/a.txt");
    EXPECT_EQ(trashInfoPath("/srv/a", "/"), "srv/a");
    EXPECT_EQ(trashInfoPath("/home/u/a", ""), "/home/u/a");
}

TEST(TrashOp, ItemsInsideATrashAreRefused)
{
    TempTree tree;
    TrashOp::Outcome first = TrashOp::trash(tree.file("once"));
    ASSERT_TRUE(first);
    const std::string uid = std::to_string(::getuid());
    const std::string inside[] = {
        first.result->trashedTo,
        trashHomeDir() + "/info/" + pathLastComponent(first.result->trashedTo) + ".trashinfo",
        trashHomeDir() + "/files",
        trashHomeDir(),
        tree.file("vol/.Trash-" + uid + "/files/x"),
        tree.file("vol/.Trash-" + uid + "/info/x.trashinfo"),
        tree.file("vol/.Trash/" + uid + "/files/y"),
        tree.dir("vol/.Trash-" + uid),
    };
    const std::set<std::string> records = infoEntries();
    for (const std::string& path : inside) {
        TrashOp::Outcome outcome = TrashOp::trash(path);
        EXPECT_EQ(outcome.error, kTrashErrorInTrash) << path;
        struct stat st;
        EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    }
    EXPECT_EQ(infoEntries(), records);
    EXPECT_EQ(TrashOp::describe(kTrashErrorInTrash), "The item is in the Trash already");
    // Names that merely look alike are trashed as usual.
    EXPECT_TRUE(TrashOp::trash(tree.file("vol/.Trash-" + uid + "x/z")));
    EXPECT_TRUE(TrashOp::trash(tree.file("vol/.Trash/" + uid + "0/z")));
}

TEST(TrashOp, OrphanRecordsOfKilledMovesAreRemoved)
{
    TempTree tree;
    const std::string trash = tree.dir("Trash");
    tree.dir("Trash/files");
    const std::string dead = "999999999", self = std::to_string(::getpid());
    const std::time_t now = std::time(nullptr);
    // A record with our temporary still linked to it: the move it announced.
    std::map<std::string, std::string> temps;
    auto temp = [&](const std::string& name) { return "Trash/info/" + temps.at(name); };
    auto record = [&](const std::string& name, const std::string& writer, std::time_t age, bool moved) {
        temps[name] = ".brondel.tmp-" + writer + "-0-" + std::to_string(temps.size());
        const std::string info = "Trash/info/" + name + ".trashinfo";
        tree.file(info, "[Trash Info]\nPath=/x/" + name + "\n");
        tree.hardlink("Trash/info/" + temps[name], info);
        tree.setMtime(info, now - age);
        if (moved)
            tree.file("Trash/files/" + name, "item");
    };
    record("orphan", dead, 120, false);   // killed before the item moved
    record("moved", dead, 120, true);     // killed after: only the temporary is left over
    record("young", dead, 10, false);     // too recent to judge
    record("busy", self, 120, false);     // its writer is still at work
    tree.file("Trash/info/foreign.trashinfo", "[Trash Info]\nPath=/x/foreign\n"); // another program's
    tree.setMtime("Trash/info/foreign.trashinfo", now - 3600);

    EXPECT_EQ(trashRemoveOrphans(trash, now), 1u);
    auto exists = [&](const std::string& rel) { return fileReadAll(tree.path(rel)).has_value(); };
    EXPECT_FALSE(exists("Trash/info/orphan.trashinfo"));
    EXPECT_FALSE(exists(temp("orphan")));
    EXPECT_TRUE(exists("Trash/info/moved.trashinfo"));
    EXPECT_FALSE(exists(temp("moved")));
    EXPECT_TRUE(exists("Trash/info/young.trashinfo"));
    EXPECT_TRUE(exists(temp("young")));
    EXPECT_TRUE(exists("Trash/info/busy.trashinfo"));
    EXPECT_TRUE(exists(temp("busy")));
    EXPECT_TRUE(exists("Trash/info/foreign.trashinfo"));
}

TEST(TrashLinux, EncodingAndNames)
{
    EXPECT_EQ(trashPercentEncode("/a b/ü%~x-_.Z9"), "/a%20b/%C3%BC%25~x-_.Z9");
    EXPECT_EQ(trashCandidateName("x", 1), "x");
    EXPECT_EQ(trashCandidateName("x", 12), "x.12");
    // "<stem>.trashinfo" must fit in 255 bytes: 245 for the first try, 243 for ".2".
    // Cutting 244 ASCII bytes + "é" at 245 would split the "é": it goes whole.
    std::string longName = std::string(244, 'a') + "\xc3\xa9" + "tail";
    EXPECT_EQ(trashCandidateName(longName, 1), std::string(244, 'a'));
    EXPECT_EQ(trashCandidateName(longName, 2), std::string(243, 'a') + ".2");
}

} // namespace
