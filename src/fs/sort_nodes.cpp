#include "fs/sort_nodes.h"

#include "fs/collation.h"

#include <algorithm>
#include <compare>
#include <cstdint>
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
    std::string nameKey; // sort keys, only when the folder needs them
    std::string kindKey;
};

bool isAscii(const std::string& s)
{
    for (unsigned char c : s)
        if (c >= 0x80)
            return false;
    return true;
}

// How a folder's texts are compared: the ASCII table when every text is ASCII, ICU's
// own comparison for small folders, precomputed sort keys for large ones (a key costs
// about six comparisons, so it only pays off when each name is compared many times).
enum class Collate { AsciiTable, Direct, Keys, AsciiKeys };
constexpr size_t kKeysFrom = 64;

Collate collateFor(const std::vector<DirNodePtr>& nodes, const NameCollator& collator, std::string DirNode::*field)
{
    const bool large = nodes.size() >= kKeysFrom;
    if (collator.hasAsciiFastPath()
        && std::all_of(nodes.begin(), nodes.end(), [&](const DirNodePtr& n) { return isAscii((*n).*field); }))
        return large ? Collate::AsciiKeys : Collate::AsciiTable;
    return large ? Collate::Keys : Collate::Direct;
}

std::string keyFor(Collate how, const NameCollator& collator, const std::string& text)
{
    if (how == Collate::Keys)
        return collator.sortKey(text);
    if (how == Collate::AsciiKeys)
        return collator.asciiKey(text);
    return {};
}

int collate(Collate how, const NameCollator& collator, const std::string& a, const std::string& b,
            const std::string& keyA, const std::string& keyB)
{
    switch (how) {
    case Collate::AsciiTable: return collator.compareAscii(a, b);
    case Collate::Direct: return collator.compare(a, b);
    case Collate::Keys:
    case Collate::AsciiKeys: return keyA.compare(keyB);
    }
    return 0;
}

// The first sixteen bytes of a key as two big-endian words, zero-padded. Keys hold no
// zero byte where another key could end (ranks and ICU weights are never zero), so
// comparing prefixes gives the keys' order whenever the prefixes differ. Sixteen bytes
// get past the shared words of names like "report_0042.txt" to their numbers.
struct KeyPrefix {
    uint64_t high = 0, low = 0;
    auto operator<=>(const KeyPrefix&) const = default;
};

KeyPrefix keyPrefix(const std::string& key)
{
    KeyPrefix p;
    for (size_t i = 0; i < 16; ++i) {
        uint64_t& word = i < 8 ? p.high : p.low;
        word = (word << 8) | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0);
    }
    return p;
}

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
    const Collate byName = collateFor(nodes, collator, &DirNode::name);
    const Collate byKind = key == Key::Kind ? collateFor(nodes, collator, &DirNode::kind) : Collate::AsciiTable;

    std::vector<Entry> entries(nodes.size());
    for (size_t i = 0; i < nodes.size(); ++i) {
        entries[i].node = nodes[i].get();
        entries[i].nameKey = keyFor(byName, collator, nodes[i]->name);
        if (key == Key::Kind)
            entries[i].kindKey = keyFor(byKind, collator, nodes[i]->kind);
    }
    auto nameOrder = [&](const Entry& a, const Entry& b) {
        return collate(byName, collator, a.node->name, b.node->name, a.nameKey, b.nameKey);
    };
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
            c = collate(byKind, collator, a.node->kind, b.node->kind, a.kindKey, b.kindKey);
            break;
        case Key::Name:
            c = nameOrder(a, b);
            if (c == 0)
                return false; // equal names keep their order
            break;
        }
        if (c == 0) // ties read A to Z whatever the direction
            return nameOrder(a, b) < 0;
        return ascending ? c < 0 : c > 0;
    };
    // The entries stay put; small items move instead. When names have byte keys, an item
    // carries its key's first sixteen bytes, so most comparisons of a name sort never leave
    // the item array (the folder's entries are in directory order, scattered in memory).
    struct Item {
        KeyPrefix prefix;
        uint32_t index;
        bool dir;
    };
    const bool prefixed = key == Key::Name && !entries.empty() && (byName == Collate::Keys || byName == Collate::AsciiKeys);
    std::vector<Item> items(entries.size());
    for (uint32_t i = 0; i < items.size(); ++i)
        items[i] = {prefixed ? keyPrefix(entries[i].nameKey) : KeyPrefix{}, i, entries[i].node->isDir};
    std::stable_sort(items.begin(), items.end(), [&](const Item& a, const Item& b) {
        if (prefixed) {
            if (foldersFirst && a.dir != b.dir)
                return a.dir;
            if (a.prefix != b.prefix)
                return ascending ? a.prefix < b.prefix : a.prefix > b.prefix;
        }
        return before(entries[a.index], entries[b.index]);
    });
    std::vector<DirNodePtr> out;
    out.reserve(nodes.size());
    for (const Item& item : items)
        out.push_back(std::move(nodes[item.index]));
    return out;
}
