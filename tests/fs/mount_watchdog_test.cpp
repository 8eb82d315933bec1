#include "fs/mount_probe_helper.h"
#include "fs/mount_watchdog.h"
#include "support/hang_fs.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <climits>
#include <fcntl.h>
#include <sys/sysmacros.h>
#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

// The helper's stand-in: requests for paths containing "/slow" block (in the helper
// process) until the release file exists; everything else is the real call.
char g_releaseFile[PATH_MAX];

MountProbeReply slowServe(const MountProbeRequest& request)
{
    if (std::strstr(request.path, "/slow")) {
        struct stat st;
        const timespec tick{0, 10 * 1000 * 1000};
        while (::syscall(SYS_newfstatat, AT_FDCWD, long(g_releaseFile), long(&st), 0) != 0)
            ::syscall(SYS_nanosleep, long(&tick), 0);
    }
    return mountProbeServe(request);
}

template <class F> auto timed(F&& f, Clock::duration& took)
{
    const auto start = Clock::now();
    auto result = f();
    took = Clock::now() - start;
    return result;
}

bool eventually(const std::function<bool()>& condition, Clock::duration limit = 5s)
{
    const auto end = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() > end)
            return false;
        std::this_thread::sleep_for(20ms);
    }
    return true;
}

// A guarded mount made of a plain folder: its calls go through the helper process,
// whose stand-in hangs on demand. Runs wherever processes can be forked.
class WatchdogSeam : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_root = testHome() + "/seam-" + std::to_string(++s_count);
        ::mkdir(m_root.c_str(), 0755);
        m_point = m_root + "/drive";
        ::mkdir(m_point.c_str(), 0755);
        ::mkdir((m_point + "/slow").c_str(), 0755);
        std::snprintf(g_releaseFile, sizeof g_releaseFile, "%s/released", m_root.c_str());
        mountProbeSetServeForTest(slowServe);
        MountRecord drive{m_point, "fuse.seam", "seam", "rw"};
        drive.device = makedev(0, 900 + s_count);
        m_device = drive.device;
        mountWatchdogSetTableForTest(std::vector<MountRecord>{{"/", "ext4", "/dev/sda1", "rw"}, drive});
    }
    void TearDown() override
    {
        releaseHelper();
        mountWatchdogResetForTest();
        mountWatchdogSetTableForTest(std::nullopt);
        mountProbeSetServeForTest(nullptr);
    }
    void releaseHelper() { std::fclose(std::fopen(g_releaseFile, "w")); }

    static inline int s_count = 0;
    std::string m_root, m_point;
    dev_t m_device = 0;
};

} // namespace

TEST_F(WatchdogSeam, RemembersAStuckMountAndRecoversWhenItAnswers)
{
    Clock::duration first{}, second{};
    const auto slow = timed([&] { return mountWatchdogCapacity(m_point + "/slow", Clock::now() + 500ms); }, first);
    EXPECT_FALSE(slow.responding());
    EXPECT_LT(first, 3s);
    EXPECT_TRUE(mountWatchdogIsStuck(m_device));
    EXPECT_TRUE(mountWatchdogIsStuckAt(m_point));
    EXPECT_TRUE(mountWatchdogIsStuckPath(m_point + "/slow/x"));
    EXPECT_FALSE(mountWatchdogIsStuckPath(m_root));
    EXPECT_EQ(mountWatchdogStuckMounts(), std::vector<std::string>{m_point});

    // Any call on the same mount now answers at once, without the default deadline.
    const auto again = timed([&] { return mountWatchdogStat(m_point); }, second);
    EXPECT_FALSE(again.responding());
    EXPECT_LT(second, 1s);
    EXPECT_EQ(mountWatchdogCheck(m_point), MountState::NotResponding);

    releaseHelper();
    EXPECT_TRUE(eventually([&] { return !mountWatchdogIsStuckAt(m_point); }));
    const auto back = mountWatchdogStat(m_point);
    ASSERT_TRUE(back.responding());
    ASSERT_TRUE(back.value);
    EXPECT_TRUE(S_ISDIR(back.value->st_mode));
}

TEST_F(WatchdogSeam, OnlyStuckMountPointsOfAFolderAreNamed)
{
    MountRecord good{m_root + "/good", "fuse.seam", "seam", "rw"};
    MountRecord slow{m_root + "/slowdrive", "fuse.seam", "seam", "rw"};
    ::mkdir(good.mountPoint.c_str(), 0755);
    ::mkdir(slow.mountPoint.c_str(), 0755);
    good.device = makedev(0, 800);
    slow.device = makedev(0, 801);
    mountWatchdogSetTableForTest(std::vector<MountRecord>{{"/", "ext4", "/dev/sda1", "rw"}, good, slow});
    Clock::duration took{};
    const auto names = timed([&] { return mountWatchdogStuckEntries(m_root + "/", Clock::now() + 500ms); }, took);
    EXPECT_EQ(names, std::vector<std::string>{"slowdrive"});
    EXPECT_LT(took, 3s);
    EXPECT_TRUE(mountWatchdogStuckEntries(m_point).empty()); // no mounts inside
}

TEST(MountWatchdog, RealpathMatchesTheSystemsForLocalPaths)
{
    const std::string base = testHome() + "/real";
    ::mkdir(base.c_str(), 0755);
    ::mkdir((base + "/dir").c_str(), 0755);
    ::mkdir((base + "/dir/sub").c_str(), 0755);
    ::symlink("dir/sub", (base + "/rel").c_str());
    ::symlink((base + "/dir").c_str(), (base + "/abs").c_str());
    ::symlink("loop2", (base + "/loop1").c_str());
    ::symlink("loop1", (base + "/loop2").c_str());
    for (const std::string& path : {base + "/rel", base + "/abs/sub/..", base + "/./dir//sub/", base + "/abs",
                                   base + "/missing", base + "/loop1", base + "/rel/../../abs", std::string("/")}) {
        char expected[PATH_MAX];
        const bool exists = ::realpath(path.c_str(), expected) != nullptr;
        const auto got = mountWatchdogRealpath(path);
        EXPECT_TRUE(got.responding()) << path;
        EXPECT_EQ(got.value.has_value(), exists) << path;
        if (exists && got.value) {
            EXPECT_EQ(*got.value, expected) << path;
        }
    }
}

TEST(MountWatchdog, GuardsUserDrivesAndNetworkFileSystems)
{
    struct Case {
        const char* point;
        const char* type;
        bool guarded;
    };
    for (const Case& c : {Case{"/", "ext4", false}, Case{"/home", "ext4", false}, Case{"/media/u/USB", "vfat", true},
                          Case{"/mnt/x", "ext4", true}, Case{"/mnt", "ext4", false}, Case{"/srv/share", "nfs4", true},
                          Case{"/home/u/remote", "fuse.sshfs", true}, Case{"/tmp", "tmpfs", false}}) {
        EXPECT_EQ(mountWatchdogGuards(MountRecord{c.point, c.type, "x", "rw"}), c.guarded) << c.point;
    }
}

TEST(MountWatchdogFuse, AHungDriveIsNotRespondingThenAnswersAgain)
{
    mountWatchdogResetForTest();
    HangFs fs(testHome() + "/media/Stuck", "statfs,getattr");
    HANGFS_REQUIRE(fs);
    const auto fine = mountWatchdogCapacity(fs.mountPoint());
    ASSERT_TRUE(fine.responding());
    ASSERT_TRUE(fine.value);
    EXPECT_EQ(fine.value->totalBytes, 4096000);

    fs.hang();
    Clock::duration first{}, second{};
    EXPECT_FALSE(timed([&] { return mountWatchdogCapacity(fs.mountPoint()); }, first).responding());
    EXPECT_LT(first, 3s);
    EXPECT_FALSE(timed([&] { return mountWatchdogRealpath(fs.mountPoint() + "/a/one.txt"); }, second).responding());
    EXPECT_LT(second, 1s);
    const auto stuckDev = mountWatchdogMountOf(fs.mountPoint())->device;
    EXPECT_TRUE(mountWatchdogIsStuck(stuckDev));

    fs.release();
    EXPECT_TRUE(eventually([&] { return !mountWatchdogIsStuck(stuckDev); }));
    const auto real = mountWatchdogRealpath(fs.mountPoint() + "/a/one.txt");
    ASSERT_TRUE(real.value);
    EXPECT_EQ(*real.value, fs.mountPoint() + "/a/one.txt");
}
