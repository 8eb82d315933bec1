#include "views/icon_card_data.h"

#include "fs/volume.h"
#include "sizes/drive_children.h"
#include "sizes/folder_sizes.h"

#include <QFile>

#include <algorithm>

namespace {

const NodeRecord& recordAt(const IconCardSection& s, size_t index)
{
    return s.records[index];
}

} // namespace

QString IconCardData::name(int section, size_t index) const
{
    const IconCardSection& s = sections[size_t(section)];
    if (s.records) {
        const NodeRecord& r = recordAt(s, index);
        return QFile::decodeName(QByteArray::fromRawData(r.name, r.nameLength));
    }
    return QFile::decodeName(QByteArray::fromStdString(s.sec.nodes[index]->name));
}

std::string IconCardData::path(int section, size_t index) const
{
    const IconCardSection& s = sections[size_t(section)];
    return s.records ? s.store->path(recordAt(s, index)) : s.sec.nodes[index]->path;
}

bool IconCardData::isDir(int section, size_t index) const
{
    const IconCardSection& s = sections[size_t(section)];
    return s.records ? recordAt(s, index).isDir() : s.sec.nodes[index]->isDir;
}

std::optional<int64_t> IconCardData::date(int section, size_t index) const
{
    const IconCardSection& s = sections[size_t(section)];
    if (!s.records)
        return s.sec.nodes[index]->dateModified;
    const NodeRecord& r = recordAt(s, index);
    if (nodeMeta(r) & kMetaHasDate)
        return r.date;
    return std::nullopt;
}

DirNodePtr IconCardData::node(int section, size_t index) const
{
    const IconCardSection& s = sections[size_t(section)];
    if (!s.records)
        return s.sec.nodes[index];
    return nodeStoreRecordNode(*s.store, recordAt(s, index));
}

IconCardDataPtr iconCardDataFrom(const IconViewInput& in, const DirNodePtr& root)
{
    auto data = std::make_shared<IconCardData>();
    const bool atRoot = iconViewAtRoot(in);
    for (IconSec& sec : buildSections(in))
        data->sections.push_back(IconCardSection{std::move(sec)});
    // Away from the root the first section is the folder's own items: point it at the
    // store's records instead of copying them into nodes.
    if (!atRoot && root && root->store && !data->sections.empty()) {
        IconCardSection& items = data->sections.front();
        items.store = root->store;
        items.records = root->store->root().children;
        items.recordCount = root->store->root().childCount;
        items.sec.nodes.clear();
    }
    return data;
}

std::vector<std::pair<std::string, int64_t>> driveTileLegend(std::vector<std::pair<std::string, int64_t>> items,
    int64_t used, long long rows)
{
    std::stable_sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    std::erase_if(items, [](const auto& item) { return item.second <= 0; });
    const size_t room = size_t(std::max(1LL, rows));
    if (items.size() <= room && used <= 0)
        return items;
    const size_t keep = std::min(items.size(), room - 1);
    int64_t shown = 0;
    for (size_t i = 0; i < keep; ++i)
        shown += items[i].second;
    items.resize(keep);
    if (used - shown > 0)
        items.emplace_back("Other", used - shown);
    return items;
}

IconCardDataPtr iconCardDataGather(const DirNodePtr& root, const std::vector<DirNodePtr>& headers,
    const BrondelSettings& settings)
{
    // A folder's own items are read from the store in place; the Computer root's few
    // drives come as nodes.
    std::vector<DirNodePtr> items = root ? root->children : std::vector<DirNodePtr>();
    IconViewInput in = iconViewGather(root ? root->path : "/", root ? root->name : "", std::move(items), settings);
    in.favorites = headers; // the pane's own headers, as the other views show them
    IconCardDataPtr built = iconCardDataFrom(in, root);
    auto data = std::const_pointer_cast<IconCardData>(built);
    for (IconCardSection& s : data->sections) {
        if (!s.sec.breakdown)
            continue;
        for (const DirNodePtr& drive : s.sec.nodes) {
            DriveTile tile;
            if (const std::optional<Volume> volume = driveSpace(drive->path)) {
                tile.known = volume->responding;
                tile.responding = volume->responding;
                tile.total = volume->totalBytes;
                tile.free = volume->freeBytes;
            }
            std::vector<std::pair<std::string, int64_t>> sizes;
            if (tile.known)
                if (auto children = DriveChildren::shared().of(drive->path, settings))
                    for (const DirNodePtr& child : *children) {
                        const std::optional<int64_t> size =
                            child->isDir ? FolderSizes::shared().size(child->path) : std::optional(child->size);
                        sizes.emplace_back(child->name, size.value_or(0));
                    }
            tile.legend = driveTileLegend(std::move(sizes), tile.known ? tile.total - tile.free : 0, s.sec.legendRows);
            s.tiles.push_back(std::move(tile));
        }
    }
    return data;
}
