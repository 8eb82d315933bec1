#include "fs/sort_nodes.h"

#include "fs/collation.h"

#include <algorithm>
#include <limits>

namespace {

enum class Key { Name, Date, Size, Kind };

Key keyOf(const std::string& sortBy)
{
    if (sortBy == "date")
        return Key::Date;
    if (sortBy == "size")
        return Key::Size;
    if (sortBy == "kind")
        return Key::Kind;
    return Key::Name;
}

struct Entry {
    DirNode* node;
    std::string nameKey;
    std::string kindKey;
    size_t index;
};

template <typename T>
int cmp(const T& a, const T& b)
{
    return a < b ? -1 : b < a ? 1 : 0;
}

} // namespace

std::vector<DirNodePtr> sortNodes(std::vector<DirNodePtr> nodes, SortPlace place, const BrondelSettings& settings)
{
    if (place == SortPlace::ComputerRoot) {
        std::stable_sort(nodes.begin(), nodes.end(),
                         [](const DirNodePtr& a, const DirNodePtr& b) { return a->size > b->size; });
        return nodes;
    }
    if (nodes.size() < 2)
        return nodes;

    const Key key = keyOf(settings.sortBy);
    const bool ascending = settings.ascending;
    const bool foldersFirst = settings.foldersFirst;
    const NameCollator& collator = NameCollator::forThread();

    // Sort keys are computed once per node, so each comparison is a byte comparison.
    std::vector<Entry> entries(nodes.size());
    for (size_t i = 0; i < nodes.size(); ++i) {
        entries[i].node = nodes[i].get();
        entries[i].index = i;
        entries[i].nameKey = collator.sortKey(nodes[i]->name);
        if (key == Key::Kind)
            entries[i].kindKey = collator.sortKey(nodes[i]->kind);
    }
    constexpr int64_t kDistantPast = std::numeric_limits<int64_t>::min();
    auto before = [&](const Entry& a, const Entry& b) {
        if (foldersFirst && a.node->isDir != b.node->isDir)
            return a.node->isDir;
        int c = 0;
        switch (key) {
        case Key::Date:
            c = cmp(a.node->dateModified.value_or(kDistantPast), b.node->dateModified.value_or(kDistantPast));
            break;
        case Key::Size:
            c = cmp(a.node->size, b.node->size);
            break;
        case Key::Kind:
            c = a.kindKey.compare(b.kindKey);
            break;
        case Key::Name:
            c = a.nameKey.compare(b.nameKey);
            break;
        }
        if (c == 0) // ties read A to Z whatever the direction
            return a.nameKey < b.nameKey;
        return ascending ? c < 0 : c > 0;
    };
    std::stable_sort(entries.begin(), entries.end(), before);
    std::vector<DirNodePtr> out;
    out.reserve(nodes.size());
    for (const Entry& e : entries)
        out.push_back(std::move(nodes[e.index]));
    return out;
}
