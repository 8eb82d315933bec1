#pragma once
// The one gate for every call that can touch a mounted drive which may stop answering
// (a dead network share, a wedged USB bridge, a FUSE daemon that hangs).
//
// Why a separate process: a thread blocked in a call to a dead FUSE or network file
// system sleeps uninterruptibly; it cannot be killed, and while it exists the process
// cannot end either (the shell waits for the last thread). So the calls to a guarded
// mount run in a small helper process forked for that mount, which only makes raw
// system calls and answers over a socket. The caller waits for the answer with a
// deadline; when it does not come, the helper is abandoned to the kernel, never this
// process, and the caller gets "not responding".
//
// Contract:
// - Guarded mounts are the user's drives (mount points under /media, /mnt, /run/media)
//   and every network or FUSE file system; other mounts (the system disk, /home on
//   ext4, tmpfs, ...) are called directly on the caller's thread.
// - Each call waits at most kMountProbeDeadline, or less when the caller passes an
//   earlier deadline.
// - A mount that missed a deadline is remembered as stuck, keyed by its mount point and
//   device (from the mount table): every later call for a path on it answers "not
//   responding" at once, without touching it. In the background its abandoned call is
//   watched; when it finally answers the mount counts as responding again. A stuck
//   mount that leaves the mount table is forgotten.
// - Nothing here blocks longer than the deadline, and no thread of this process ever
//   waits on the file system of a guarded mount, so exiting never waits either.
// - All functions are thread-safe. The queries (mountWatchdogIsStuck*) are cheap: a
//   lock and a look-up, no system call; call them from the UI thread or per entry.

#include "fs/mount_table.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

inline constexpr std::chrono::milliseconds kMountProbeDeadline{1500};

enum class MountState { Responding, NotResponding };

// The answer of a guarded call: the value (nothing when the call failed, e.g. ENOENT),
// or "not responding" (then the value is nothing too).
template <class T> struct MountAnswer {
    MountAnswer() = default;
    MountAnswer(std::optional<T> v, MountState s = MountState::Responding)
        : value(std::move(v))
        , state(s)
    {
    }

    std::optional<T> value;
    MountState state = MountState::Responding;

    bool responding() const { return state == MountState::Responding; }
};

using MountDeadline = std::chrono::steady_clock::time_point;

// statvfs of `path`: total and available bytes of its file system.
MountAnswer<MountCapacity> mountWatchdogCapacity(const std::string& path, MountDeadline deadline = {});

// stat (links followed) and lstat of `path`.
MountAnswer<struct stat> mountWatchdogStat(const std::string& path, MountDeadline deadline = {});
MountAnswer<struct stat> mountWatchdogLstat(const std::string& path, MountDeadline deadline = {});

// The canonical absolute form of `path` (symbolic links, "." and ".." resolved), one
// component at a time so each step is asked of the mount it lies on. Nothing when a
// component does not exist or a link loops.
MountAnswer<std::string> mountWatchdogRealpath(const std::string& path, MountDeadline deadline = {});

// Whether the drive holding `path` (lexically; usually its mount point) answers: at once
// when it is not guarded, is remembered as stuck, or answered within the last few
// seconds; else a statvfs with the deadline. Use before reading a drive's folders on a
// thread that must not hang (a drive listing, a folder-size walk).
MountState mountWatchdogCheck(const std::string& path, MountDeadline deadline = {});

// The names of the entries directly inside folder `dir` (as given, absolute) that are
// mount points of drives that do not answer, checking the not yet judged ones in
// parallel (at most one deadline in all). Empty at once for a folder without mount
// points in it, the usual case. A scanner calls it once per folder and leaves these
// entries alone (no stat, no descent).
std::vector<std::string> mountWatchdogStuckEntries(const std::string& dir, MountDeadline deadline = {});

// Cheap queries, no system call: whether the mount with this device number, the mount
// point `mountPoint` exactly, or the mount holding `path` (lexically: the deepest mount
// point that is a prefix of it) is remembered as stuck.
bool mountWatchdogIsStuck(dev_t device);
bool mountWatchdogIsStuckAt(std::string_view mountPoint);
bool mountWatchdogIsStuckPath(std::string_view path);

// The mount points remembered as stuck, sorted.
std::vector<std::string> mountWatchdogStuckMounts();

// The mount that holds `path` lexically (no links resolved), from the mount table
// (re-read after each mount or unmount, and at least once a second); nothing when the
// table cannot be read.
std::optional<MountRecord> mountWatchdogMountOf(std::string_view path);

// The mount table as the watchdog sees it (kept current as above).
std::vector<MountRecord> mountWatchdogTable();

// Whether calls on this mount go through a helper process (see the contract above).
bool mountWatchdogGuards(const MountRecord& mount);

// Tests only: the mount table to use instead of /proc/self/mountinfo (nothing restores
// the real one), and forgetting every remembered state.
void mountWatchdogSetTableForTest(std::optional<std::vector<MountRecord>> table);
void mountWatchdogResetForTest();
