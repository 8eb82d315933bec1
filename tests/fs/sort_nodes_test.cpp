#include "fs/collation.h"
#include "fs/sort_nodes.h"
#include "fs/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

DirNodePtr node(std::string name, bool dir = false, int64_t size = 0, std::optional<int64_t> date = std::nullopt,
                std::string kind = "")
{
    auto n = DirNode::make();
    n->name = std::move(name);
    n->isDir = dir;
    n->size = size;
    n->dateModified = date;
    n->kind = std::move(kind);
    return n;
}

std::vector<std::string> names(const std::vector<DirNodePtr>& nodes)
{
    std::vector<std::string> out;
    for (const auto& n : nodes)
        out.push_back(n->name + (n->kind.empty() ? "" : "#" + n->kind));
    return out;
}

BrondelSettings by(const char* key, bool ascending = true, bool foldersFirst = true)
{
    BrondelSettings s;
    s.sortBy = key;
    s.ascending = ascending;
    s.foldersFirst = foldersFirst;
    return s;
}

using V = std::vector<std::string>;

} // namespace

TEST(SortNodes, ByNameNumericAndCaseInsensitive)
{
    std::vector<DirNodePtr> in = {node("file10"), node("Banana"), node("file2"), node("apple"), node("Dir", true)};
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("name"))), (V{"Dir", "apple", "Banana", "file2", "file10"}));
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("bogus"))), (V{"Dir", "apple", "Banana", "file2", "file10"}));
    // Folders stay first when descending.
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("name", false))), (V{"Dir", "file10", "file2", "Banana", "apple"}));
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("name", true, false))), (V{"apple", "Banana", "Dir", "file2", "file10"}));
}

TEST(SortNodes, TiesReadAToZInBothDirectionsAndEqualNamesKeepOrder)
{
    std::vector<DirNodePtr> in = {node("b", true, 0, 100), node("a", true, 0, 100), node("c", true, 0, 200),
                                  node("old", false, 5)};
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("date", false))), (V{"c", "a", "b", "old"}));
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("date", true))), (V{"a", "b", "c", "old"}));
    // Undated nodes are the oldest.
    std::vector<DirNodePtr> dated = {node("new", false, 0, 5), node("none"), node("neg", false, 0, -5)};
    EXPECT_EQ(names(sortNodes(dated, SortPlace::Folder, by("date"))), (V{"none", "neg", "new"}));

    std::vector<DirNodePtr> same = {node("x", false, 1, 7), node("x", false, 1, 7), node("X", false, 1, 7)};
    for (int i = 0; i < 3; ++i)
        same[i]->path = std::to_string(i);
    for (const char* key : {"name", "size", "kind", "date"})
        for (bool asc : {true, false}) {
            auto sorted = sortNodes(same, SortPlace::Folder, by(key, asc));
            EXPECT_EQ(sorted[0]->path + sorted[1]->path + sorted[2]->path, "012") << key << asc;
        }
}

TEST(SortNodes, BySizeAndKind)
{
    std::vector<DirNodePtr> in = {node("b", false, 10, {}, "TXT file"), node("a", false, 10, {}, "PDF file"),
                                  node("c", false, 5, {}, "pdf file")};
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("size", false))), (V{"a#PDF file", "b#TXT file", "c#pdf file"}));
    EXPECT_EQ(names(sortNodes(in, SortPlace::Folder, by("kind"))), (V{"a#PDF file", "c#pdf file", "b#TXT file"}));
}

TEST(SortNodes, ComputerRootIsBySizeAloneLargestFirst)
{
    std::vector<DirNodePtr> in = {node("Home", true, 0), node("small", true, 10), node("z", false, 10),
                                  node("big", true, 99), node("Apps", true, 0)};
    EXPECT_EQ(names(sortNodes(in, SortPlace::ComputerRoot, by("name"))), (V{"big", "small", "z", "Home", "Apps"}));
}

TEST(SortNodes, LargeFoldersSortLikeSmallOnes)
{
    // Over the size where keys and key prefixes are used (and where keys are made on two
    // threads), ASCII-only and mixed, in both directions, with folders and equal names:
    // every neighbour pair is in the order a direct comparison gives, and equal names
    // keep their input order.
    const NameCollator& c = NameCollator::forThread();
    for (int count : {300, 20000})
    for (const char* accent : {"", "\u00e9"}) {
        std::vector<DirNodePtr> in;
        for (int i = count; i > 0; --i) {
            std::string name = (i % 3 ? std::string("file_0") : std::string(accent) + "t") + std::to_string(i % 150);
            in.push_back(node(name, i % 7 == 0));
            in.back()->path = std::to_string(i);
        }
        for (bool ascending : {true, false}) {
            auto sorted = sortNodes(in, SortPlace::Folder, by("name", ascending));
            for (size_t i = 1; i < sorted.size(); ++i) {
                const auto &a = *sorted[i - 1], &b = *sorted[i];
                if (a.isDir != b.isDir) {
                    EXPECT_TRUE(a.isDir) << b.name;
                    continue;
                }
                int order = c.compare(a.name, b.name);
                EXPECT_TRUE(ascending ? order <= 0 : order >= 0) << a.name << " / " << b.name;
                if (order == 0)
                    EXPECT_GT(std::stoi(a.path), std::stoi(b.path)) << a.name; // input order kept
            }
        }
    }
}

namespace {

// Names that take every path of the comparison: case, accents (precomposed and
// combining), digits of other scripts, punctuation, control bytes, bytes that are not
// UTF-8, the empty name and names of 255 bytes.
std::vector<std::string> trickyNames()
{
    std::vector<std::string> names = {
        "", "a", "A", "\u00e1", "\u00c1", "\u00e4", "b", "B", "file2", "file10", "file02", "file010", "File1",
        "file\u0661\u0662", "file12", "r\u00e9sum\u00e9", "resume", "Resume", "R\u00c9SUM\u00c9", "re\u0301sume\u0301",
        "na\u00efve caf\u00e9", "\u0444\u0430\u0439\u043b", "\u65e5\u672c\u8a9e", "emoji \U0001F600", "Stra\u00dfe",
        "strasse", "x-1", "x_1", "x 1", "x.1", "-x", "_x", ".hidden", "~tilde", "a\x01" "b", "ab", "a\x7f" "b",
        "bad\xff\xfename", "latin1_caf\xe9", "trunc\xe6\x97", "\x80", "0", "00", "000", "0a", "1", "01", "a0", "a00",
        "1.10", "1.9", "\xef\xac\x81le", "file", "\u2167", "x\u00b2", "IMG_0001.JPG", "img_1.jpg", "report_0042.txt",
        "report_42.txt", "r\u00e9port_42.txt", std::string(255, 'z'), std::string(254, '9') + "9",
        "a" + std::string(254, '1'), std::string(85, 'x') + std::string(85, '\xff') + std::string(85, 'y'),
        std::string(63, 'a') + "\u00e9" + std::string(60, 'b'),
    };
    return names;
}

// The order that ICU's own sort keys give, stable, folders first: what every path of
// the sort must reproduce exactly.
std::vector<uint32_t> icuOrder(const SortColumns& columns, const BrondelSettings& settings)
{
    const NameCollator& c = NameCollator::forThread();
    std::vector<std::string> keys;
    for (std::string_view name : columns.names)
        keys.push_back(c.sortKey(name));
    std::vector<uint32_t> order(columns.names.size());
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        if (settings.foldersFirst && columns.dirs[a] != columns.dirs[b])
            return bool(columns.dirs[a]);
        if (settings.sortBy == "date" && columns.dates[a] != columns.dates[b])
            return settings.ascending == (columns.dates[a] < columns.dates[b]);
        if (settings.sortBy == "date" || settings.ascending)
            return keys[a] < keys[b];
        return keys[b] < keys[a];
    });
    return order;
}

} // namespace

TEST(SortNodes, EveryFolderSizeGivesIcusExactOrder)
{
    // Small folders compare directly; from 64 names keys are made (ASCII keys for ASCII
    // names in a mixed folder, whose two runs are merged through ICU); from 16,384 on two
    // threads. Each must give the very order of ICU's keys, ties in input order.
    std::mt19937 rng(11);
    const std::vector<std::string> tricky = trickyNames();
    const char* pieces[] = {"a", "B", "z", "0", "7", "12", "_", " ", ".", "-", "\u00e9", "e\u0301", "\u0661",
                            "\u00df", "\xff", "\u0444", "report", "IMG"};
    std::vector<std::string> random;
    for (int i = 0; i < 20000; ++i) {
        std::string name;
        for (size_t k = rng() % 5; k > 0; --k)
            name += pieces[rng() % std::size(pieces)];
        random.push_back(name);
    }
    struct Case {
        size_t count;
        bool withRandom;
    };
    for (Case set : {Case{tricky.size(), false}, Case{200, true}, Case{20000, true}}) {
        std::vector<std::string> pool;
        for (size_t i = 0; pool.size() < set.count; ++i)
            pool.push_back(set.withRandom && i % 3 ? random[i % random.size()] : tricky[i % tricky.size()]);
        SortColumns columns;
        for (size_t i = 0; i < pool.size(); ++i) {
            columns.names.push_back(pool[i]);
            columns.dirs.push_back(i % 11 == 0);
            columns.dates.push_back(int64_t(i % 5));
        }
        for (const char* key : {"name", "date"})
            for (bool ascending : {true, false})
                for (bool foldersFirst : {true, false}) {
                    const BrondelSettings settings = by(key, ascending, foldersFirst);
                    EXPECT_EQ(sortOrder(columns, SortPlace::Folder, settings), icuOrder(columns, settings))
                        << pool.size() << " names by " << key << (ascending ? " up" : " down")
                        << (foldersFirst ? " folders first" : "");
                }
    }
}

TEST(SortNodes, AsciiFolderGivesIcusExactOrder)
{
    // All-ASCII folders take the ASCII table alone, below and above the key threshold.
    std::vector<std::string> pool;
    for (const std::string& name : trickyNames())
        if (asciiOnly(name))
            pool.push_back(name);
    for (size_t count : {pool.size(), size_t(20000)}) {
        SortColumns columns;
        for (size_t i = 0; i < count; ++i) {
            columns.names.push_back(pool[(i * 7) % pool.size()]);
            columns.dirs.push_back(i % 13 == 0);
        }
        for (bool ascending : {true, false}) {
            const BrondelSettings settings = by("name", ascending);
            EXPECT_EQ(sortOrder(columns, SortPlace::Folder, settings), icuOrder(columns, settings)) << count;
        }
    }
}
