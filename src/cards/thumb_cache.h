#pragma once
// The shared thumbnail cache of the freedesktop desktops, as plain rules: where the
// preview of a file lives ($XDG_CACHE_HOME/thumbnails/normal|large/<md5 of its URI>.png),
// when a stored preview still belongs to the file (its Thumb::URI and Thumb::MTime keys
// match), and how one is written so other programs can read it (0600, atomic). Decoding
// and encoding the images is the GUI's; nothing here knows about pixels.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

enum class ThumbSize { Normal, Large }; // 128 and 256 pixels on their longer side

// The folder of that size under the cache ("normal", "large").
std::string_view thumbSizeDir(ThumbSize size);
// The longest edge of a preview of that size.
int thumbSizePixels(ThumbSize size);
// The size whose previews serve icons of `pixels` (device pixels).
ThumbSize thumbSizeFor(double pixels);

// "file://" and the path's bytes percent-encoded (letters, digits, "-._~" and "/" kept).
std::string thumbUri(std::string_view path);
// The lower-case hex md5 of the URI and ".png".
std::string thumbFileName(std::string_view uri);

// The thumbnails folder: $XDG_CACHE_HOME/thumbnails, else ~/.cache/thumbnails.
std::string thumbCacheRoot();
// <root>/<size>/<name>
std::string thumbPath(const std::string& root, ThumbSize size, std::string_view uri);
// <root>/fail/<app>/<name>: the record that `app` could not make a preview.
std::string thumbFailPath(const std::string& root, std::string_view app, std::string_view uri);

// Whether a stored preview with these text keys belongs to the file at `uri` last
// modified at `mtime` (whole seconds): Thumb::MTime must be that number and Thumb::URI,
// when present, that URI.
bool thumbValid(const std::map<std::string, std::string>& keys, std::string_view uri, int64_t mtime);

// The text keys a written preview carries.
std::map<std::string, std::string> thumbKeys(std::string_view uri, int64_t mtime, int64_t size, std::string_view mime);

// What a preview is made from: a regular file's modification time and size, or nothing
// (missing, unreadable, not a regular file). Reads the disk: never on the UI thread.
struct ThumbSource {
    int64_t mtime = 0;
    int64_t size = 0;
};
std::optional<ThumbSource> thumbSourceOf(const std::string& path);

// Writes `png` at `path` with mode 0600 through a temporary beside it and a rename, so
// a reader never sees half a file. Creates missing folders. False on failure,
// nothing left behind.
bool thumbWrite(const std::string& path, std::string_view png);
