#include "cards/card_sort.h"

#include "fs/collation.h"
#include "fs/sort_nodes.h"

#include <algorithm>
#include <limits>

namespace {

// Sorts ascending on one precomputed key per node, stably.
template <typename Key>
std::vector<DirNodePtr> sortOnKey(std::vector<DirNodePtr> nodes, Key keyOf)
{
    std::vector<std::pair<decltype(keyOf(*nodes.front())), size_t>> keys;
    keys.reserve(nodes.size());
    for (size_t i = 0; i < nodes.size(); ++i)
        keys.emplace_back(keyOf(*nodes[i]), i);
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<DirNodePtr> out;
    out.reserve(nodes.size());
    for (const auto& k : keys)
        out.push_back(std::move(nodes[k.second]));
    return out;
}

} // namespace

std::vector<DirNodePtr> cardSort(std::vector<DirNodePtr> nodes, const CardConfig& config,
                                 const BrondelSettings& settings)
{
    const std::string& sort = config.sort;
    if (sort == "keep")
        return nodes;
    if (sort != "date" && sort != "name" && sort != "size" && sort != "kind")
        return sortNodes(std::move(nodes), SortPlace::Folder, settings);
    if (nodes.empty())
        return nodes;
    const NameCollator& collator = NameCollator::forThread();
    if (sort == "date")
        nodes = sortOnKey(std::move(nodes), [](const DirNode& n) {
            return n.dateModified.value_or(std::numeric_limits<int64_t>::min());
        });
    else if (sort == "size")
        nodes = sortOnKey(std::move(nodes), [](const DirNode& n) { return n.size; });
    else if (sort == "name")
        nodes = sortOnKey(std::move(nodes), [&](const DirNode& n) { return collator.sortKey(n.name); });
    else
        nodes = sortOnKey(std::move(nodes), [&](const DirNode& n) { return collator.sortKey(n.kind); });
    // Descending is the ascending order reversed, ties included.
    if (!config.ascending)
        std::reverse(nodes.begin(), nodes.end());
    return nodes;
}
