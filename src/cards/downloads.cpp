#include "cards/downloads.h"

#include "fs/file_io.h"
#include "fs/mount_watchdog.h"
#include "fs/paths.h"
#include "fs/volume_list.h"

#include <QFile>
#include <QStandardPaths>

#include <set>

std::string downloadsUserDir()
{
    std::string dir = QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)).toStdString();
    while (dir.size() > 1 && dir.ends_with('/'))
        dir.pop_back();
    // A user directory set to the home folder itself means "none" in user-dirs.dirs.
    std::string home = homeDir();
    while (home.size() > 1 && home.ends_with('/'))
        home.pop_back();
    return dir == home ? "" : dir;
}

std::vector<std::string> downloadsFoldersFrom(const std::vector<std::string>& candidates)
{
    std::vector<std::string> folders;
    std::set<std::string> seen;
    for (const std::string& candidate : candidates) {
        // Through the watchdog: a Downloads folder on a drive that hangs is left out.
        if (candidate.empty())
            continue;
        const std::optional<std::string> resolved = mountWatchdogRealpath(candidate).value;
        if (!resolved)
            continue;
        const std::optional<struct stat> st = mountWatchdogStat(*resolved).value;
        if (!st || !S_ISDIR(st->st_mode))
            continue;
        if (seen.insert(*resolved).second)
            folders.push_back(*resolved);
    }
    return folders;
}

std::vector<std::string> downloadsFolders(const std::vector<Volume>& volumes)
{
    std::vector<std::string> candidates{downloadsUserDir()};
    for (const Volume& volume : volumes)
        if (volume.responding)
            candidates.push_back(volume.path + (volume.path.ends_with('/') ? "" : "/") + "Downloads");
    return downloadsFoldersFrom(candidates);
}

std::vector<std::string> downloadsFolders()
{
    return downloadsFolders(VolumeList::mounted());
}

std::string downloadsTitle(const std::string& path, const std::vector<Volume>& volumes)
{
    const std::string last = pathLastComponent(path);
    const Volume* holder = nullptr;
    size_t holderLength = 0;
    for (const Volume& volume : volumes) {
        std::string mount = volume.path;
        while (mount.ends_with('/'))
            mount.pop_back();
        const bool inside = path.starts_with(mount) && (path.size() == mount.size() || path[mount.size()] == '/');
        // "/" holds everything and is never a user-visible volume; the deepest mount wins.
        if (!mount.empty() && inside && (!holder || mount.size() > holderLength)) {
            holder = &volume;
            holderLength = mount.size();
        }
    }
    return holder ? last + " \u00b7 " + holder->name : last;
}

std::string downloadsTitle(const std::string& path)
{
    // Only the mount point matters here, so the mount table will do: no capacity probes.
    auto mount = volumeContaining(path);
    return mount ? downloadsTitle(path, {Volume{pathLastComponent(*mount), *mount}}) : pathLastComponent(path);
}
