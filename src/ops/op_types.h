#pragma once
// The plain records of file operations: what a job is asked to do, how far it got, the
// questions it asks and how it ended. Paths and names are bytes (std::string) from end
// to end, so a name that is not valid UTF-8 survives every step unchanged.

#include <cstdint>
#include <string>
#include <vector>

using OpJobId = uint64_t;

// Delete removes for good: it records nothing to undo, so the undo stack never holds it.
enum class OpKind { Copy, Move, Rename, NewFolder, Trash, Restore, Delete };

// What a job does when an item fails: asks (Retry, Skip or Cancel), or skips the item
// without asking; either way a skipped item is listed in the result.
enum class OpOnError { Ask, Skip };

struct OpRequest {
    OpKind kind = OpKind::Copy;
    // Copy, Move, Trash, Delete: the items; Restore: items inside the Trash's files/
    // folder; Rename: the one item renamed.
    std::vector<std::string> sources;
    // Copy, Move: the destination folder; NewFolder: the folder the new one goes in.
    std::string targetDir;
    // Rename: the item's new name (one component); NewFolder: the new folder's name, or
    // none for the first free "untitled folder", "untitled folder 2", ...
    std::string name;
    OpOnError onError = OpOnError::Ask;
};

// A snapshot of a running job. Totals grow while the job is still counting its sources.
struct OpProgress {
    uint64_t bytesDone = 0;
    uint64_t bytesTotal = 0;
    uint64_t itemsDone = 0;
    uint64_t itemsTotal = 0;
    double bytesPerSecond = 0;  // over the last few seconds
    int64_t secondsLeft = -1;   // -1: not known yet
    std::string currentItem;    // the source path being worked on
    bool counting = false;      // still adding up the totals
    bool paused = false;
};

// What to do about an item whose name is already taken in the destination.
enum class ConflictChoice {
    Replace,  // the existing item goes to the Trash, then the new one takes its place
    Skip,     // leave both as they are
    KeepBoth, // the new one gets a free name: "name (2).ext", "name (3).ext", ...
    Merge,    // folders only: copy into the existing folder, asking again for its items
    Cancel,   // stop the whole job
};
enum class ConflictScope { ThisItem, AllItems };

struct OpConflictAnswer {
    ConflictChoice choice = ConflictChoice::Skip;
    ConflictScope scope = ConflictScope::ThisItem;
};

// A question about a name clash. Nothing at `target` is touched before it is answered.
struct OpConflict {
    uint64_t questionId = 0;
    std::string source;
    std::string target;
    bool sourceIsDir = false;
    bool targetIsDir = false;
    int64_t sourceSize = 0;
    int64_t targetSize = 0;
    int64_t sourceMtime = 0; // seconds since the epoch
    int64_t targetMtime = 0;
};

// What to do about an item that failed.
enum class ErrorChoice { Retry, Skip, Cancel };

// A question about a failed item: `error` is the errno, `path` the item it concerns.
struct OpError {
    uint64_t questionId = 0;
    std::string path;
    int error = 0;
};

enum class OpStatus {
    Done,      // every item done (some may have been skipped on request)
    Cancelled, // stopped on request; what was finished stays, nothing half-made does
    Failed,    // could not start (no such destination, a target inside its source, ...)
};

// An item left as it was after it failed: `error` is the errno.
struct OpItemError {
    std::string path;
    int error = 0;
    bool operator==(const OpItemError&) const = default;
};

struct OpResult {
    OpStatus status = OpStatus::Done;
    int error = 0;                     // why it failed, when it did
    std::vector<std::string> created;  // the top-level items made (copies, moved items, the new folder)
    uint64_t skipped = 0;              // items skipped by conflict or error answers
    std::vector<OpItemError> failed;   // the items skipped after an error, in order
};

// How an undo or a redo ended.
enum class UndoOutcome {
    Done,
    Nothing,      // the stack was empty
    CannotApply,  // the files changed since (moved, edited, gone): nothing was changed
    Failed,       // a system call failed part way
};
