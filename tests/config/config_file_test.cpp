// configRewrite: what a rewrite does to a configuration file that was not read cleanly.

#include "cards/card_config.h"
#include "config/config_file.h"
#include "config/pinned_file.h"
#include "config/settings_file.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <functional>
#include <regex>
#include <sys/stat.h>

namespace {

// The backups of `name` in `dir`.
std::vector<std::string> backupsOf(const std::string& dir, const std::string& name)
{
    std::vector<std::string> found;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (const dirent* e = ::readdir(d))
            if (std::string_view(e->d_name).starts_with(name + ".orig-"))
                found.push_back(e->d_name);
        ::closedir(d);
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string stamp(std::time_t when)
{
    struct tm local;
    char text[32];
    ::localtime_r(&when, &local);
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
    return text;
}

// Every configuration file of the tree, each under its override.
class ConfigRewriteTest : public ::testing::Test {
protected:
    ConfigRewriteTest()
    {
        ::setenv("BRONDEL_SETTINGS", m_tree.path("conf/settings.toml").c_str(), 1);
        ::setenv("BRONDEL_PINNED", m_tree.path("conf/pinned.toml").c_str(), 1);
        configNoticesTake();
    }
    ~ConfigRewriteTest() override
    {
        ::unsetenv("BRONDEL_SETTINGS");
        ::unsetenv("BRONDEL_PINNED");
    }
    TempTree m_tree;
};

void turnInfoOff() // what `brondel infos off file-size` does
{
    BrondelSettings before = settingsLoad(), after = before;
    after.infoOn["file-size"] = false;
    settingsUpdate(before, after);
}

void setCardLayout()
{
    CardConfig config = cardConfigLoad("downloads", "files");
    cardConfigSet(config, "layout", "grid");
    cardConfigSave("downloads", config);
}

void pinSomething() { pinnedAdd("/srv/new", "Favorites"); }

struct LossyCase {
    const char* name;
    std::string old;
    std::function<void()> edit;
};

const LossyCase kLossy[] = {
    {"settings.toml", "show_hidden = true\nsort_by = \"size\"\ndrives_title = \"Disks \xff\"\n", turnInfoOff},
    {"settings.toml", "show_hidden = true\nshow_hiden = true\n", turnInfoOff},      // unknown key
    {"cards/downloads.toml", "group = \"kind\"\nicon_size = big\n", setCardLayout}, // number that does not parse
    {"cards/downloads.toml", "group = \"kind\"\n\xfe\n", setCardLayout},
    {"pinned.toml",
        "# mine\n\n[[section]]\ntitle = \"Work\"\npaths = [\n  \"/w\",\n]\n\n[[section]\ntitle = \"Play\"\npaths = [\n"
        "  \"/p\",\n]\n",
        pinSomething}, // the mistyped line merges Play into Work
    {"pinned.toml", "\n[[section]]\ntitle = \"Work\npaths = [\n  \"/w\",\n]\n", pinSomething}, // unclosed title
};

} // namespace

TEST_F(ConfigRewriteTest, LossyFileIsKeptOnceBeforeItsFirstRewrite)
{
    for (const LossyCase& c : kLossy) {
        TempTree tree;
        ::setenv("BRONDEL_SETTINGS", tree.path("conf/settings.toml").c_str(), 1);
        ::setenv("BRONDEL_PINNED", tree.path("conf/pinned.toml").c_str(), 1);
        const std::string path = tree.file(std::string("conf/") + c.name, c.old);
        const std::string dir = pathParent(path), name = pathLastComponent(path);
        c.edit();
        const std::vector<std::string> backups = backupsOf(dir, name);
        ASSERT_EQ(backups.size(), 1u) << c.old;
        EXPECT_TRUE(std::regex_match(backups[0], std::regex(std::regex_replace(name, std::regex("\\."), "\\.")
                                                     + "\\.orig-20[0-9]{6}-[0-9]{6}")))
            << backups[0];
        EXPECT_EQ(fileReadAll(dir + "/" + backups[0]), c.old);
        EXPECT_NE(fileReadAll(path), c.old) << "the rewrite itself still happens";
        EXPECT_EQ(configNoticesTake(), std::vector<std::string>{name + " could not be read cleanly; its old content "
                                                                       "was kept as " + backups[0]});

        c.edit(); // the file is clean now: no second backup, no notice
        EXPECT_EQ(backupsOf(dir, name), backups) << c.old;
        EXPECT_TRUE(configNoticesTake().empty());
    }
}

TEST_F(ConfigRewriteTest, CleanFilesAndBytesAlreadyKeptMakeNoBackup)
{
    const std::string path = m_tree.path("conf/settings.toml");
    BrondelSettings s;
    s.showHidden = true;
    ASSERT_TRUE(settingsSave(s));
    turnInfoOff();
    EXPECT_TRUE(backupsOf(pathParent(path), "settings.toml").empty());

    // The same lossy bytes again (a hand edit repeated): the earlier backup holds them.
    const std::string lossy = "show_hidden = TRUE\n";
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(fileWriteAtomic(path, lossy));
        turnInfoOff();
    }
    EXPECT_EQ(backupsOf(pathParent(path), "settings.toml").size(), 1u);
}

TEST_F(ConfigRewriteTest, AnEarlierBackupIsNeverOverwritten)
{
    const std::string path = m_tree.file("conf/settings.toml", "show_hidden = yes\n");
    const std::time_t now = std::time(nullptr);
    std::vector<std::string> earlier;
    for (std::time_t t = now; t < now + 3; ++t)
        earlier.push_back(m_tree.file("conf/settings.toml.orig-" + stamp(t), "earlier " + stamp(t)));
    turnInfoOff();
    for (const std::string& backup : earlier)
        EXPECT_EQ(fileReadAll(backup), "earlier " + pathLastComponent(backup).substr(19)) << backup;
    const std::vector<std::string> backups = backupsOf(pathParent(path), "settings.toml");
    ASSERT_EQ(backups.size(), 4u);
    size_t kept = 0;
    for (const std::string& backup : backups)
        kept += fileReadAll(m_tree.path("conf/" + backup)) == "show_hidden = yes\n";
    EXPECT_EQ(kept, 1u);
    EXPECT_TRUE(std::find_if(backups.begin(), backups.end(), [](const std::string& b) { return b.ends_with("-2"); })
        != backups.end());
}

namespace {
std::string g_denied;
int deniedOpen(const char* path, int flags, mode_t mode)
{
    if (path == g_denied) {
        errno = EACCES;
        return -1;
    }
    return sysCallsReal().open(path, flags, mode);
}
} // namespace

TEST_F(ConfigRewriteTest, UnreadableFileIsLeftAloneAndTheEditFails)
{
    const std::string settings = m_tree.file("conf/settings.toml", "show_hidden = true\nsort_by = \"size\"\n");
    const std::string pinned = m_tree.file("conf/pinned.toml", "# mine\n\n[[section]]\ntitle = \"Work\"\npaths = [\n  \"/w\",\n]\n");
    m_tree.chmod("conf/settings.toml", 0);
    m_tree.chmod("conf/pinned.toml", 0);
    SysCalls calls = sysCallsReal();
    calls.open = deniedOpen; // root reads mode 000 anyway
    SysCallsOverride seam(calls);

    g_denied = settings;
    turnInfoOff();
    g_denied = pinned;
    EXPECT_FALSE(pinnedWrite("# x\n", {}));
    pinSomething();
    g_denied.clear();
    ::chmod(settings.c_str(), 0644);
    ::chmod(pinned.c_str(), 0644);
    EXPECT_EQ(fileReadAll(settings), "show_hidden = true\nsort_by = \"size\"\n");
    EXPECT_EQ(fileReadAll(pinned), "# mine\n\n[[section]]\ntitle = \"Work\"\npaths = [\n  \"/w\",\n]\n");
    const std::string refusedSettings =
        "settings.toml could not be read (Permission denied), so it was left as it is and the change was not saved.";
    const std::string refusedPinned =
        "pinned.toml could not be read (Permission denied), so it was left as it is and the change was not saved.";
    EXPECT_EQ(configNoticesTake(), (std::vector<std::string>{refusedSettings, refusedPinned, refusedPinned}));
    EXPECT_TRUE(backupsOf(m_tree.path("conf"), "settings.toml").empty());
}

TEST_F(ConfigRewriteTest, FifoSettingsReadAsDefaultsAndAreNotReplaced)
{
    const std::string path = m_tree.path("conf/settings.toml");
    m_tree.dir("conf");
    ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0);
    EXPECT_EQ(settingsLoad(), BrondelSettings{}); // returns at once instead of waiting for a writer
    turnInfoOff();
    struct stat st;
    ASSERT_EQ(::lstat(path.c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    EXPECT_EQ(configNoticesTake(), std::vector<std::string>{"settings.toml could not be read (it is not a regular "
                                                            "file), so it was left as it is and the change was not saved."});
}
