#include "fs/sort_nodes.h"

#include "fs/collation.h"
#include "fs/huge_pages.h"
#include "fs/run_both.h"
#include "fs/utf8.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <limits>
#include <numeric>

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
// A large folder of ASCII and other names keys each kind its own way (MixedKeys): the
// ASCII table's keys for the first, ICU's for the rest. The two kinds of key cannot be
// compared with each other, so such a folder sorts each kind apart and merges the two
// runs with ICU's comparison of the names themselves.
enum class Collate { AsciiTable, Direct, Keys, AsciiKeys, MixedKeys };
constexpr size_t kKeysFrom = 64;
// From this many texts the keys are computed on two threads.
constexpr size_t kParallelKeysFrom = 16384;

Collate collateFor(const std::vector<std::string_view>& texts, const NameCollator& collator)
{
    const bool large = texts.size() >= kKeysFrom;
    if (!collator.hasAsciiFastPath())
        return large ? Collate::Keys : Collate::Direct;
    const size_t ascii = size_t(std::count_if(texts.begin(), texts.end(), asciiOnly));
    if (ascii == texts.size())
        return large ? Collate::AsciiKeys : Collate::AsciiTable;
    if (!large)
        return Collate::Direct;
    return ascii == 0 ? Collate::Keys : Collate::MixedKeys;
}

int sign(int v) { return (v > 0) - (v < 0); }

// The collation keys of a column of texts, packed in arenas (one per thread that made
// them) and found through their end offsets: no allocation per text.
class KeyColumn {
public:
    KeyColumn(const std::vector<std::string_view>& texts, Collate how)
        : m_texts(texts)
        , m_mixed(how == Collate::MixedKeys)
    {
        if (how != Collate::Keys && how != Collate::AsciiKeys && how != Collate::MixedKeys)
            return;
        const size_t n = texts.size();
        hugePagesReserve(m_ends, n);
        m_ends.resize(n);
        if (m_mixed)
            m_ascii.resize(n);
        const bool split = n >= kParallelKeysFrom;
        m_half = split ? n / 2 : n;
        runHalves(n, split, [&](size_t from, size_t to) {
            const NameCollator& collator = NameCollator::forThread();
            std::string& arena = m_arenas[from == 0 ? 0 : 1];
            hugePagesReserve(arena, (to - from) * 24);
            for (size_t i = from; i < to; ++i) {
                const bool ascii = how == Collate::AsciiKeys || (m_mixed && asciiOnly(texts[i]));
                if (ascii)
                    collator.appendAsciiKey(texts[i], arena);
                else
                    collator.appendSortKey(texts[i], arena);
                if (m_mixed)
                    m_ascii[i] = ascii;
                m_ends[i] = uint32_t(arena.size());
            }
        });
    }
    std::string_view operator[](size_t i) const
    {
        const uint32_t start = i == 0 || i == m_half ? 0 : m_ends[i - 1];
        return std::string_view(m_arenas[i < m_half ? 0 : 1]).substr(start, m_ends[i] - start);
    }
    bool empty() const { return m_ends.empty(); }
    bool mixed() const { return m_mixed; }
    // Whether text i has an ASCII key (only told apart in a mixed column).
    bool asciiKeyed(size_t i) const { return m_mixed && m_ascii[i]; }

    // The texts' collation order (-1, 0, 1), on any thread.
    int compare(size_t a, size_t b) const
    {
        if (m_mixed && m_ascii[a] != m_ascii[b])
            return NameCollator::forThread().compare(m_texts[a], m_texts[b]);
        return sign((*this)[a].compare((*this)[b]));
    }

private:
    const std::vector<std::string_view>& m_texts;
    const bool m_mixed;
    std::string m_arenas[2];   // the keys of texts [0, m_half) and of the rest
    size_t m_half = 0;
    std::vector<uint32_t> m_ends; // where each key ends in its arena
    std::vector<uint8_t> m_ascii;
};

int collate(Collate how, const NameCollator& collator, std::string_view a, std::string_view b)
{
    return how == Collate::AsciiTable ? collator.compareAscii(a, b) : collator.compare(a, b);
}

// The first sixteen bytes of a key as two big-endian words, zero-padded. Where two
// prefixes first differ, either both keys have bytes that differ there, or the one
// padded is a proper prefix of the other: so comparing prefixes gives the keys' order
// whenever the prefixes differ. Sixteen bytes
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

// The end of the stretch of [first, last) where `pred` holds (it holds on a prefix),
// found in steps that double: a long stretch costs few tests.
template <typename T, typename Pred>
const T* gallop(const T* first, const T* last, const Pred& pred)
{
    size_t step = 1;
    for (const T* low = first;; step *= 2) {
        if (size_t(last - low) < step)
            return std::partition_point(low, last, pred);
        const T* probe = low + step - 1;
        if (!pred(*probe))
            return std::partition_point(low, probe, pred);
        low = probe + 1;
    }
}

// Merges two runs sorted by `less`, a strict total order, into `out` (a sink with
// put(item) and skipped(count)). After a few items in a row from one side the rest of
// that side's stretch is found by galloping, so runs that interleave little cost few
// comparisons.
template <typename T, typename Out, typename Less>
void mergeGalloping(const T* a, const T* aEnd, const T* b, const T* bEnd, Out out, const Less& less)
{
    constexpr int kGallopAfter = 7;
    int fromA = 0, fromB = 0;
    while (a != aEnd && b != bEnd) {
        if (less(*b, *a)) {
            out.put(*b++);
            fromA = 0;
            if (++fromB >= kGallopAfter && b != bEnd) {
                for (const T* end = gallop(b, bEnd, [&](const T& x) { return less(x, *a); }); b != end; ++b)
                    out.put(*b);
                fromB = 0;
            }
        } else {
            out.put(*a++);
            fromB = 0;
            if (++fromA >= kGallopAfter && a != aEnd) {
                for (const T* end = gallop(a, aEnd, [&](const T& x) { return less(x, *b); }); a != end; ++a)
                    out.put(*a);
                fromA = 0;
            }
        }
    }
    for (; a != aEnd; ++a)
        out.put(*a);
    for (; b != bEnd; ++b)
        out.put(*b);
}

// The same, on two threads for long runs: the longer run's middle item splits both.
template <typename T, typename Out, typename Less>
void mergeRuns(const T* a, const T* aEnd, const T* b, const T* bEnd, Out out, const Less& less)
{
    const size_t n = size_t(aEnd - a), m = size_t(bEnd - b);
    if (n + m < kParallelKeysFrom || n == 0 || m == 0) {
        mergeGalloping(a, aEnd, b, bEnd, out, less);
        return;
    }
    const T *aMid, *bMid;
    if (n >= m) {
        aMid = a + n / 2;
        bMid = std::partition_point(b, bEnd, [&](const T& x) { return less(x, *aMid); });
    } else {
        bMid = b + m / 2;
        aMid = std::partition_point(a, aEnd, [&](const T& x) { return less(x, *bMid); });
    }
    const Out outMid = out.skipped(size_t(aMid - a) + size_t(bMid - b));
    runBoth([&] { mergeGalloping(aMid, aEnd, bMid, bEnd, outMid, less); },
            [&] { mergeGalloping(a, aMid, b, bMid, out, less); });
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
    std::vector<uint32_t> order;
    hugePagesReserve(order, n);
    order.resize(n);
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
    const KeyColumn kindKeys(columns.kinds, key == Key::Kind ? byKind : Collate::AsciiTable);
    const bool nameKeyed = !nameKeys.empty();
    const bool kindKeyed = !kindKeys.empty();

    auto nameOrder = [&](uint32_t a, uint32_t b) {
        return nameKeyed ? nameKeys.compare(a, b) : collate(byName, collator, columns.names[a], columns.names[b]);
    };
    // The order of two entries (-1, 0, 1); 0 only for equal names (and equal keys).
    auto entryOrder = [&](uint32_t a, uint32_t b) {
        if (foldersFirst && columns.dirs[a] != columns.dirs[b])
            return columns.dirs[a] ? -1 : 1;
        int c = 0;
        switch (key) {
        case Key::Date: c = cmp(columns.dates[a], columns.dates[b]); break;
        case Key::Size: c = cmp(columns.sizes[a], columns.sizes[b]); break;
        case Key::Kind:
            c = kindKeyed ? kindKeys.compare(a, b) : collate(byKind, collator, columns.kinds[a], columns.kinds[b]);
            break;
        case Key::Name: c = nameOrder(a, b); return ascending ? c : -c;
        }
        if (c == 0) // ties read A to Z whatever the direction
            return nameOrder(a, b);
        return ascending ? c : -c;
    };
    // Small items move instead of indexes alone. When names have byte keys, an item
    // carries its group (folders first) and its key's first sixteen bytes (inverted for a
    // descending sort), so most comparisons of a name sort never leave the item array;
    // this holds between keys of one kind only. Equal entries keep their input order:
    // the index decides between them, which makes the order a total one (so runs sorted
    // apart merge into exactly what one stable sort gives).
    struct Item {
        uint64_t high, low;
        uint32_t index;
        uint8_t group; // 1 for a file when folders come first
        bool ascii;    // its name has an ASCII key (a mixed folder)
    };
    const bool prefixed = key == Key::Name && nameKeyed;
    auto fullBefore = [&](const Item& a, const Item& b) {
        const int c = entryOrder(a.index, b.index);
        return c != 0 ? c < 0 : a.index < b.index;
    };
    auto runBefore = [&](const Item& a, const Item& b) {
        if (prefixed) {
            if (a.group != b.group)
                return a.group < b.group;
            if (a.high != b.high)
                return a.high < b.high;
            if (a.low != b.low)
                return a.low < b.low;
        }
        return fullBefore(a, b);
    };
    // ASCII-keyed names first, each kind in input order: [first, split) and [split, last).
    std::vector<Item> items;
    hugePagesReserve(items, n);
    const bool mixed = nameKeys.mixed();
    for (int pass = mixed ? 1 : 0; pass >= 0; --pass)
        for (uint32_t i = 0; i < n; ++i) {
            if (mixed && nameKeys.asciiKeyed(i) != bool(pass))
                continue;
            Item item{0, 0, i, uint8_t(foldersFirst && !columns.dirs[i]), nameKeys.asciiKeyed(i)};
            if (prefixed) {
                const KeyPrefix p = keyPrefix(nameKeys[i]);
                item.high = ascending ? p.high : ~p.high;
                item.low = ascending ? p.low : ~p.low;
            }
            items.push_back(item);
        }
    Item* const first = items.data();
    Item* const last = first + n;
    Item* const split = mixed ? std::partition_point(first, last, [](const Item& item) { return item.ascii; }) : last;

    struct IndexSink {
        uint32_t* at;
        void put(const Item& item) { *at++ = item.index; }
        IndexSink skipped(size_t count) const { return {at + count}; }
    };
    struct ItemSink {
        Item* at;
        void put(const Item& item) { *at++ = item; }
        ItemSink skipped(size_t count) const { return {at + count}; }
    };
    const IndexSink out{order.data()};
    if (n < kParallelKeysFrom) {
        std::sort(first, split, runBefore);
        std::sort(split, last, runBefore);
        mergeGalloping<Item>(first, split, split, last, out, fullBefore);
        return order;
    }
    // A large folder: each kind's two halves sort on two threads, then merge (straight
    // into the order when there is one kind).
    Item* const firstHalf = first + (split - first) / 2;
    Item* const splitHalf = split + (last - split) / 2;
    runBoth(
        [&] {
            std::sort(firstHalf, split, runBefore);
            std::sort(splitHalf, last, runBefore);
        },
        [&] {
            std::sort(first, firstHalf, runBefore);
            std::sort(split, splitHalf, runBefore);
        });
    if (!mixed) {
        mergeRuns<Item>(first, firstHalf, firstHalf, last, out, runBefore);
        return order;
    }
    std::vector<Item> merged;
    hugePagesReserve(merged, n);
    merged.resize(n);
    Item* const mergedSplit = merged.data() + (split - first);
    mergeRuns<Item>(first, firstHalf, firstHalf, split, ItemSink{merged.data()}, runBefore);
    mergeRuns<Item>(split, splitHalf, splitHalf, last, ItemSink{mergedSplit}, runBefore);
    mergeRuns<Item>(merged.data(), mergedSplit, mergedSplit, merged.data() + n, out, fullBefore);
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
