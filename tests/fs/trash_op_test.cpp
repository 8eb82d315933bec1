#include "fs/trash_op.h"

#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/trash_op_linux.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
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
