#pragma once
// The total logical size of a folder: the byte lengths of everything below it that is
// not a folder. The root is followed when it is a symbolic link; nothing below it is
// (a link counts as the length of its own text). The walk stays on the root's device,
// counts a file once per hard link, and skips whatever it cannot read. It never
// changes the working directory, so any number of walks may run at once.

#include <cstdint>
#include <string>
#include <vector>

// `threads` for the walks below: up to two threads, the second only if a core is idle
// when the walk has folders to spare for it. The kernel work per entry is the same
// either way, so on a saturated machine a second thread would only add its overhead.
constexpr int kFolderSizeWalkAuto = 0;

// One root. `threads` is the most threads the walk may use (the caller's included), or
// kFolderSizeWalkAuto; a second one only starts once there are folders left over for it.
int64_t folderSizeWalk(const std::string& path, int threads);

// Several roots measured together, each with its own total (in the order given): the
// threads share the folders of all roots, so one large root does not leave the other
// thread idle.
std::vector<int64_t> folderSizeWalkAll(const std::vector<std::string>& paths, int threads);
