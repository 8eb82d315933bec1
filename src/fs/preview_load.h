#pragma once
// The file side of the Space-bar preview: what kind of preview an item gets, and its
// first bytes read without ever waiting on something that is not a regular file or
// reading more than asked. Decoding text is pure (bytes in, text out). The windows
// that show the result live in the GUI.

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <sys/types.h>

enum class PreviewKind { Text, Image, Pdf, Audio, Video, Folder, Other };

// Text shows its first megabyte; an image or a PDF is read whole up to 64 MB.
inline constexpr size_t kPreviewTextCap = size_t(1) << 20;
inline constexpr size_t kPreviewDocumentCap = size_t(64) << 20;
// Enough of a file's start to tell its type by content.
inline constexpr size_t kPreviewSniffBytes = 4096;

// The first bytes of a file, or why not: EINVAL for anything but a regular file (a
// FIFO, a device, a socket; never read), else the errno of open or read.
struct PreviewHead {
    std::string bytes;
    bool truncated = false; // the file holds more than was read
    int error = 0;
};

// What an item is, for its preview: the errno of its stat, or its mode and size (a link
// followed).
struct PreviewNode {
    int error = 0;
    mode_t mode = 0;
    int64_t size = 0;
};
PreviewNode previewNodeOf(const std::string& path);

// The number of entries in the folder `path`, or -1 when it cannot be read.
int64_t previewFolderCount(const std::string& path);

// Reads at most `cap` bytes from the start of the regular file `path`, through the
// system-call seam. The open never blocks (O_NONBLOCK), so a FIFO with no writer is
// refused instead of hanging.
PreviewHead previewReadHead(const std::string& path, size_t cap);

// The preview kind of a MIME type name (and its ancestors, `parents`, as the MIME
// database gives them): images, PDF, audio, video, anything inheriting text/plain.
PreviewKind previewKindOfType(std::string_view mime, const QStringList& parents);

// The preview kind of the item called `name` whose first bytes are `head`: by name
// and content, as the MIME database matches them (no disk access).
PreviewKind previewKindFor(const std::string& name, std::string_view head);

enum class PreviewEncoding { Utf8, Utf16LE, Utf16BE, Latin1 };

struct PreviewText {
    QString text;
    PreviewEncoding encoding = PreviewEncoding::Utf8;
};

// Decodes the start of a text file: a UTF-16 byte-order mark means UTF-16 (either
// order), valid UTF-8 (a UTF-8 mark skipped, a character cut by the read cap dropped)
// means UTF-8, anything else is Latin-1 with control characters other than tab, line
// feed, carriage return and form feed shown as U+FFFD.
PreviewText previewTextDecode(std::string_view bytes);
