#pragma once
// Files on the clipboard and in drags, in the forms other file managers exchange: a URI
// list, the GNOME form ("copy" or "cut", then the URIs), the KDE cut mark and the paths
// as plain text. Paths are bytes: a name that is not valid UTF-8 travels percent-encoded
// in the URIs and comes back unchanged.

#include <QtCore/QMimeData>

#include <optional>
#include <string>
#include <vector>

enum class ClipboardIntent { Copy, Cut };

struct ClipboardFiles {
    std::vector<std::string> paths;
    ClipboardIntent intent = ClipboardIntent::Copy;
};

// `path` as a file URL, every byte that is not a plain URL character percent-encoded.
std::string fileClipboardUrl(const std::string& path);

// The local path of a file URL ("file:///x", "file://localhost/x"), or nothing.
std::optional<std::string> fileClipboardPathOfUrl(std::string_view url);

// Every form, for `paths` copied or cut.
QMimeData* fileClipboardData(const std::vector<std::string>& paths, ClipboardIntent intent);

// The files a clipboard or a drop holds, in whichever form it came (GNOME, then the URI
// list with KDE's cut mark, then absolute paths as plain text), or nothing.
std::optional<ClipboardFiles> fileClipboardRead(const QMimeData& data);
