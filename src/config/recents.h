#pragma once
// Recent folders: the locations windows have shown, most recent first, one absolute
// path per line in recents.txt, bounded by the recentCount setting.

#include "config/brondel_settings.h"

#include <string>
#include <string_view>
#include <vector>

// The non-empty lines of the file's text, as they stand (no trimming, no expansion).
std::vector<std::string> recentsParse(std::string_view text);

// The paths joined with "\n", no line break after the last.
std::string recentsFormat(const std::vector<std::string>& paths);

// The recorded folders that still exist, most recent first.
std::vector<std::string> recentsLoad();

// Moves `path` (exact string) to the front and keeps settings.recentCount entries;
// folders that vanished drop out. Creates the configuration folder when needed. A path
// holding a line break is not noted (it would read back as two).
void recentsNote(const std::string& path, const BrondelSettings& settings);

// Empties the list. Writes nothing when the configuration folder does not exist.
void recentsClear();
