// Installing into a prefix: the executable finds its private libraries from wherever the
// tree ends up, and the desktop files pass the desktop's own validators.

#include "support/temp_tree.h"
#include "support/test_env.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string readAll(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool exists(const std::string& path)
{
    return std::ifstream(path).good();
}

bool haveTool(const std::string& name)
{
    return testRun("command -v " + name + " >/dev/null") == 0;
}

// Width and height from a PNG's header chunk; zero when it is not a PNG.
std::pair<uint32_t, uint32_t> pngSize(const std::string& path)
{
    const std::string data = readAll(path);
    if (data.size() < 24 || data.compare(1, 3, "PNG") != 0)
        return {0, 0};
    auto be32 = [&](size_t at) {
        return uint32_t(uint8_t(data[at])) << 24 | uint32_t(uint8_t(data[at + 1])) << 16
            | uint32_t(uint8_t(data[at + 2])) << 8 | uint32_t(uint8_t(data[at + 3]));
    };
    return {be32(16), be32(20)};
}

// One install shared by every case (copying the tree is the slow part).
class Install : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_tree = new TempTree;
        s_prefix = s_tree->path("prefix");
        std::string out, err;
        s_status = testRun("'" CMAKE_COMMAND "' --install '" BRONDEL_BUILD_DIR "' --prefix '" + s_prefix + "'", &out, &err);
        s_log = out + err;
    }
    static void TearDownTestSuite()
    {
        delete s_tree;
        s_tree = nullptr;
    }
    void SetUp() override { ASSERT_EQ(s_status, 0) << s_log; }

    static std::string share(const std::string& rel) { return s_prefix + "/share/" + rel; }

    static inline TempTree* s_tree = nullptr;
    static inline std::string s_prefix;
    static inline int s_status = -1;
    static inline std::string s_log;
};

TEST_F(Install, PutsEveryFileInItsPlace)
{
    for (const char* rel : {"bin/brondel", "lib/brondel/libbrondel_core.so", "lib/brondel/libbrondel_gui.so",
                            "share/applications/brondel.desktop", "share/metainfo/com.larkspine.brondel.metainfo.xml",
                            "share/icons/hicolor/scalable/apps/brondel.svg",
                            "share/dbus-1/services/org.freedesktop.FileManager1.service"})
        EXPECT_TRUE(exists(s_prefix + "/" + rel)) << rel;
    // Nothing of ours lands in the shared library folder, where it could shadow others.
    EXPECT_FALSE(exists(s_prefix + "/lib/libbrondel_core.so"));
    for (uint32_t size : {16u, 22u, 24u, 32u, 48u, 64u, 128u, 256u, 512u}) {
        const std::string dim = std::to_string(size) + "x" + std::to_string(size);
        EXPECT_EQ(pngSize(share("icons/hicolor/" + dim + "/apps/brondel.png")), std::make_pair(size, size)) << dim;
    }
}

TEST_F(Install, DesktopEntryAndMetainfoValidate)
{
    const std::string entry = readAll(share("applications/brondel.desktop"));
    for (const char* line : {"\nMimeType=inode/directory;\n", "\nExec=brondel %U\n", "\nIcon=brondel\n",
                             "\nActions=new-window;\n", "[Desktop Action new-window]\nName=New Window\n"})
        EXPECT_NE(entry.find(line), std::string::npos) << line;
    std::string out;
    if (!haveTool("desktop-file-validate") || !haveTool("appstreamcli"))
        GTEST_SKIP() << "desktop-file-utils or appstream is not installed";
    EXPECT_EQ(testRun("desktop-file-validate '" + share("applications/brondel.desktop") + "' 2>&1", &out), 0) << out;
    EXPECT_EQ(out.find("error"), std::string::npos) << out;
    EXPECT_EQ(testRun("appstreamcli validate --no-net '" + share("metainfo/com.larkspine.brondel.metainfo.xml")
                          + "' 2>&1",
                      &out),
              0)
        << out;
}

TEST_F(Install, ServiceFileStartsTheInstalledBinary)
{
    const std::string service = readAll(share("dbus-1/services/org.freedesktop.FileManager1.service"));
    EXPECT_NE(service.find("\nName=org.freedesktop.FileManager1\n"), std::string::npos) << service;
    EXPECT_NE(service.find("\nExec=" + s_prefix + "/bin/brondel --service\n"), std::string::npos) << service;
}

// The tree is moved after installing: only $ORIGIN-relative look-ups still find the
// libraries, for the command line (linked) and for the interface (loaded on demand).
TEST_F(Install, RunsFromAMovedPrefix)
{
    const std::string moved = s_tree->path("moved");
    ASSERT_EQ(testRun("cp -a '" + s_prefix + "' '" + moved + "'"), 0);
    const std::string bin = "env -u LD_LIBRARY_PATH '" + moved + "/bin/brondel'";
    std::string out, err;
    EXPECT_EQ(testRun("cd / && " + bin + " --help", &out, &err), 0) << err;
    EXPECT_NE(out.find("Usage: brondel"), std::string::npos) << out;
    EXPECT_EQ(err, "");
    // A window run: the interface library comes from lib/brondel/ beside the moved bin/.
    const std::string shot = s_tree->path("shot.png");
    EXPECT_EQ(testRun("cd / && env -u DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORM=offscreen BRONDEL_BACKGROUND=1 "
                          "BRONDEL_SCREENSHOT='" + shot + "' " + bin + " --new-process '" + s_tree->root() + "'",
                      &out, &err),
              0)
        << err;
    EXPECT_GT(pngSize(shot).first, 0u);
}

// A call to the file-manager service on a bus that finds the installed activation file
// starts the installed binary, which then opens the window asked for.
TEST_F(Install, IsStartedByTheBus)
{
    if (!haveTool("dbus-run-session") || !haveTool("gdbus"))
        GTEST_SKIP() << "dbus or gdbus is not installed";
    const std::string folder = s_tree->dir("asked-for");
    const std::string shot = s_tree->path("activated.png");
    // The service grabs its window once it has one and quits; the session ends after
    // (the wait is bounded by the timeout around the session).
    const std::string script = s_tree->file(
        "ask.sh", "gdbus call --session --dest org.freedesktop.FileManager1 --object-path "
                  "/org/freedesktop/FileManager1 --method org.freedesktop.FileManager1.ShowFolders \"['file://"
            + folder + "']\" '' >/dev/null || exit 1\nuntil [ -s '" + shot + "' ]; do sleep 0.1; done\n");
    std::string out, err;
    EXPECT_EQ(testRun("env XDG_DATA_DIRS='" + s_prefix + "/share:/usr/share' QT_QPA_PLATFORM=offscreen "
                          "BRONDEL_SCREENSHOT='" + shot + "' timeout 60 dbus-run-session -- sh '" + script + "'",
                      &out, &err),
              0)
        << out << err;
    EXPECT_GT(pngSize(shot).first, 0u) << err;
}

TEST_F(Install, BecomesTheDefaultForFolders)
{
    if (!haveTool("xdg-mime"))
        GTEST_SKIP() << "xdg-utils is not installed";
    const std::string env = "env XDG_DATA_HOME='" + s_prefix + "/share' XDG_DATA_DIRS='" + s_prefix
        + "/share' XDG_CONFIG_HOME='" + s_tree->dir("config") + "' XDG_CURRENT_DESKTOP= DE= ";
    ASSERT_EQ(testRun(env + "xdg-mime default brondel.desktop inode/directory"), 0);
    std::string out;
    EXPECT_EQ(testRun(env + "xdg-mime query default inode/directory", &out), 0);
    EXPECT_EQ(out, "brondel.desktop\n");
    // xdg-open of a folder now starts the installed Brondel (its window grabbed and closed).
    const std::string shot = s_tree->path("xdg-open.png");
    EXPECT_EQ(testRun(env + "PATH='" + s_prefix + "/bin':\"$PATH\" DISPLAY=:99 QT_QPA_PLATFORM=offscreen "
                          "BRONDEL_SCREENSHOT='" + shot + "' timeout 20 env -u DBUS_SESSION_BUS_ADDRESS xdg-open '"
                          + s_tree->dir("config") + "'"),
              0);
    EXPECT_GT(pngSize(shot).first, 0u);
}

} // namespace
