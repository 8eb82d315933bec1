#pragma once
// Where the configuration files live and how they are read and written. The readers
// elsewhere take the text this returns; nothing here interprets content.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
// otherwise nothing. Only a regular file is read (config files are never FIFOs,
// devices or folders), and at most kFileReadCap bytes of it.
std::optional<std::string> configRead(const std::string& path, ConfigBytes bytes = ConfigBytes::Utf8Only);

// Whether something exists at `path` (a final symbolic link is followed).
bool configExists(const std::string& path);

// Tells whether a file's own reader drops something of `text` (a malformed, unknown or
// repeated line), so that rewriting the file from what was read would lose it.
using ConfigLossCheck = bool (*)(std::string_view text);

// How a configuration file reads as it stands on the disk.
struct ConfigFormat {
    ConfigBytes bytes = ConfigBytes::Utf8Only;
    ConfigLossCheck lossy = nullptr; // null: every line that can be read is understood
};

enum class ConfigWriteStatus { Written, Failed, Refused };

struct ConfigWriteResult {
    ConfigWriteStatus status = ConfigWriteStatus::Failed;
    std::string backup; // the copy of the old bytes made before this write, if any
};

// Replaces the file at `path` with `text`, atomically, creating its folders. The one way
// every configuration file is written. The file as it stands decides first:
// - missing, or read cleanly: it is simply replaced;
// - read only in part (not UTF-8 where it must be, a line its reader drops): its old
//   bytes are first kept beside it as "<name>.orig-<YYYYMMDD-HHMMSS>" (-2, -3, ... when
//   that name is taken; nothing when a backup already holds the same bytes), and a
//   notice says so;
// - not readable at all (no permission, not a regular file, too large): its bytes cannot
//   be kept, so it is not touched; the write is refused with a notice.
ConfigWriteResult configRewrite(const std::string& path, std::string_view text, ConfigFormat format);

// Messages for the user about configuration files, collected on the thread that wrote
// (the GUI shows them after an edit; the command line prints its usual output instead).
void configNotice(std::string text);
// The notices collected on this thread since the last call, oldest first.
std::vector<std::string> configNoticesTake();
