#pragma once
// The downloads folders that get a Downloads card: the user's own (XDG user dirs), then
// one "Downloads" folder per mounted volume.

#include "fs/volume.h"

#include <string>
#include <vector>

// The user's downloads directory as the desktop names it (QStandardPaths, following
// XDG_CONFIG_HOME/user-dirs.dirs); "" when there is none or it is the home folder
// itself (how user-dirs.dirs switches a directory off).
std::string downloadsUserDir();

// The candidates in order with symbolic links resolved, keeping each existing directory
// once (the first time its resolved path comes up); the others are skipped silently.
std::vector<std::string> downloadsFoldersFrom(const std::vector<std::string>& candidates);

// The user's downloads directory, then "<mount point>/Downloads" of each volume in order.
std::vector<std::string> downloadsFolders(const std::vector<Volume>& volumes);

// The same for the volumes mounted now (VolumeList::mounted(): a volume whose probe does
// not answer in time is left out, so a dead network mount is never looked into).
std::vector<std::string> downloadsFolders();

// The card title of a downloads folder: its last component, and for a folder on one of
// `volumes` (the deepest mount point that holds it) " · " and the volume's name:
// "Downloads · Backup".
std::string downloadsTitle(const std::string& path, const std::vector<Volume>& volumes);

// The same against the volumes mounted now.
std::string downloadsTitle(const std::string& path);
