#pragma once
// Lanes: walks are limited per storage device, so two walks on one disk do not thrash
// it while walks on different disks run side by side. A path's lane is the mount point
// of the user-visible volume holding it (longest match), or "/" for everything else.

#include <string>
#include <vector>

// The lane of an already resolved absolute path among `mountPoints`.
std::string folderSizeLane(const std::string& resolved, const std::vector<std::string>& mountPoints);

// `path` made absolute with its symbolic links resolved. A path that does not exist
// (wholly or in part) keeps its missing tail as written below its deepest existing
// folder; a path that cannot be resolved at all is returned unchanged.
std::string pathResolveLinks(const std::string& path);

// The mount points of the user-visible volumes (removable media, /mnt, mounts in the
// home folder), read from the kernel's mount table at most every few seconds.
std::vector<std::string> folderSizeMountPoints();
