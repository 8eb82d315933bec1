#include "sizes/folder_size_lane.h"

#include "fs/file_io.h"
#include "fs/paths.h"

#include <chrono>
#include <climits>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string_view>

std::string folderSizeLane(const std::string& resolved, const std::vector<std::string>& mountPoints)
{
    const std::string* best = nullptr;
    for (const std::string& mount : mountPoints) {
        if (mount.empty() || mount == "/")
            continue;
        const bool inside = resolved == mount
            || (resolved.size() > mount.size() && resolved.starts_with(mount) && resolved[mount.size()] == '/');
        if (inside && (!best || mount.size() > best->size()))
            best = &mount;
    }
    return best ? *best : "/";
}

std::string pathResolveLinks(const std::string& path)
{
    char buffer[PATH_MAX];
    if (::realpath(path.c_str(), buffer))
        return buffer;
    std::string parent = pathParent(path);
    std::string last = pathLastComponent(path);
    if (parent.empty() || parent == path || last.empty())
        return path;
    std::string base = pathResolveLinks(parent);
    if (base.empty() || base[0] != '/')
        return path;
    return base == "/" ? "/" + last : base + "/" + last;
}

namespace {

// Mount table text escapes space, tab, newline and backslash as octal.
std::string unescapeMountField(std::string_view field)
{
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const auto octal = [](char c) { return c >= '0' && c <= '7'; };
            if (octal(field[i + 1]) && octal(field[i + 2]) && octal(field[i + 3])) {
                out += char((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return out;
}

bool userVisible(const std::string& mount, std::string_view fsType, const std::string& home)
{
    static const std::set<std::string_view> kPseudo = {
        "proc", "sysfs", "tmpfs", "devtmpfs", "devpts", "cgroup", "cgroup2", "overlay", "squashfs",
        "autofs", "fuse.portal", "mqueue", "debugfs", "tracefs", "securityfs", "pstore", "bpf",
        "configfs", "fusectl", "hugetlbfs", "binfmt_misc", "efivarfs", "ramfs", "nsfs", "rpc_pipefs",
    };
    if (kPseudo.count(fsType) || mount.find("/.") != std::string::npos)
        return false;
    const auto under = [&](std::string_view top) {
        return mount.size() > top.size() && mount.starts_with(top) && mount[top.size()] == '/';
    };
    return under("/media") || under("/run/media") || under("/mnt") || (!home.empty() && home != "/" && under(home));
}

std::vector<std::string> readMountPoints()
{
    std::vector<std::string> mounts;
    const auto text = fileReadAll("/proc/self/mountinfo");
    if (!text)
        return mounts;
    const std::string home = homeDir();
    std::string_view rest = *text;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        // id parent major:minor root mount-point options [optional...] - type source ...
        std::vector<std::string_view> fields;
        for (size_t pos = 0; pos < line.size();) {
            const size_t space = line.find(' ', pos);
            fields.push_back(line.substr(pos, space == std::string_view::npos ? line.npos : space - pos));
            pos = space == std::string_view::npos ? line.size() : space + 1;
        }
        size_t dash = 6;
        while (dash < fields.size() && fields[dash] != "-")
            ++dash;
        if (fields.size() < 5 || dash + 1 >= fields.size())
            continue;
        std::string mount = unescapeMountField(fields[4]);
        if (userVisible(mount, fields[dash + 1], home))
            mounts.push_back(std::move(mount));
    }
    return mounts;
}

} // namespace

std::vector<std::string> folderSizeMountPoints()
{
    static std::mutex lock;
    static std::vector<std::string> mounts;
    static std::chrono::steady_clock::time_point readAt;
    static bool read = false;
    const auto now = std::chrono::steady_clock::now();
    std::lock_guard guard(lock);
    if (!read || now - readAt > std::chrono::seconds(5)) {
        mounts = readMountPoints();
        readAt = now;
        read = true;
    }
    return mounts;
}
