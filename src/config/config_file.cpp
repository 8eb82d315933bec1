#include "config/config_file.h"

#include "config/config_text.h"
#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/sys_calls.h"

#include <cstdlib>

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

bool configWrite(const std::string& path, std::string_view text)
{
    return fileWriteAtomic(path, text, ParentDirs::Create);
}
