#include "fs/collation.h"
#include "fs/sort_nodes.h"

#include <gtest/gtest.h>

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
