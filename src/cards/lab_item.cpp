#include "cards/lab_item.h"

#include "cards/lab_group_kind.h"
#include "fs/collation.h"
#include "fs/dir_fd.h"
#include "fs/fmt.h"
#include "fs/kind_table.h"
#include "fs/paths.h"
#include "fs/volume_list.h"

#include <algorithm>

namespace {

std::string childPath(const std::string& folder, const std::string& name)
{
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

std::string lastComponent(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Hands each visible name of the folder to `each`; false when it cannot be opened.
template <typename Each>
bool forEachVisible(const std::string& path, Each&& each)
{
    const int fd = sysOpen(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    DirFd dir(fd);
    std::vector<char> buffer(64 * 1024);
    dirForEachEntry(dir.fd(), buffer, [&](const char* name, unsigned char) {
        if (name[0] != '.')
            each(name);
    });
    return true;
}

} // namespace

LabListing labList(const std::string& path, int64_t limit)
{
    LabListing out;
    if (limit == 0) {
        forEachVisible(path, [&](const char*) { ++out.total; });
        return out;
    }
    std::vector<std::pair<std::string, std::string>> keyed; // sort key, name
    const NameCollator& collator = NameCollator::forThread();
    forEachVisible(path, [&](const char* name) { keyed.emplace_back(collator.sortKey(name), name); });
    out.total = int64_t(keyed.size());
    const size_t keep = limit < 0 ? keyed.size() : std::min(keyed.size(), size_t(limit));
    // Only the first `keep` need ordering: a folder of 100,000 entries shown 200 at a
    // time sorts 200, not all.
    std::partial_sort(keyed.begin(), keyed.begin() + ptrdiff_t(keep), keyed.end());
    out.names.reserve(keep);
    for (size_t i = 0; i < keep; ++i)
        out.names.push_back(std::move(keyed[i].second));
    return out;
}

std::vector<std::string> labChildren(const std::string& path, int64_t limit)
{
    std::vector<std::string> out;
    for (const std::string& name : labList(path, limit).names)
        out.push_back(childPath(path, name));
    return out;
}

LabItem labStat(const std::string& path, const std::string& name)
{
    LabItem item;
    item.name = name;
    item.path = path;
    struct stat st {};
    bool known = sysCalls().stat(path.c_str(), &st) == 0;
    bool link = false;
    if (!known) { // a dangling link still has a date of its own
        known = sysCalls().lstat(path.c_str(), &st) == 0;
        link = known;
    }
    item.isDir = known && !link && S_ISDIR(st.st_mode);
    if (known) {
        item.date = int64_t(st.st_mtim.tv_sec);
        if (!item.isDir && !link)
            item.bytes = int64_t(st.st_size);
    }
    item.kind = std::string(kindText(kindOfEntry(name, item.isDir ? EntryType::Folder
                                                                  : link ? EntryType::Link : EntryType::File)));
    if (item.isDir) {
        int64_t visible = 0;
        item.count = forEachVisible(path, [&](const char*) { ++visible; }) ? visible : -1;
    }
    item.group = labGroupKindOf(item.isDir, path).title();
    return item;
}

std::vector<LabItem> labItemsOf(const std::string& path, const std::vector<std::string>& names)
{
    std::vector<LabItem> out;
    out.reserve(names.size());
    for (const std::string& name : names)
        out.push_back(labStat(childPath(path, name), name));
    return out;
}

std::vector<LabItem> labChildItems(const std::string& path, int64_t limit)
{
    std::vector<LabItem> out;
    for (const std::string& child : labChildren(path, limit))
        out.push_back(labStat(child, lastComponent(child)));
    return out;
}

std::vector<LabItem> labDataOverview(const std::string& home, const std::vector<Volume>& volumes)
{
    std::vector<LabItem> out;
    LabItem homeItem = labStat(home, "Home");
    homeItem.isDir = true;
    out.push_back(std::move(homeItem));
    for (const Volume& volume : volumes) {
        LabItem drive;
        drive.name = volume.name;
        drive.path = volume.path;
        drive.isDir = true;
        drive.capacity = volume.totalBytes;
        drive.bytes = volume.usedBytes();
        drive.kind = "Volume";
        drive.group = labGroupKindOf(true, volume.path).title();
        drive.count = -1; // a drive is never listed just to count it: it may not answer
        out.push_back(std::move(drive));
    }
    return out;
}

std::vector<LabItem> labDataOverview()
{
    return labDataOverview(homeDir(), VolumeList::mounted());
}

std::string labMeta(const LabItem& item)
{
    if (item.capacity >= 1)
        return fmtHuman(item.capacity - item.bytes) + " free of " + fmtHuman(item.capacity);
    if (!item.isDir)
        return fmtHuman(item.bytes);
    if (item.count == 1)
        return "1 item";
    return std::to_string(std::max<int64_t>(item.count, 0)) + " items";
}
