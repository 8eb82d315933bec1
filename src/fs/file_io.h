#pragma once
// Whole-file reads and atomic whole-file writes, through the system-call seam.

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

// The largest file read whole. Anything bigger is not one of our small text files.
inline constexpr size_t kFileReadCap = size_t(16) << 20;

// A whole-file read: the bytes, or the errno that prevented it. Besides the errors of
// open and read, EINVAL means "not a regular file" (a FIFO, a device, a socket, a
// folder) and EFBIG "larger than kFileReadCap".
struct FileContent {
    std::optional<std::string> bytes;
    int error = 0;
};

// Reads a regular file whole. The open never blocks (a FIFO with no writer would hang
// forever) and nothing but a regular file of at most kFileReadCap bytes is read.
FileContent fileReadWhole(const std::string& path);

// The whole content of a regular file, or nothing when it cannot be read.
std::optional<std::string> fileReadAll(const std::string& path);

// Creates every missing directory of `dir` (like mkdir -p). False when it does not exist
// afterwards.
bool fileMakeDirs(const std::string& dir);

enum class ParentDirs { Create, Keep };

// The file a write to `path` lands in: `path` itself, or when it is a symbolic link the
// final target of the chain (which need not exist yet). A relative target is taken
// relative to its link's folder.
std::string fileWriteTarget(const std::string& path);

// Writes `text` to a fresh temporary file beside the file `path` names (through a
// symbolic link, beside its target), flushes it to the disk and renames it over that
// file, so a reader sees the old file or the new one, never a torn or empty one. An
// existing file keeps its permission bits; something that is not a regular file (a
// folder, a FIFO, a device) is never replaced. On failure the old file is untouched and
// the temporary is removed. Stale temporaries of killed writers in that folder go first.
bool fileWriteAtomic(const std::string& path, std::string_view text, ParentDirs parents = ParentDirs::Create);

// How fileWriteTemp sets the temporary's permission bits: `Create` makes it with them
// less the umask, as open() does; `Exact` sets exactly them afterwards (to keep an
// existing file's mode).
enum class TempMode { Create, Exact };

// The first half of fileWriteAtomic: writes `text` to a fresh temporary file beside
// `path` with permission bits `mode` and flushes it to the disk. Returns the
// temporary's path, for the caller to link or rename into place; on failure nothing is
// left behind and errno tells why.
std::optional<std::string> fileWriteTemp(const std::string& path, std::string_view text, mode_t mode = 0666,
    TempMode how = TempMode::Create);

// Installs the finished temporary `temp` under the new name `target` without ever
// replacing an existing file there (EEXIST then). A hard link does it in one step, so no
// reader sees a partial file; on a file system without hard links the name is reserved
// empty and the temporary renamed over it. `linkable` remembers which way works; it
// starts true. 0 or an errno; `tempUsed` is set once `temp` itself has become `target`.
int filePlaceNew(const std::string& temp, const std::string& target, bool& linkable, bool& tempUsed);

// A fresh temporary name beside `path` ("<path>.tmp-<pid>-<n>-<stamp>", the name part
// shortened to fit NAME_MAX), which the stale-temp sweep recognises once its writer is
// gone. Nothing is created.
std::string fileTempName(const std::string& path);

// Whether `name` is one of our temporaries ("<anything>.tmp-<pid>-<n>-<stamp>"); the pid
// of its writer when it is.
std::optional<pid_t> fileTempWriter(std::string_view name);

// Whether a temporary with this writer and modification time is left over: its writer
// process is gone, or it is older than a few minutes (no write takes that long).
bool fileTempIsStale(pid_t writer, std::time_t modified, std::time_t now);

// Removes our stale temporaries from `dir`; how many went. Nothing else is touched.
size_t fileRemoveStaleTemps(const std::string& dir);

// Whether `dir` is due for a sweep of leftovers: true at most once a minute per folder
// and process, so a burst of writes into one folder reads its listing once.
bool fileSweepDue(const std::string& dir);

// The path without its last component ("" for a bare name, "/" for "/x").
std::string pathParent(const std::string& path);

// The last path component, ignoring trailing slashes ("/" for "/").
std::string pathLastComponent(const std::string& path);
