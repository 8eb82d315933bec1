#include "fs/volume_list.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

const VolumeViewer kAnn{"/home/ann", "ann"};

MountRecord mount(const std::string& point, const std::string& type = "ext4")
{
    return {point, type, "/dev/sdz", "rw"};
}

std::optional<MountCapacity> fakeCapacity(const std::string& point)
{
    if (point.ends_with("unreadable"))
        return std::nullopt;
    if (point.ends_with("slow"))
        std::this_thread::sleep_for(std::chrono::seconds(20));
    return MountCapacity{int64_t(point.size()) * 1000, 100};
}

std::vector<std::string> names(const std::vector<Volume>& volumes)
{
    std::vector<std::string> out;
    for (const Volume& volume : volumes)
        out.push_back(volume.name);
    return out;
}

} // namespace

TEST(VolumeList, UserVisibleMountPoints)
{
    const struct {
        const char* point;
        const char* type;
        bool visible;
    } cases[] = {
        {"/media/ann/USB", "vfat", true},
        {"/run/media/ann/Backup", "exfat", true},
        {"/run/media/bob/Backup", "exfat", false}, // another user's
        {"/mnt/data", "nfs4", true},
        {"/mnt/data", "tmpfs", false},
        {"/home/ann/remote", "fuse.sshfs", true},
        {"/home/ann/.cache/doc", "fuse.portal", false},
        {"/home/ann/.hidden/disk", "ext4", false},
        {"/home/ann", "ext4", false},
        {"/home/annex/disk", "ext4", false},
        {"/", "ext4", false},
        {"/srv/disk", "ext4", false},
        {"/media/ann/VM", "ext4", false},
        {"/media/ann/macintosh hd", "hfsplus", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VolumeList::userVisible(mount(c.point, c.type), kAnn), c.visible) << c.point << " " << c.type;

    EXPECT_FALSE(VolumeList::userVisible(mount("/home/disk"), VolumeViewer{"/", "ann"})); // home of "/"
}

TEST(VolumeList, TopmostMountOfAPointDecides)
{
    const std::vector<MountRecord> table = {
        mount("/mnt/a"), mount("/mnt/a", "tmpfs"), // hidden under a memory file system
        mount("/mnt/b", "tmpfs"), mount("/mnt/b"), // a drive mounted over it
        mount("/proc", "proc"),
    };
    const std::vector<MountRecord> visible = VolumeList::visible(table, kAnn);
    ASSERT_EQ(visible.size(), 1u);
    EXPECT_EQ(visible[0], mount("/mnt/b"));
}

TEST(VolumeList, MountedSortsByBytesAndDropsUnreadable)
{
    const std::vector<MountRecord> table = {
        mount("/"), mount("/media/ann/b"), mount("/mnt/B"), mount("/media/ann/VM"),
        mount("/media/ann/unreadable"), mount("/mnt/a"), mount("/sys", "sysfs"),
    };
    const std::vector<Volume> volumes = VolumeList::mounted(table, kAnn, fakeCapacity);
    EXPECT_EQ(names(volumes), (std::vector<std::string>{"B", "a", "b"}));
    EXPECT_EQ(volumes[0], (Volume{"B", "/mnt/B", 6000, 100}));
}

TEST(VolumeList, HungProbeIsLeftBehindAndListedAsNotResponding)
{
    const std::vector<MountRecord> table = {mount("/mnt/slow"), mount("/mnt/quick"), mount("/mnt/dead")};
    const auto start = std::chrono::steady_clock::now();
    const std::vector<Volume> volumes = VolumeList::mounted(table, kAnn, [](const std::string& point) {
        if (point.ends_with("dead")) // the watchdog's answer for a drive known to hang
            return MountAnswer<MountCapacity>{std::nullopt, MountState::NotResponding};
        return MountAnswer<MountCapacity>{fakeCapacity(point)};
    });
    // Returned without waiting for the 20 s probe (the bound is loose on purpose).
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    EXPECT_EQ(volumes, (std::vector<Volume>{{"dead", "/mnt/dead", 0, 0, false},
                                            {"quick", "/mnt/quick", 10000, 100, true},
                                            {"slow", "/mnt/slow", 0, 0, false}}));
}

TEST(VolumeList, ContainingVolumeIsTheDeepestMountAbove)
{
    const std::vector<std::string> points = {"/media/ann/usb", "/media/ann/usb/inner", "/mnt/data"};
    const struct {
        const char* path;
        const char* expected; // nullptr: on the system volume
    } cases[] = {
        {"/media/ann/usb", "/media/ann/usb"},
        {"/media/ann/usb/x/y", "/media/ann/usb"},
        {"/media/ann/usb/inner/z", "/media/ann/usb/inner"},
        {"/media/ann/usbx", nullptr},
        {"/mnt/data/", "/mnt/data"},
        {"/", nullptr},
    };
    for (const auto& c : cases) {
        const std::optional<std::string> found = volumeContainingIn(c.path, points);
        EXPECT_EQ(found, c.expected ? std::optional<std::string>(c.expected) : std::nullopt) << c.path;
    }
    EXPECT_EQ(volumeContaining("/"), std::nullopt);
}
