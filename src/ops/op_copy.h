#pragma once
// The single-item steps of copying and moving, through the system-call seam: a file's
// bytes, its mode, owner, times and extended attributes, a symbolic link as a link, and
// installing a finished temporary under its real name without replacing anything there.

#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>

// Called after each chunk with the bytes just copied; false stops the copy (ECANCELED).
using OpChunkDone = std::function<bool(uint64_t bytes)>;

// Whether a finished copy is flushed to the disk before it takes its real name: a move
// across devices removes its source afterwards, so the copy must be safe first.
enum class OpDurability { Cached, Synced };

// Copies everything left in `in` to `out` from their current offsets: copy_file_range
// first (a reflink or a server-side copy where the file system can), read and write when
// the kernel cannot copy between these two files. 0 or an errno.
int opCopyData(int in, int out, const OpChunkDone& chunkDone);

// Copies the regular file `source` (whose lstat is `st`) to `target`: written under a
// temporary name beside it, given the source's mode, owner, times and extended attributes,
// and renamed into place only when complete. `target` must not exist (EEXIST otherwise);
// `beforePlace`, when given, runs just before the rename (a replaced item goes to the
// Trash there) and may refuse with an errno. On any failure the temporary is removed and
// nothing is left under `target`. 0 or an errno.
int opCopyRegular(const std::string& source, const struct stat& st, const std::string& target,
                  OpDurability durability, const OpChunkDone& chunkDone,
                  const std::function<int()>& beforePlace = {});

// Recreates the symbolic link `source` at `target` (same text, same times). 0 or an errno.
int opCopySymlink(const std::string& source, const struct stat& st, const std::string& target);

// Gives the folder `target` the mode and times of `st` (a folder's are set after its
// content, which would change its times). Failures are ignored: the content matters.
void opFinishFolder(const std::string& target, const struct stat& st);

// Renames `from` to `to` unless something is at `to` already (EEXIST then), also on file
// systems without an atomic no-replace rename. 0 or an errno (EXDEV across devices).
int opRenameNoReplace(const std::string& from, const std::string& to);

// Flushes the folder `dir` itself to the disk, so that the names just placed in it
// survive a crash. 0 or an errno (a file system that cannot flush folders counts as done).
int opSyncFolder(const std::string& dir);

// `dir` + "/" + `name`.
std::string opJoin(const std::string& dir, const std::string& name);
