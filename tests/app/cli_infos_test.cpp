#include "app/cli_infos.h"

#include "config/config_file.h"
#include "config/settings_file.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

struct InfosRun {
    int status;
    std::string text;
};

InfosRun infos(const Args& args)
{
    CliOut out;
    const int status = CLIInfos::run(args, out);
    return {status, out.text()};
}

// Identifies one version of the settings file (an atomic write replaces the inode).
std::optional<std::pair<ino_t, int64_t>> settingsVersion()
{
    struct stat st;
    if (::stat(settingsPath().c_str(), &st) != 0)
        return std::nullopt;
    return std::make_pair(st.st_ino, int64_t(st.st_mtim.tv_nsec));
}

const char* const kAllOn = "on   drive-space   Drive Space\n"
                           "on   file-size     File Sizes\n"
                           "on   folder-size   Folder Sizes\n";

} // namespace

TEST(CLIInfos, ErrorsExitWithOneAndLeaveTheSettingsAlone)
{
    const std::string usage = "Usage: brondel infos [on|off <key>]\n";
    const std::pair<Args, std::string> cases[] = {
        {{"on", "nothing"}, "Unknown info module: nothing  (see: brondel infos)\n"},
        {{"off", ""}, "Unknown info module:   (see: brondel infos)\n"},
        {{"on", "File-Size"}, "Unknown info module: File-Size  (see: brondel infos)\n"},
        {{"on"}, usage},
        {{"maybe", "file-size"}, usage},
        {{"off", "file-size", "extra"}, usage},
    };
    const auto before = settingsVersion();
    for (const auto& [args, text] : cases) {
        const InfosRun run = infos(args);
        EXPECT_EQ(run.status, 1) << text;
        EXPECT_EQ(run.text, text);
    }
    EXPECT_EQ(settingsVersion(), before);
    EXPECT_EQ(Settings::current().infoOn.size(), 0u);
}

TEST(CLIInfos, ListsAndSwitchesModules)
{
    EXPECT_EQ(infos({}).text, kAllOn);
    const InfosRun off = infos({"off", "folder-size"});
    EXPECT_EQ(off.status, 0);
    EXPECT_EQ(off.text, "on   drive-space   Drive Space\n"
                        "on   file-size     File Sizes\n"
                        "off  folder-size   Folder Sizes\n");
    EXPECT_EQ(settingsLoad().infoOn, (std::map<std::string, bool>{{"folder-size", false}}));
    EXPECT_EQ(infos({"on", "folder-size"}).text, kAllOn);
    EXPECT_EQ(settingsLoad().infoOn, (std::map<std::string, bool>{{"folder-size", true}}));
}

TEST(CLIInfos, TheListingShowsFolderSizesUntilSwitchedOff)
{
    TempTree t, home;
    t.sized("sub/inner/f", 1536);
    t.file("f.txt", "12345");
    const std::string env = "HOME='" + home.root() + "' ";
    const std::string bin = "'" + testBrondel() + "' ";
    std::string out, err;

    EXPECT_EQ(testRun(env + bin + "list '" + t.root() + "'", &out, &err), 0);
    EXPECT_EQ(out, "dir   1.5 KB  sub    \n"
                   "file  5 B     f.txt  \n");
    EXPECT_EQ(testRun(env + bin + "infos off folder-size", &out, &err), 0);
    EXPECT_EQ(testRun(env + bin + "list '" + t.root() + "'", &out, &err), 0);
    EXPECT_EQ(out, "dir   --   sub    \n"
                   "file  5 B  f.txt  \n");
    EXPECT_EQ(testRun(env + bin + "infos on nothing", &out, &err), 1);
    EXPECT_EQ(err, "");
}
