#pragma once
// The Trash as Linux desktops share it (freedesktop.org Trash 1.0): a home trash
// $XDG_DATA_HOME/Trash for items on its device, and per-volume trashes
// ($topdir/.Trash/$uid or $topdir/.Trash-$uid) for items elsewhere. Each trashed item is
// files/<name> with its record info/<name>.trashinfo. Only this file and its .cpp know
// about it; another platform swaps them.

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

// Where an item went (its path under files/), or the errno that kept it in place.
struct TrashMove {
    std::string trashedTo;
    int error = 0;
};

// The error of an item that is itself a trash folder or lies inside one: trashing it
// again would leave a record that points at nothing. Outside the errno range.
inline constexpr int kTrashErrorInTrash = 0x10000;

// Moves the item at `path` into the trash of its device, recording `now` as its
// deletion time.
TrashMove trashMoveLinux(const std::string& path, std::time_t now);

// Removes what killed trash moves left in `trash`: our stale record temporaries, and a
// record they mark whose item never reached files/ and that is older than a minute.
// Records anyone else wrote carry no such mark and are never touched. How many records
// went.
size_t trashRemoveOrphans(const std::string& trash, std::time_t now);

// The home trash: $XDG_DATA_HOME/Trash, or ~/.local/share/Trash when that variable is
// unset or not absolute.
std::string trashHomeDir();

// The trash folders to try, in order, for user `uid` on the volume mounted at `topdir`.
// `sharedTrash` is the lstat of $topdir/.Trash (nullptr when missing): the shared one
// counts only as a real folder with the sticky bit, never through a symbolic link.
std::vector<std::string> trashVolumeDirs(const std::string& topdir, uid_t uid, const struct stat* sharedTrash);

// The mount point of the volume holding `path` (absolute): the highest ancestor still on
// `dev`. `deviceOf` gives a path's device, or nothing when it cannot be read.
std::string trashTopDir(const std::string& path, dev_t dev,
                        const std::function<std::optional<dev_t>(const std::string&)>& deviceOf);

// The Path= value for `path` (absolute): itself in the home trash (empty `topdir`),
// else relative to the volume's `topdir`.
std::string trashInfoPath(const std::string& path, const std::string& topdir);

// Every byte outside the URI unreserved set and "/" as %XX.
std::string trashPercentEncode(std::string_view bytes);

// The whole .trashinfo text for an already encoded Path= value.
std::string trashInfoText(std::string_view encodedPath, std::time_t deletionTime);

// The n-th name tried for `base` in a trash (1: base, 2: base.2, ...), shortened so that
// its info file name stays within NAME_MAX without splitting a UTF-8 sequence.
std::string trashCandidateName(const std::string& base, int n);
