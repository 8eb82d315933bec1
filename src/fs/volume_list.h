#pragma once
// The user-visible mounted volumes (removable drives, network shares, disks mounted
// under the home folder) with their capacities, and the volume that holds a path.

#include "fs/mount_table.h"
#include "fs/mount_watchdog.h"
#include "fs/volume.h"

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// Whose volumes: mounts under this user's home and media folders are theirs.
struct VolumeViewer {
    std::string home; // symbolic links resolved, no trailing slash
    std::string user; // login name

    // The user running this process.
    static VolumeViewer current();
};

// Reads one file system's capacity, or says it does not answer; may block (a fake in a
// test), though the production one never waits past the probe deadline.
using MountCapacityFn = std::function<MountAnswer<MountCapacity>(const std::string& mountPoint)>;

class VolumeList {
public:
    // How long mounted() waits for all capacity probes together.
    static constexpr std::chrono::milliseconds kProbeWait{3000};

    // Names that are never listed.
    static const std::set<std::string, std::less<>>& skipNames();

    // File-system types that are never a user's drive (kernel interfaces, memory file
    // systems, container and package images, automount triggers, portals).
    static const std::set<std::string, std::less<>>& pseudoFsTypes();

    // Whether a mount is one of the viewer's volumes: below /media/, /mnt/,
    // /run/media/<user>/ or the home folder; not "/"; not a pseudo file system; no path
    // component starting with "."; its name not in skipNames().
    static bool userVisible(const MountRecord& mount, const VolumeViewer& viewer);

    // The visible mounts of a table, one per mount point (the last, i.e. top-most,
    // mount wins: a mount hidden under another is not what the folder shows).
    static std::vector<MountRecord> visible(const std::vector<MountRecord>& table, const VolumeViewer& viewer);

    // One volume: named after the mount point's last component, with its capacity;
    // nothing when the capacity cannot be read; responding false (capacity 0) when the
    // drive does not answer.
    static std::optional<Volume> probe(const std::string& mountPoint, const MountCapacityFn& capacity);

    // This machine's user-visible volumes, sorted by name in byte order. Capacities go
    // through the mount watchdog: a drive that hangs is listed with responding false
    // (at once when it is already known to hang), and no thread is left stuck on it.
    static std::vector<Volume> mounted();

    // The same for a given table: every visible mount is probed on its own detached
    // thread and the call returns once all have answered or kProbeWait has passed;
    // volumes whose probe is still running are listed as not responding. `capacity` is
    // copied into the probes and may outlive this call, so it must not refer to the
    // caller's stack.
    static std::vector<Volume> mounted(const std::vector<MountRecord>& table, const VolumeViewer& viewer,
                                       const MountCapacityFn& capacity);
};

// The mount point of the user-visible volume that holds `path` (symbolic links
// resolved), the deepest one when volumes nest; nothing when the path is on no such
// volume (then it is on the system volume "/"). Reads the mount table at most once a
// second. The resolution goes through the mount watchdog: when a drive on the way does
// not answer, the path is taken as written.
std::optional<std::string> volumeContaining(const std::string& path);

// The same over a list of mount points for an already resolved absolute path.
std::optional<std::string> volumeContainingIn(std::string_view resolvedPath, const std::vector<std::string>& mountPoints);
