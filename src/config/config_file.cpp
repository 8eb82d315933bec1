#include "config/config_file.h"

#include "config/config_text.h"
#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <utility>

std::string configDir() { return homeDir() + "/.brondel"; }

std::string configPath(const char* overrideVar, const char* suffix)
{
    if (overrideVar)
        if (const char* value = std::getenv(overrideVar))
            return value;
    return homeDir() + suffix;
}

std::string settingsPath() { return configPath("BRONDEL_SETTINGS", "/.brondel/settings.toml"); }
std::string pinnedFilePath() { return configPath("BRONDEL_PINNED", "/.brondel/pinned.toml"); }
std::string sidebarFilePath() { return configPath("BRONDEL_SIDEBAR", "/.brondel/sidebar.toml"); }
std::string palettePath() { return configPath("BRONDEL_PALETTE", "/.brondel/palette.toml"); }
std::string recentsPath() { return configPath(nullptr, "/.brondel/recents.txt"); }
std::string peekOrderPath() { return configPath(nullptr, "/.brondel/peek-order.toml"); }
std::string cardsDir()
{
    // The cards live beside the settings file, so BRONDEL_SETTINGS moves them too; with
    // no place for the settings there is none for the cards either.
    if (!std::getenv("BRONDEL_SETTINGS"))
        return homeDir() + "/.brondel/cards";
    const std::string settings = settingsPath();
    if (settings.empty())
        return "";
    const std::string dir = pathParent(settings);
    return dir.empty() ? std::string("cards") : dir + "/cards";
}

std::optional<std::string> configRead(const std::string& path, ConfigBytes bytes)
{
    if (path.empty())
        return std::nullopt;
    auto text = fileReadAll(path);
    if (!text || (bytes == ConfigBytes::Utf8Only && !configIsUtf8(*text)))
        return std::nullopt;
    return text;
}

bool configExists(const std::string& path)
{
    struct stat st;
    return !path.empty() && sysCalls().stat(path.c_str(), &st) == 0;
}

namespace {

thread_local std::vector<std::string> t_notices;

enum class Found { Missing, Clean, Lossy, Unreadable };

struct Standing {
    Found found = Found::Missing;
    std::string bytes;
    int error = 0;
};

Standing inspect(const std::string& path, ConfigFormat format)
{
    FileContent content = fileReadWhole(path);
    if (!content.bytes) {
        const bool missing = content.error == ENOENT || content.error == ENOTDIR;
        return {missing ? Found::Missing : Found::Unreadable, {}, content.error};
    }
    Standing standing{Found::Clean, std::move(*content.bytes), 0};
    if (format.bytes == ConfigBytes::Utf8Only && !configIsUtf8(standing.bytes))
        standing.found = Found::Lossy;
    else if (format.lossy && format.lossy(standing.bytes))
        standing.found = Found::Lossy;
    return standing;
}

std::string describe(int error)
{
    if (error == EINVAL)
        return "it is not a regular file";
    if (error == EFBIG)
        return "it is larger than 16 MiB";
    char buf[256];
    return ::strerror_r(error, buf, sizeof buf);
}

std::string backupStamp(std::time_t now)
{
    struct tm local;
    char text[32] = "00000000-000000";
    if (::localtime_r(&now, &local))
        std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
    return text;
}

// Whether a backup of `target` already holds exactly `bytes`.
bool alreadyKept(const std::string& target, const std::string& bytes)
{
    const std::string dir = pathParent(target);
    const std::string prefix = pathLastComponent(target) + ".orig-";
    DIR* d = ::opendir(dir.empty() ? "." : dir.c_str());
    if (!d)
        return false;
    bool kept = false;
    while (const dirent* entry = kept ? nullptr : ::readdir(d)) {
        std::string_view name = entry->d_name;
        if (name.starts_with(prefix) && !fileTempWriter(name))
            kept = fileReadAll((dir.empty() ? "" : dir + "/") + entry->d_name) == bytes;
    }
    ::closedir(d);
    return kept;
}

// Keeps `bytes` as "<target>.orig-<stamp>", never replacing an existing file. The path
// of the backup, or nothing (errno tells why).
std::optional<std::string> keepBackup(const std::string& target, const std::string& bytes)
{
    std::optional<std::string> temp = fileWriteTemp(target + ".orig", bytes, 0600);
    if (!temp)
        return std::nullopt;
    const std::string base = target + ".orig-" + backupStamp(std::time(nullptr));
    bool linkable = true, tempUsed = false;
    std::optional<std::string> kept;
    int error = EEXIST;
    for (int n = 1; n <= 1000 && error == EEXIST; ++n) {
        std::string candidate = n == 1 ? base : base + "-" + std::to_string(n);
        error = filePlaceNew(*temp, candidate, linkable, tempUsed);
        if (error == 0)
            kept = candidate;
    }
    if (!tempUsed)
        sysCalls().unlink(temp->c_str());
    errno = error;
    return kept;
}

} // namespace

ConfigWriteResult configRewrite(const std::string& path, std::string_view text, ConfigFormat format)
{
    if (path.empty())
        return {};
    const std::string name = pathLastComponent(path);
    Standing standing = inspect(path, format);
    if (standing.found == Found::Unreadable) {
        configNotice(name + " could not be read (" + describe(standing.error)
            + "), so it was left as it is and the change was not saved.");
        return {ConfigWriteStatus::Refused, {}};
    }
    ConfigWriteResult result;
    if (standing.found == Found::Lossy) {
        const std::string target = fileWriteTarget(path);
        if (!alreadyKept(target, standing.bytes)) {
            std::optional<std::string> backup = keepBackup(target, standing.bytes);
            if (!backup) {
                configNotice(name + " could not be read cleanly and its old content could not be kept ("
                    + describe(errno) + "), so it was left as it is and the change was not saved.");
                return {ConfigWriteStatus::Refused, {}};
            }
            result.backup = *backup;
        }
    }
    result.status = fileWriteAtomic(path, text, ParentDirs::Create) ? ConfigWriteStatus::Written
                                                                    : ConfigWriteStatus::Failed;
    if (!result.backup.empty()) {
        const bool beside = pathParent(result.backup) == pathParent(path);
        configNotice(name + " could not be read cleanly; its old content was kept as "
            + (beside ? pathLastComponent(result.backup) : result.backup));
    }
    return result;
}

void configNotice(std::string text)
{
    // A thread that never collects (a background note of a recent folder) keeps only
    // the latest few.
    constexpr size_t kKept = 16;
    if (t_notices.size() >= kKept)
        t_notices.erase(t_notices.begin());
    t_notices.push_back(std::move(text));
}

std::vector<std::string> configNoticesTake()
{
    return std::exchange(t_notices, {});
}
