#pragma once
// Where the configuration files live and how they are read and written. The readers
// elsewhere take the text this returns; nothing here interprets content.

#include <optional>
#include <string>
#include <string_view>

// "<home>/.brondel" (no trailing slash).
std::string configDir();

// The path of a configuration file: the override variable's value verbatim when the
// variable is set (even to ""), else the home folder with `suffix` appended as text.
// Computed afresh on every call. `overrideVar` may be null for files without one.
std::string configPath(const char* overrideVar, const char* suffix);

std::string settingsPath();    // BRONDEL_SETTINGS or ~/.brondel/settings.toml
std::string pinnedFilePath();  // BRONDEL_PINNED or ~/.brondel/pinned.toml
std::string sidebarFilePath(); // BRONDEL_SIDEBAR or ~/.brondel/sidebar.toml
std::string palettePath();     // BRONDEL_PALETTE or ~/.brondel/palette.toml
std::string recentsPath();     // ~/.brondel/recents.txt
std::string peekOrderPath();   // ~/.brondel/peek-order.toml
std::string cardsDir();        // "cards" beside the settings file ("" when that path is empty)

// Files that hold folder paths (favourites, sidebar, recent folders) must read back any
// name the file system gives, and Linux names are bytes: for them a non-UTF-8 byte is
// kept instead of making the whole file unreadable.
enum class ConfigBytes { Utf8Only, Any };

// The file's text when it can be read whole (and, with Utf8Only, is valid UTF-8);
// otherwise nothing.
std::optional<std::string> configRead(const std::string& path, ConfigBytes bytes = ConfigBytes::Utf8Only);

// Whether something exists at `path` (a final symbolic link is followed).
bool configExists(const std::string& path);

// Creates the parent directories and replaces the file atomically. Errors are absorbed;
// the result only tells tests what happened.
bool configWrite(const std::string& path, std::string_view text);
