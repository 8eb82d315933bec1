#include "support/test_env.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ftw.h>
#include <sstream>
#include <sys/wait.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {
std::string g_home;

int removeEntry(const char* path, const struct stat*, int, struct FTW*)
{
    ::chmod(path, 0700); // folders a test made unreadable
    return ::remove(path);
}

// The temporary home is the test's own scratch space: it goes when the process ends.
void removeHome()
{
    if (!g_home.empty())
        ::nftw(g_home.c_str(), removeEntry, 32, FTW_DEPTH | FTW_PHYS);
}
} // namespace

void testIsolateEnvironment()
{
    if (!g_home.empty())
        return;
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/brondel-test-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    if (!::mkdtemp(buf.data()))
        std::abort();
    g_home = buf.data();
    std::atexit(removeHome);
    ::setenv("HOME", g_home.c_str(), 1);
    for (auto [var, sub] : {std::pair{"XDG_CONFIG_HOME", "/.config"}, {"XDG_DATA_HOME", "/.local/share"},
                            {"XDG_CACHE_HOME", "/.cache"}, {"XDG_STATE_HOME", "/.local/state"}}) {
        ::setenv(var, (g_home + sub).c_str(), 1);
    }
    ::setenv("XDG_DOWNLOAD_DIR", (g_home + "/Downloads").c_str(), 1);
    for (const char* var : {"BRONDEL_SETTINGS", "BRONDEL_PINNED", "BRONDEL_SIDEBAR", "BRONDEL_PALETTE",
                            "BRONDEL_BACKGROUND"})
        ::unsetenv(var);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

const std::string& testHome()
{
    testIsolateEnvironment();
    return g_home;
}

std::string testIsolateApplications()
{
    const std::string system = testHome() + "/system-share";
    const std::string apps = testHome() + "/.local/share/applications";
    for (const std::string& dir : {system, testHome() + "/.local", testHome() + "/.local/share", apps})
        ::mkdir(dir.c_str(), 0700);
    ::symlink("/usr/share/mime", (system + "/mime").c_str());
    ::setenv("XDG_DATA_DIRS", system.c_str(), 1);
    return apps;
}

int testRun(const std::string& command, std::string* out, std::string* err)
{
    std::string errFile = testHome() + "/.stderr-" + std::to_string(::getpid());
    std::string full = "(" + command + ") 2>'" + errFile + "'";
    FILE* pipe = ::popen(full.c_str(), "r");
    if (!pipe)
        return -1;
    std::string text;
    char buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0)
        text.append(buf, n);
    int status = ::pclose(pipe);
    if (out)
        *out = text;
    std::ifstream errIn(errFile, std::ios::binary);
    std::stringstream errText;
    errText << errIn.rdbuf();
    if (err)
        *err = errText.str();
    ::unlink(errFile.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string testBrondel()
{
    const char* bin = std::getenv("BRONDEL_BIN");
    return bin ? bin : "brondel";
}

std::string testSelfPath()
{
    char buf[4096];
    ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, size_t(n)) : "";
}
