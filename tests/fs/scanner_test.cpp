#include "fs/scanner.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

std::vector<std::string> childNames(const DirNodePtr& n)
{
    std::vector<std::string> out;
    for (const auto& c : n->children)
        out.push_back(c->name);
    return out;
}

// Invariants every scanned tree keeps, checked after each scan.
void expectConsistent(const DirNode& n, int64_t depthLeft)
{
    EXPECT_FALSE(n.isSectionHeader);
    EXPECT_FALSE(n.isPinned);
    EXPECT_FALSE(n.hue);
    if (!n.isDir) {
        EXPECT_TRUE(n.childrenLoaded) << n.path;
        EXPECT_TRUE(n.children.empty()) << n.path;
    } else {
        EXPECT_EQ(n.size, 0) << n.path;
        if (depthLeft == 0)
            EXPECT_FALSE(n.childrenLoaded) << n.path;
    }
    for (const auto& c : n.children)
        expectConsistent(*c, depthLeft - 1);
}

using V = std::vector<std::string>;

} // namespace

TEST(Scanner, RootsAndDepth)
{
    TempTree tree;
    tree.file("a/b/c.txt", "xyz");
    BrondelSettings settings;
    Scanner scanner(settings);

    auto zero = scanner.scan(tree.root(), 0);
    EXPECT_EQ(zero->name, tree.root().substr(tree.root().rfind('/') + 1));
    EXPECT_FALSE(zero->childrenLoaded);
    EXPECT_TRUE(zero->children.empty());

    auto trailing = scanner.scan(tree.root() + "/", 1);
    EXPECT_EQ(trailing->path, tree.root() + "/");
    ASSERT_EQ(trailing->children.size(), 1u);
    EXPECT_EQ(trailing->children[0]->path, tree.root() + "//a");
    EXPECT_FALSE(trailing->children[0]->childrenLoaded);

    auto deep = scanner.scan(tree.root(), 3);
    expectConsistent(*deep, 3);
    ASSERT_EQ(deep->children[0]->children[0]->children.size(), 1u);
    const auto& file = deep->children[0]->children[0]->children[0];
    EXPECT_EQ(file->size, 3);
    EXPECT_EQ(file->kind, "TXT file");

    auto onFile = scanner.scan(tree.path("a/b/c.txt"), 1);
    EXPECT_TRUE(onFile->isDir);
    EXPECT_TRUE(onFile->children.empty());
    EXPECT_TRUE(onFile->kind.empty());

    auto slash = scanner.scan("/", 1);
    EXPECT_EQ(slash->name, "/");
    for (const auto& c : slash->children)
        EXPECT_EQ(c->path, "/" + c->name);
}

TEST(Scanner, HiddenEntriesAndKinds)
{
    TempTree tree;
    tree.dir(".git");
    tree.file(".DS_Store");
    tree.file("Makefile");
    tree.file("photo.JPG");
    tree.file("archive.tar.gz");
    tree.file("caf\u00e9.\u00e9t\u00e9");
    tree.dir("Safari.app");
    tree.file("bad\xff\xfename.txt", "12345");
    BrondelSettings settings;
    auto root = Scanner(settings).scan(tree.root(), 1);
    EXPECT_EQ(childNames(root), (V{"Safari.app", "archive.tar.gz", "bad\xff\xfename.txt", "caf\u00e9.\u00e9t\u00e9",
                                   "Makefile", "photo.JPG"}));
    std::map<std::string, std::string> kinds;
    for (const auto& c : root->children)
        kinds[c->name] = c->kind;
    EXPECT_EQ(kinds["Safari.app"], "Folder");
    EXPECT_EQ(kinds["Makefile"], "Document");
    EXPECT_EQ(kinds["photo.JPG"], "JPG file");
    EXPECT_EQ(kinds["archive.tar.gz"], "GZ file");
    EXPECT_EQ(kinds["caf\u00e9.\u00e9t\u00e9"], "\u00c9T\u00c9 file");
    EXPECT_EQ(root->children[2]->size, 5); // a name that is not UTF-8 is kept byte for byte

    settings.showHidden = true;
    auto all = Scanner(settings).scan(tree.root(), 1);
    EXPECT_EQ(all->children.size(), 8u);
    EXPECT_EQ(all->children[0]->name, ".git");

    EXPECT_EQ(nodeExtKind(".bashrc"), "Document");
    EXPECT_EQ(nodeExtKind("name."), "Document");
    EXPECT_EQ(nodeExtKind("report.pdf"), "PDF file");
}

TEST(Scanner, LinksDatesAndUnreadableEntries)
{
    TempTree tree;
    tree.file("target/inner.txt");
    tree.symlink("link", "target");
    tree.symlink("dangling", "nowhere");
    tree.symlink("loop", "."); // a cycle: followed until the depth runs out
    tree.file("dated");
    tree.setMtime("dated", 1700000000, 999999999);
    BrondelSettings settings;
    auto root = Scanner(settings).scan(tree.root(), 4);
    expectConsistent(*root, 4);
    std::map<std::string, DirNodePtr> by;
    for (const auto& c : root->children)
        by[c->name] = c;
    EXPECT_TRUE(by["link"]->isDir);
    EXPECT_EQ(by["link"]->kind, "Alias");
    EXPECT_EQ(by["link"]->size, 0);
    EXPECT_EQ(childNames(by["link"]), (V{"inner.txt"}));
    EXPECT_FALSE(by["dangling"]->isDir);
    EXPECT_EQ(by["dangling"]->kind, "Alias");
    EXPECT_FALSE(by["dangling"]->dateModified);
    EXPECT_EQ(by["dated"]->dateModified, 1700000000);
    // loop -> loop -> loop: three levels below the root, then unread.
    auto l = by["loop"];
    for (int i = 0; i < 2; ++i) {
        auto it = std::find_if(l->children.begin(), l->children.end(), [](auto& c) { return c->name == "loop"; });
        ASSERT_NE(it, l->children.end());
        l = *it;
    }
    auto last = std::find_if(l->children.begin(), l->children.end(), [](auto& c) { return c->name == "loop"; });
    ASSERT_NE(last, l->children.end());
    EXPECT_FALSE((*last)->childrenLoaded);

    DirNode missing;
    missing.path = tree.path("missing");
    missing.isDir = true;
    Scanner(settings).loadChildren(missing);
    EXPECT_TRUE(missing.childrenLoaded); // never read again
}

TEST(Scanner, ThreadedAndFilteredScansPrintTheSameTree)
{
    TempTree tree;
    for (int i = 0; i < 30; ++i)
        tree.sized("d" + std::to_string(i % 5) + "/sub" + std::to_string(i % 3) + "/Report_" + std::to_string(i) + ".txt", i);
    tree.file("d1/other.txt", "zz");
    BrondelSettings settings;
    auto flatten = [](const DirNodePtr& root, const NameFilter& f) {
        std::vector<DirNodePtr> hits;
        filterWalk(root, f, hits);
        std::string out;
        for (auto& n : hits)
            out += n->path + " " + std::to_string(n->size) + " " + (n->isDir ? "d" : "f") + "\n";
        return out;
    };
    NameFilter filter("rePORT");
    Scanner plain(settings);
    plain.setThreads(1);
    Scanner fast(settings);
    fast.setThreads(2);
    fast.setSearchFilter(&filter);
    std::string expected = flatten(plain.scan(tree.root(), 64), filter);
    EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 30);
    EXPECT_EQ(flatten(fast.scan(tree.root(), 64), filter), expected);
    EXPECT_TRUE(NameFilter("\u00c9T\u00c9").matches("caf\u00e9.\u00e9t\u00e9"));
    EXPECT_TRUE(NameFilter("tmp").matches("TMP"));
    EXPECT_TRUE(NameFilter("\xff").matches("bad\xff"));
}
