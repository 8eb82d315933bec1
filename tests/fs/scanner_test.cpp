#include "fs/scanner.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <set>
#include <unistd.h>

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

// The node at `rel` ("a/b/c") below a scanned root, or null.
DirNodePtr nodeAt(const DirNodePtr& root, const std::string& rel)
{
    DirNodePtr node = root;
    size_t from = 0;
    while (node && from <= rel.size()) {
        const size_t slash = std::min(rel.find('/', from), rel.size());
        const std::string name = rel.substr(from, slash - from);
        auto it = std::find_if(node->children.begin(), node->children.end(), [&](auto& c) { return c->name == name; });
        node = it == node->children.end() ? nullptr : *it;
        from = slash + 1;
    }
    return node;
}

size_t countNodes(const DirNode& node)
{
    size_t n = 1;
    for (const auto& c : node.children)
        n += countNodes(*c);
    return n;
}

// Fault injection through the system-call seam: names to report as vanished, folders
// that refuse to open, and a folder read that fails after its first batch.
const char* g_vanishPrefix = "";
const char* g_lockedName = "";
int g_lockedErrno = 0;

int fstatatVanishing(int dirfd, const char* path, struct stat* st, int flags)
{
    if (std::strncmp(path, g_vanishPrefix, std::strlen(g_vanishPrefix)) == 0) {
        errno = ENOENT;
        return -1;
    }
    return sysCallsReal().fstatat(dirfd, path, st, flags);
}

int openatLocked(int dirfd, const char* path, int flags, mode_t mode)
{
    const char* slash = std::strrchr(path, '/');
    if (std::strcmp(slash ? slash + 1 : path, g_lockedName) == 0) {
        errno = g_lockedErrno;
        return -1;
    }
    return sysCallsReal().openat(dirfd, path, flags, mode);
}

// Folder descriptors open at once, and the most seen.
std::mutex g_fdLock;
std::set<int> g_openFds;
size_t g_mostOpen = 0;

int openatCounted(int dirfd, const char* path, int flags, mode_t mode)
{
    const int fd = sysCallsReal().openat(dirfd, path, flags, mode);
    std::lock_guard guard(g_fdLock);
    if (fd >= 0 && (flags & O_DIRECTORY)) {
        g_openFds.insert(fd);
        g_mostOpen = std::max(g_mostOpen, g_openFds.size());
    }
    return fd;
}

int closeCounted(int fd)
{
    {
        std::lock_guard guard(g_fdLock);
        g_openFds.erase(fd);
    }
    return sysCallsReal().close(fd);
}

// Hands out what the folder holds, then fails where the end would be reported.
ssize_t getdentsFailingAtEnd(int fd, void* buf, size_t count)
{
    const ssize_t n = sysCallsReal().getdents64(fd, buf, count);
    if (n == 0) {
        errno = EIO;
        return -1;
    }
    return n;
}

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
    tree.symlink("loop", "."); // a cycle: listed, never entered
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
    EXPECT_TRUE(by["loop"]->isDir);
    EXPECT_EQ(by["loop"]->kind, "Alias");
    EXPECT_TRUE(by["loop"]->children.empty());
    EXPECT_FALSE(by["loop"]->childrenLoaded); // can still be opened on its own

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

// Links to folders are listed as "Alias" folders and followed, except to a folder that
// is already on the way down (which would repeat the tree without end).
TEST(Scanner, LinksAreFollowedUnlessTheyLeadBackUp)
{
    struct Case {
        const char* what;
        std::vector<std::pair<const char*, const char*>> links; // where, target
        const char* check;    // the link looked at
        bool entered;
        const char* inside;   // a name its children then hold
    };
    const Case cases[] = {
        {"a link to its own folder", {{"a/self", "."}}, "a/self", false, ""},
        {"two links to the folder", {{"a/one", "."}, {"a/two", "."}}, "a/two", false, ""},
        {"a link to the parent", {{"a/b/up", ".."}}, "a/b/up", false, ""},
        {"a link to the grandparent", {{"a/b/c/top", "../.."}}, "a/b/c/top", false, ""},
        {"a link to the scan root", {{"a/b/root", "../.."}}, "a/b/root", false, ""},
        {"a link to a sibling", {{"a/sib", "../s"}}, "a/sib", true, "s.txt"},
        {"a link into another branch's path", {{"p/q/toy", "../../a/b"}}, "p/q/toy", true, "c"},
    };
    for (const Case& c : cases) {
        TempTree tree;
        tree.dir("a/b/c");
        tree.file("s/s.txt");
        tree.dir("p/q");
        for (const auto& [where, target] : c.links)
            tree.symlink(where, target);
        BrondelSettings settings;
        for (int threads : {1, 2}) {
            Scanner scanner(settings);
            scanner.setThreads(threads);
            auto root = scanner.scan(tree.root(), 10); // deep enough to see any repetition
            DirNodePtr link = nodeAt(root, c.check);
            ASSERT_TRUE(link) << c.what;
            EXPECT_TRUE(link->isDir) << c.what;
            EXPECT_EQ(link->kind, "Alias") << c.what;
            EXPECT_EQ(link->childrenLoaded, c.entered) << c.what;
            EXPECT_EQ(nodeAt(link, c.inside) != nullptr, c.entered) << c.what;
            EXPECT_LT(countNodes(*root), 40u) << c.what; // nothing repeats itself
        }
    }
}

TEST(Scanner, EntriesGoneBeforeTheirStatusAreLeftOut)
{
    TempTree tree;
    tree.file("gone.txt");
    tree.dir("gone-dir");
    tree.file("kept.txt");
    tree.symlink("dangling", "nowhere"); // its target is missing, the link itself is not
    BrondelSettings settings;
    SysCalls calls = sysCallsReal();
    calls.fstatat = fstatatVanishing;
    g_vanishPrefix = "gone";
    SysCallsOverride override(calls);
    EXPECT_EQ(childNames(Scanner(settings).scan(tree.root(), 1)), (V{"dangling", "kept.txt"}));
    EXPECT_EQ(childNames(Scanner(settings).scan(tree.root(), 3)), (V{"dangling", "kept.txt"}));
}

TEST(Scanner, FoldersThatCannotBeReadCarryTheirError)
{
    TempTree tree;
    tree.file("locked/secret.txt");
    tree.file("open/a.txt");
    BrondelSettings settings;
    SysCalls calls = sysCallsReal();
    calls.openat = openatLocked;
    g_lockedName = "locked";
    for (int error : {EACCES, ENOENT}) {
        g_lockedErrno = error;
        SysCallsOverride override(calls);
        auto root = Scanner(settings).scan(tree.path("locked"), 1);
        EXPECT_EQ(root->readError, error);
        EXPECT_TRUE(root->children.empty());

        DirNode node;
        node.path = tree.path("locked");
        node.isDir = true;
        Scanner(settings).loadChildren(node);
        EXPECT_EQ(node.readError, error);
        EXPECT_TRUE(node.childrenLoaded);

        auto deep = Scanner(settings).scan(tree.root(), 3);
        EXPECT_EQ(deep->readError, 0);
        EXPECT_EQ(nodeAt(deep, "locked")->readError, error); // listed, with why it is empty
        EXPECT_EQ(nodeAt(deep, "open")->readError, 0);
        EXPECT_TRUE(nodeAt(deep, "open/a.txt"));
    }

    calls = sysCallsReal();
    calls.getdents64 = getdentsFailingAtEnd;
    SysCallsOverride override(calls);
    auto root = Scanner(settings).scan(tree.root(), 1);
    EXPECT_EQ(root->readError, EIO);
    EXPECT_EQ(childNames(root), (V{"locked", "open"})); // what was read before the error stays
}

// Folders are opened relative to their parents, so a tree deeper than the longest path
// the system takes is walked to its end.
TEST(Scanner, WalksBelowTheLongestPath)
{
    TempTree tree;
    const std::string name(200, 'd');
    int fd = ::open(tree.root().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    constexpr int kLevels = 30; // 30 * 201 bytes: beyond PATH_MAX
    for (int i = 0; i < kLevels; ++i) {
        ASSERT_EQ(::mkdirat(fd, name.c_str(), 0755), 0);
        int next = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(fd);
        ASSERT_GE(next, 0);
        fd = next;
    }
    int leaf = ::openat(fd, "Needle.txt", O_WRONLY | O_CREAT, 0644);
    ASSERT_GE(leaf, 0);
    ::close(leaf);
    ::close(fd);

    BrondelSettings settings;
    NameFilter filter("needle");
    for (int threads : {1, 2}) {
        Scanner scanner(settings);
        scanner.setThreads(threads);
        scanner.setSearchFilter(&filter);
        std::vector<DirNodePtr> hits;
        filterWalk(scanner.scan(tree.root(), 64), filter, hits);
        ASSERT_EQ(hits.size(), 1u) << threads;
        EXPECT_GT(hits[0]->path.size(), size_t(PATH_MAX));
        EXPECT_EQ(hits[0]->kind, "TXT file"); // its status was read too
        EXPECT_TRUE(hits[0]->dateModified);
    }
}

// A deep tree with a second folder at every level keeps work waiting at every level; the
// walk still holds only a few folder descriptors, not one per level.
TEST(Scanner, HoldsFewDescriptorsInDeepTrees)
{
    TempTree tree;
    std::string rel = "d";
    constexpr int kLevels = 48;
    for (int i = 0; i < kLevels; ++i) {
        tree.dir(rel + "/side");
        rel += "/d";
    }
    tree.file(rel + "/bottom.txt");
    SysCalls calls = sysCallsReal();
    calls.openat = openatCounted;
    calls.close = closeCounted;
    SysCallsOverride override(calls);
    BrondelSettings settings;
    for (int threads : {1, 2}) {
        g_mostOpen = 0;
        Scanner scanner(settings);
        scanner.setThreads(threads);
        auto root = scanner.scan(tree.root(), 64);
        EXPECT_TRUE(nodeAt(root, rel + "/bottom.txt")) << threads;
        EXPECT_LE(g_mostOpen, size_t(kLevels / 4)) << threads;
        EXPECT_TRUE(g_openFds.empty()) << threads; // and closes every one
    }
}
