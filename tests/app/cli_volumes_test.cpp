#include "app/cli_volumes.h"

#include "fs/volume_list.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

namespace {

std::optional<MountCapacity> capacityOf(const std::string& point)
{
    if (point.ends_with("/b"))
        return MountCapacity{3072, 1024};
    if (point.ends_with("/B"))
        return MountCapacity{1000, 250};
    return MountCapacity{0, 0};
}

} // namespace

TEST(CLIVolumes, NothingMounted)
{
    CliOut out;
    CLIVolumes::print({}, out);
    EXPECT_EQ(out.text(), "No external volumes mounted.\n");
}

TEST(CLIVolumes, TableOfTheVisibleVolumes)
{
    const std::vector<MountRecord> table = {
        {"/", "ext4", "/dev/vda", "rw"},           {"/media/ann/b", "ext4", "/dev/sdb", "rw"},
        {"/media/ann/VM", "ext4", "/dev/sdc", "rw"}, {"/mnt/Update", "ext4", "/dev/sdd", "rw"},
        {"/mnt/B", "vfat", "/dev/sde", "rw"},       {"/mnt/macintosh hd", "hfsplus", "/dev/sdf", "rw"},
    };
    CliOut out;
    CLIVolumes::print(VolumeList::mounted(table, VolumeViewer{"/home/ann", "ann"}, capacityOf), out);
    std::string rule;
    for (int i = 0; i < 12 + 38; ++i)
        rule += "\u2500";
    EXPECT_EQ(out.text(),
              "Name          Used        Free        Total\n" + rule + "\n"
              "B             750 B       250 B       1000 B  (75%)\n"
              "b             2.0 KB      1.0 KB      3.0 KB  (67%)\n"
              "macintosh hd  0 B         0 B         0 B  (0%)\n");
}

TEST(CLIVolumes, CommandPrintsOnlyToStdout)
{
    std::string out, err;
    EXPECT_EQ(testRun(testBrondel() + " volumes", &out, &err), 0);
    EXPECT_FALSE(out.empty());
    EXPECT_EQ(err, "");
}
