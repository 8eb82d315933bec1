// The Properties window's facts and permission logic: mode text, the bit behind each
// box, who may change what, and changes that report the system's refusal.

#include "fs/file_props.h"

#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(FileProps, SymbolicText)
{
    struct Case {
        unsigned mode;
        const char* text;
    } cases[] = {
        {0, "---------"},          {0644, "rw-r--r--"}, {0755, "rwxr-xr-x"}, {0700, "rwx------"},
        {0007, "------rwx"},       {01777, "rwxrwxrwt"}, {01770, "rwxrwx--T"}, {04755, "rwsr-xr-x"},
        {04644, "rwSr--r--"},      {02755, "rwxr-sr-x"}, {02745, "rwxr-Sr-x"}, {07777, "rwsrwsrwt"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(permSymbolic(c.mode), c.text) << std::oct << c.mode;
}

TEST(FileProps, AccessInWords)
{
    struct Case {
        unsigned mode;
        PermWho who;
        bool isDir;
        const char* text;
    } cases[] = {
        {0644, PermWho::Owner, false, "Read and write"},
        {0644, PermWho::Group, false, "Read only"},
        {0640, PermWho::Others, false, "No access"},
        {0755, PermWho::Others, false, "Read only, run"},
        {0020, PermWho::Group, false, "Write only"},
        {0755, PermWho::Owner, true, "Read and write, open"},
        {0744, PermWho::Group, true, "Read only, cannot open"},
        {0701, PermWho::Others, true, "No access, open"},
        {0700, PermWho::Others, true, "No access"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(permAccessText(c.mode, c.who, c.isDir), c.text) << std::oct << c.mode << " " << int(c.who);
}

TEST(FileProps, EachBoxTogglesItsOwnBit)
{
    struct Case {
        unsigned mode;
        PermWho who;
        PermBit bit;
        bool on;
        unsigned expected;
    } cases[] = {
        {0644, PermWho::Owner, PermBit::Execute, true, 0744},
        {0644, PermWho::Group, PermBit::Read, false, 0604},
        {0644, PermWho::Others, PermBit::Write, true, 0646},
        {0644, PermWho::Owner, PermBit::Read, true, 0644}, // already set
        {04755, PermWho::Owner, PermBit::Execute, false, 04655}, // special bits kept
        {01777, PermWho::Others, PermBit::Write, false, 01775},
    };
    for (const auto& c : cases)
        EXPECT_EQ(permWith(c.mode, c.who, c.bit, c.on), c.expected) << std::oct << c.mode;
    EXPECT_EQ(permMask(PermWho::Owner, PermBit::Read), 0400u);
    EXPECT_EQ(permMask(PermWho::Others, PermBit::Execute), 01u);
}

TEST(FileProps, OctalEntry)
{
    struct Case {
        const char* text;
        std::optional<unsigned> mode;
    } cases[] = {
        {"644", 0644u}, {"0", 0u}, {"1777", 01777u}, {"7777", 07777u}, {"0755", 0755u},
        {"", std::nullopt}, {"8", std::nullopt}, {"17777", std::nullopt}, {"64a", std::nullopt},
        {"-644", std::nullopt}, {" 644", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(permParseOctal(c.text), c.mode) << c.text;
}

TEST(FileProps, WhoMayChangeWhat)
{
    struct Case {
        uid_t me, owner;
        bool isLink;
        bool mode, group, ownerChange;
    } cases[] = {
        {1000, 1000, false, true, true, false},  // one's own item
        {1000, 1001, false, false, false, false}, // someone else's
        {0, 1001, false, true, true, true},       // root
        {1000, 1000, true, false, false, false},  // a link's own bits
        {0, 0, true, false, false, false},
    };
    for (const auto& c : cases) {
        const PermRights rights = permRights(c.me, c.owner, c.isLink);
        EXPECT_EQ(rights.mode, c.mode) << c.me << " " << c.owner;
        EXPECT_EQ(rights.group, c.group) << c.me << " " << c.owner;
        EXPECT_EQ(rights.owner, c.ownerChange) << c.me << " " << c.owner;
    }
}

TEST(FileProps, ReadsFilesFoldersAndLinks)
{
    TempTree tree;
    tree.file("f.txt", "hello");
    tree.chmod("f.txt", 0640);
    tree.dir("d");
    tree.chmod("d", 0750);
    tree.symlink("to-d", "d");
    tree.symlink("dangling", "nowhere");

    const FileProps file = FileProps::read(tree.path("f.txt"));
    EXPECT_TRUE(file.exists);
    EXPECT_FALSE(file.isDir);
    EXPECT_EQ(file.mode, 0640u);
    EXPECT_EQ(file.info.size, 5);
    EXPECT_EQ(file.uid, ::getuid());
    EXPECT_FALSE(file.owner.empty());
    EXPECT_TRUE(file.accessed.has_value());

    const FileProps link = FileProps::read(tree.path("to-d"));
    EXPECT_TRUE(link.isLink);
    EXPECT_TRUE(link.isDir); // what it leads to
    EXPECT_EQ(link.mode, 0750u);
    EXPECT_EQ(link.linkTarget, "d");

    const FileProps dangling = FileProps::read(tree.path("dangling"));
    EXPECT_TRUE(dangling.exists);
    EXPECT_TRUE(dangling.isLink);
    EXPECT_FALSE(dangling.isDir);

    const FileProps missing = FileProps::read(tree.path("nope"));
    EXPECT_FALSE(missing.exists);
    EXPECT_EQ(missing.info.kind, "unknown");
}

int refuse(const char*, mode_t)
{
    errno = EPERM;
    return -1;
}

int refuseOwner(const char*, uid_t, gid_t)
{
    errno = EPERM;
    return -1;
}

TEST(FileProps, ChangesGoThroughTheSeamAndReportRefusals)
{
    TempTree tree;
    const std::string file = tree.file("f.txt");
    tree.chmod("f.txt", 0600);
    EXPECT_EQ(permApplyMode(file, 0644), 0);
    struct stat st{};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u);
    // Changing to one's own owner and group is always allowed.
    EXPECT_EQ(permApplyOwner(file, std::to_string(::getuid()), std::to_string(::getgid())), 0);
    EXPECT_EQ(permApplyOwner(file, "no-such-user-anywhere", ""), EINVAL);
    EXPECT_EQ(permApplyOwner(file, "", "no-such-group-anywhere"), EINVAL);
    EXPECT_EQ(permApplyMode(tree.path("missing"), 0644), ENOENT);

    SysCalls calls = sysCallsReal();
    calls.chmod = refuse;
    calls.chown = refuseOwner;
    SysCallsOverride override(calls);
    EXPECT_EQ(permApplyMode(file, 0600), EPERM);
    EXPECT_EQ(permApplyOwner(file, "0", ""), EPERM);
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u); // untouched
}

TEST(FileProps, UserGroupsEachOnceThePrimaryFirst)
{
    TempTree tree;
    const FileProps mine = FileProps::read(tree.file("mine"));
    const auto groups = permUserGroups();
    ASSERT_FALSE(groups.empty());
    EXPECT_EQ(groups.front(), mine.group); // a new file gets the primary group
    EXPECT_EQ(std::set<std::string>(groups.begin(), groups.end()).size(), groups.size());
}

} // namespace
