#include "fs/sort_nodes.h"

#include "fs/collation.h"
#include "fs/utf8.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <limits>
#include <numeric>
#include <thread>

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

// How a folder's texts are compared: the ASCII table when every text is ASCII, ICU's
// own comparison for small folders, precomputed sort keys for large ones (a key costs
// about six comparisons, so it only pays off when each name is compared many times).
enum class Collate { AsciiTable, Direct, Keys, AsciiKeys };
constexpr size_t kKeysFrom = 64;
// From this many texts the keys are computed on two threads.
constexpr size_t kParallelKeysFrom = 16384;

Collate collateFor(const std::vector<std::string_view>& texts, const NameCollator& collator)
{
    const bool large = texts.size() >= kKeysFrom;
    if (collator.hasAsciiFastPath() && std::all_of(texts.begin(), texts.end(), asciiOnly))
        return large ? Collate::AsciiKeys : Collate::AsciiTable;
    return large ? Collate::Keys : Collate::Direct;
}

// The collation keys of a column of texts, packed in arenas (one per thread that made
// them) and seen through views: no allocation per text.
class KeyColumn {
public:
    KeyColumn(const std::vector<std::string_view>& texts, Collate how)
    {
        if (how != Collate::Keys && how != Collate::AsciiKeys)
            return;
        m_views.resize(texts.size());
        const size_t n = texts.size();
        auto make = [&](size_t part, size_t from, size_t to) {
            const NameCollator& collator = NameCollator::forThread();
            std::string& arena = m_arenas[part];
            std::vector<uint32_t> ends(to - from);
            arena.reserve((to - from) * 24);
            for (size_t i = from; i < to; ++i) {
                if (how == Collate::Keys)
                    collator.appendSortKey(texts[i], arena);
                else
                    collator.appendAsciiKey(texts[i], arena);
                ends[i - from] = uint32_t(arena.size());
            }
            uint32_t start = 0;
            for (size_t i = from; i < to; ++i) {
                m_views[i] = std::string_view(arena).substr(start, ends[i - from] - start);
                start = ends[i - from];
            }
        };
        if (n >= kParallelKeysFrom) {
            const size_t half = n / 2;
            std::thread helper(make, 1, half, n);
            make(0, 0, half);
            helper.join();
        } else {
            make(0, 0, n);
        }
    }
    std::string_view operator[](size_t i) const { return m_views[i]; }
    bool empty() const { return m_views.empty(); }

private:
    std::string m_arenas[2];
    std::vector<std::string_view> m_views;
};

int collate(Collate how, const NameCollator& collator, std::string_view a, std::string_view b, std::string_view keyA,
    std::string_view keyB)
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

KeyPrefix keyPrefix(std::string_view key)
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

SortColumnsUsed sortColumnsUsed(SortPlace place, const BrondelSettings& settings)
{
    if (place == SortPlace::ComputerRoot)
        return {true, false, false};
    const Key key = keyOf(settings.sortBy);
    return {key == Key::Size, key == Key::Date, key == Key::Kind};
}

std::vector<uint32_t> sortOrder(const SortColumns& columns, SortPlace place, const BrondelSettings& settings)
{
    const size_t n = columns.names.size();
    std::vector<uint32_t> order(n);
    std::iota(order.begin(), order.end(), 0u);
    if (place == SortPlace::ComputerRoot) {
        std::stable_sort(order.begin(), order.end(),
            [&](uint32_t a, uint32_t b) { return columns.sizes[a] > columns.sizes[b]; });
        return order;
    }
    if (n < 2)
        return order;

    const Key key = keyOf(settings.sortBy);
    const bool ascending = settings.ascending;
    const bool foldersFirst = settings.foldersFirst;
    const NameCollator& collator = NameCollator::forThread();
    const Collate byName = collateFor(columns.names, collator);
    const Collate byKind = key == Key::Kind ? collateFor(columns.kinds, collator) : Collate::AsciiTable;
    const KeyColumn nameKeys(columns.names, byName);
    const KeyColumn kindKeys(key == Key::Kind ? columns.kinds : std::vector<std::string_view>(), byKind);
    const bool nameKeyed = !nameKeys.empty();
    const bool kindKeyed = !kindKeys.empty();

    auto nameOrder = [&](uint32_t a, uint32_t b) {
        return nameKeyed ? nameKeys[a].compare(nameKeys[b])
                         : collate(byName, collator, columns.names[a], columns.names[b], {}, {});
    };
    auto before = [&](uint32_t a, uint32_t b) {
        if (foldersFirst && columns.dirs[a] != columns.dirs[b])
            return bool(columns.dirs[a]);
        int c = 0;
        switch (key) {
        case Key::Date: c = cmp(columns.dates[a], columns.dates[b]); break;
        case Key::Size: c = cmp(columns.sizes[a], columns.sizes[b]); break;
        case Key::Kind:
            c = kindKeyed ? kindKeys[a].compare(kindKeys[b])
                          : collate(byKind, collator, columns.kinds[a], columns.kinds[b], {}, {});
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
    // Small items move instead of indexes alone. When names have byte keys, an item
    // carries its key's first sixteen bytes, so most comparisons of a name sort never
    // leave the item array.
    struct Item {
        KeyPrefix prefix;
        uint32_t index;
        bool dir;
    };
    const bool prefixed = key == Key::Name && nameKeyed;
    std::vector<Item> items(n);
    for (uint32_t i = 0; i < n; ++i)
        items[i] = {prefixed ? keyPrefix(nameKeys[i]) : KeyPrefix{}, i, bool(columns.dirs[i])};
    auto itemBefore = [&](const Item& a, const Item& b) {
        if (prefixed) {
            if (foldersFirst && a.dir != b.dir)
                return a.dir;
            if (a.prefix != b.prefix)
                return ascending ? a.prefix < b.prefix : a.prefix > b.prefix;
        }
        return before(a.index, b.index);
    };
    if (n < kParallelKeysFrom) {
        std::stable_sort(items.begin(), items.end(), itemBefore);
        for (size_t i = 0; i < n; ++i)
            order[i] = items[i].index;
        return order;
    }
    // A large folder sorts its two halves on two threads and merges them; merging takes
    // from the first half on ties, so the order stays stable. Every text of a folder this
    // large has a key, so the comparison never touches this thread's collator.
    const auto middle = items.begin() + std::ptrdiff_t(n / 2);
    std::thread helper([&] { std::stable_sort(middle, items.end(), itemBefore); });
    std::stable_sort(items.begin(), middle, itemBefore);
    helper.join();
    std::vector<Item> merged(n);
    std::merge(items.begin(), middle, middle, items.end(), merged.begin(), itemBefore);
    for (size_t i = 0; i < n; ++i)
        order[i] = merged[i].index;
    return order;
}

std::vector<DirNodePtr> sortNodes(std::vector<DirNodePtr> nodes, SortPlace place, const BrondelSettings& settings)
{
    if (place == SortPlace::Folder && nodes.size() < 2)
        return nodes;
    const SortColumnsUsed used = sortColumnsUsed(place, settings);
    SortColumns columns;
    columns.names.reserve(nodes.size());
    columns.dirs.reserve(nodes.size());
    for (const DirNodePtr& node : nodes) {
        columns.names.push_back(node->name);
        columns.dirs.push_back(node->isDir);
        if (used.sizes)
            columns.sizes.push_back(node->size);
        if (used.dates)
            columns.dates.push_back(node->dateModified.value_or(SortColumns::kNoDate));
        if (used.kinds)
            columns.kinds.push_back(node->kind);
    }
    std::vector<DirNodePtr> out;
    out.reserve(nodes.size());
    for (uint32_t i : sortOrder(columns, place, settings))
        out.push_back(std::move(nodes[i]));
    return out;
}
