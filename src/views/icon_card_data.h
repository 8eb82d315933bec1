#pragma once
// What the icon view shows: the card sections of a folder with their items, built off
// the UI thread (card files, Downloads folders and drive figures are read from disk).
// A folder's own items stay in the compact store the pane read: no DirNode per item, so
// a 100,000-entry folder costs one pointer here. Other sections hold their DirNodes.

#include "cards/card_sections.h"
#include "fs/dir_node.h"
#include "fs/node_store.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A drive's figures for a breakdown tile.
struct DriveTile {
    bool known = false; // false: no capacity (not a drive root, or not answering)
    bool responding = true;
    int64_t total = 0;
    int64_t free = 0;
    std::vector<std::pair<std::string, int64_t>> legend; // biggest first items, then "Other"
};

struct IconCardSection {
    IconSec sec;                           // sec.nodes empty when the records below hold the items
    NodeStorePtr store;                    // the folder's records, when they hold the items
    const NodeRecord* records = nullptr;
    uint32_t recordCount = 0;
    std::vector<DriveTile> tiles;          // one per node, for a breakdown section

    size_t count() const { return records ? recordCount : sec.nodes.size(); }
};

class IconCardData {
public:
    std::vector<IconCardSection> sections;

    size_t count(int section) const { return sections[size_t(section)].count(); }
    QString name(int section, size_t index) const;
    std::string path(int section, size_t index) const;
    bool isDir(int section, size_t index) const;
    // The modification time when known.
    std::optional<int64_t> date(int section, size_t index) const;
    // A node for the item (made on demand for a record: actions and menus take nodes).
    DirNodePtr node(int section, size_t index) const;
};

using IconCardDataPtr = std::shared_ptr<const IconCardData>;

// The sections of `in` (buildSections; the card files are read), the shown folder's own
// items taken from `root`'s store when it has one. Breakdown tiles stay empty.
IconCardDataPtr iconCardDataFrom(const IconViewInput& in, const DirNodePtr& root);

// Everything for the pane's folder `root` with the favourites `headers`: gathers the
// input (Downloads folders at the Computer root), builds the sections and reads the
// drive figures of breakdown sections. Reads the disk: call it off the UI thread.
IconCardDataPtr iconCardDataGather(const DirNodePtr& root, const std::vector<DirNodePtr>& headers,
    const BrondelSettings& settings);

// The breakdown legend of a drive: the `rows - 1` biggest items, then "Other" with the
// rest of the used bytes (when anything is left), never more than `rows` lines.
std::vector<std::pair<std::string, int64_t>> driveTileLegend(std::vector<std::pair<std::string, int64_t>> items,
    int64_t used, long long rows);
