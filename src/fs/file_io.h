#pragma once
// Whole-file reads and atomic whole-file writes, through the system-call seam.

#include <optional>
#include <string>
#include <string_view>

// The whole content of a regular file, or nothing when it cannot be read.
std::optional<std::string> fileReadAll(const std::string& path);

// Creates every missing directory of `dir` (like mkdir -p). False when it does not exist
// afterwards.
bool fileMakeDirs(const std::string& dir);

enum class ParentDirs { Create, Keep };

// Writes `text` to a fresh temporary file beside `path`, flushes it to the disk and
// renames it over `path`, so a reader sees the old file or the new one, never a torn
// or empty one. On failure the old file is untouched and the temporary is removed.
bool fileWriteAtomic(const std::string& path, std::string_view text, ParentDirs parents = ParentDirs::Create);

// The first half of fileWriteAtomic: writes `text` to a fresh temporary file beside
// `path` and flushes it to the disk. Returns the temporary's path, for the caller to
// link or rename into place; on failure nothing is left behind and errno tells why.
std::optional<std::string> fileWriteTemp(const std::string& path, std::string_view text);

// The path without its last component ("" for a bare name, "/" for "/x").
std::string pathParent(const std::string& path);

// The last path component, ignoring trailing slashes ("/" for "/").
std::string pathLastComponent(const std::string& path);
