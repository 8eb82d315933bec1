#include "fs/mount_table.h"

#include <gtest/gtest.h>

#include <sys/sysmacros.h>

TEST(MountTable, ParsesFieldsAroundOptionalFieldsAndSkipsJunk)
{
    const std::string text =
        "27 1 254:0 / / rw,relatime - ext4 /dev/vda rw,discard\n"
        "\n"
        "garbage line\n"
        // optional fields before the separator; escaped space, tab, backslash
        "95 27 8:17 / /media/ann/My\\040Disk rw,nosuid shared:52 master:3 - vfat /dev/sdb1 rw,fmask=0022\n"
        "96 27 8:18 / /mnt/a\\011b\\134c rw - ext4 /dev/sdb2 rw\n"
        "97 27 0:50 / relative/point rw - ext4 /dev/sdb3 rw\n"     // not absolute
        "98 27 0:51 / /mnt/no-separator rw shared:1 ext4 /dev/sdb4 rw\n"
        "99 27 0:52 / /mnt/short rw - ext4\n"                       // no source
        "x 27 0:53 / /mnt/bad-id rw - ext4 /dev/sdb5 rw\n"
        "100 27 0:54 / /mnt/\\777odd\\04 rw - fuse.sshfs ann@host:/srv\\040x rw\n" // not escapes
        "101 27 0:55 / /mnt/last rw - nfs4 srv:/e";                  // no super options, no newline
    const std::vector<MountRecord> expected = {
        {"/", "ext4", "/dev/vda", "rw,relatime", makedev(254, 0)},
        {"/media/ann/My Disk", "vfat", "/dev/sdb1", "rw,nosuid", makedev(8, 17)},
        {"/mnt/a\tb\\c", "ext4", "/dev/sdb2", "rw", makedev(8, 18)},
        {"/mnt/\\777odd\\04", "fuse.sshfs", "ann@host:/srv x", "rw", makedev(0, 54)},
        {"/mnt/last", "nfs4", "srv:/e", "rw", makedev(0, 55)},
    };
    EXPECT_EQ(mountTableParse(text), expected);
}
