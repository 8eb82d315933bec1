// The compact store: paths built from parents, the DirNode copy, interned kinds, and the
// names-first read whose status is filled in afterwards (visible rows first, cancel,
// entries gone meanwhile).

#include "fs/kind_table.h"
#include "fs/node_meta_fill.h"
#include "fs/node_store.h"
#include "fs/scanner.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

const NodeRecord* childNamed(const NodeRecord& folder, std::string_view name)
{
    for (uint32_t i = 0; i < folder.childCount; ++i)
        if (folder.children[i].nameView() == name)
            return &folder.children[i];
    return nullptr;
}

// Every record below `folder` points back at it, and loaded folders hold their children.
void expectConsistent(const NodeRecord& folder)
{
    for (uint32_t i = 0; i < folder.childCount; ++i) {
        const NodeRecord& child = folder.children[i];
        EXPECT_EQ(child.parent, &folder);
        EXPECT_EQ(std::strlen(child.name), child.nameLength); // NUL-terminated in the arena
        if (!child.isDir())
            EXPECT_TRUE(child.flags & kNodeLoaded);
        expectConsistent(child);
    }
}

// The names of the fstatat calls made, in order.
std::mutex g_statsLock;
std::vector<std::string> g_stats;
int recordingFstatat(int dirfd, const char* path, struct stat* st, int flags)
{
    {
        std::lock_guard lock(g_statsLock);
        g_stats.push_back(path);
    }
    return sysCallsReal().fstatat(dirfd, path, st, flags);
}

// A folder's size as a small folder's: the scanner then reserves too little and grows
// its arrays while it reads.
int smallFolderFstat(int fd, struct stat* st)
{
    const int rc = sysCallsReal().fstat(fd, st);
    if (rc == 0 && S_ISDIR(st->st_mode))
        st->st_size = 64 * 1024 + 1;
    return rc;
}

} // namespace

TEST(NodeStore, PathsJoinAsTheScannerDoesAndTheDirNodeCopyMatches)
{
    TempTree t;
    t.file("top/a.txt", "abc");
    t.file("top/sub/deep.pdf", "12345");
    t.symlink("top/link", "a.txt");
    const BrondelSettings settings;
    for (const std::string& root : {t.path("top"), t.path("top") + "/"}) {
        NodeStorePtr store = Scanner(settings).scanStore(root, 3);
        const NodeRecord& top = store->root();
        expectConsistent(top);
        const NodeRecord* sub = childNamed(top, "sub");
        ASSERT_TRUE(sub);
        const NodeRecord* deep = childNamed(*sub, "deep.pdf");
        ASSERT_TRUE(deep);
        EXPECT_EQ(store->path(*deep), root + "/sub/deep.pdf"); // "top//sub" as the scanner always joined
        EXPECT_EQ(nodeKindText(*deep), "PDF file");
        EXPECT_EQ(nodeKindText(*childNamed(top, "link")), "Alias");
        EXPECT_EQ(nodeKindText(*sub), "Folder");
        EXPECT_EQ(deep->size, 5);

        DirNodePtr copy = nodeStoreToDirNode(*store, top);
        DirNodePtr scanned = Scanner(settings).scan(root, 3);
        ASSERT_EQ(copy->children.size(), scanned->children.size());
        for (size_t i = 0; i < copy->children.size(); ++i) {
            EXPECT_EQ(copy->children[i]->path, scanned->children[i]->path);
            EXPECT_EQ(copy->children[i]->kind, scanned->children[i]->kind);
            EXPECT_EQ(copy->children[i]->size, scanned->children[i]->size);
        }
    }
    // At "/" a child's path is "/" plus its name.
    NodeStore rootStore("/");
    NodeRecord* child = rootStore.allocate(1);
    child->parent = &rootStore.root();
    child->name = rootStore.addNames(std::string_view("usr\0", 4));
    child->nameLength = 3;
    EXPECT_EQ(rootStore.path(*child), "/usr");
    EXPECT_GT(rootStore.bytesHeld(), 0u);
}

TEST(NodeStore, KindsAreInternedOncePerText)
{
    const uint16_t png = kindOfEntry("photo.png", EntryType::File);
    EXPECT_EQ(kindOfEntry("other.PNG", EntryType::File), png); // the same upper-cased extension
    EXPECT_EQ(kindText(png), "PNG file");
    EXPECT_EQ(kindText(kindOfEntry("Makefile", EntryType::File)), "Document");
    EXPECT_EQ(kindText(kindOfEntry("name.", EntryType::File)), "Document");
    EXPECT_EQ(kindText(kindOfEntry("x.png", EntryType::Link)), "Alias");
    EXPECT_EQ(kindText(kindOfEntry("x.png", EntryType::Folder)), "Folder");
    EXPECT_EQ(kindIntern("PNG file"), png);
    EXPECT_EQ(kindText(kKindFromName), "");
}

TEST(NodeMetaFill, NamesComeFirstAndTheStatusFollowsVisibleRowsFirst)
{
    TempTree t;
    for (int i = 0; i < 600; ++i)
        t.file("big/f" + std::to_string(1000 + i) + ".txt", std::string(size_t(i % 7), 'x'));
    t.dir("big/folder");
    t.symlink("big/zlink", "folder");
    t.setMtime("big/f1500.txt", 1'000'000'000);
    NodeStorePtr store = Scanner(BrondelSettings{}).scanStore(t.path("big"), 1, ScanMeta::NamesFirst);
    NodeRecord& folder = store->root();
    ASSERT_EQ(folder.childCount, 602u);
    // Folders first, then by name; a link to a folder was asked at once (it is a folder).
    EXPECT_EQ(folder.children[0].nameView(), "folder");
    EXPECT_EQ(folder.children[1].nameView(), "zlink");
    EXPECT_TRUE(folder.children[1].isDir());
    EXPECT_TRUE(nodeMeta(folder.children[1]) & kMetaKnown);
    EXPECT_FALSE(nodeMeta(folder.children[2]) & kMetaKnown); // a file waits for the fill

    SysCalls calls = sysCallsReal();
    calls.fstatat = recordingFstatat;
    SysCallsOverride seam(calls);
    g_stats.clear();
    MetaFillState state;
    state.setVisible(500, 509); // rows of f1498 … f1507
    int progressed = 0, finished = 0;
    nodeMetaFill(*store, folder, state, [&](bool done) { ++(done ? finished : progressed); });
    EXPECT_EQ(finished, 1);
    EXPECT_TRUE(state.finished());
    ASSERT_GE(g_stats.size(), 10u);
    for (size_t i = 0; i < 10; ++i)
        EXPECT_EQ(g_stats[i], std::string(folder.children[500 + i].name)); // the visible rows first
    for (uint32_t i = 0; i < folder.childCount; ++i)
        ASSERT_TRUE(nodeMeta(folder.children[i]) & kMetaHasDate) << folder.children[i].name;
    const NodeRecord* dated = childNamed(folder, "f1500.txt");
    EXPECT_EQ(dated->date, 1'000'000'000);
    EXPECT_EQ(dated->size, 500 % 7);
    EXPECT_EQ(g_stats.size(), 601u); // each entry once; the link was asked with the names
}

TEST(NodeMetaFill, StopsWhenCancelledAndKeepsRowsOfVanishedEntries)
{
    TempTree t;
    for (int i = 0; i < 40; ++i)
        t.file("d/n" + std::to_string(i));
    NodeStorePtr store = Scanner(BrondelSettings{}).scanStore(t.path("d"), 1, ScanMeta::NamesFirst);
    NodeRecord& folder = store->root();
    ::unlink(t.path("d/n7").c_str());

    MetaFillState cancelled;
    cancelled.cancel();
    bool called = false;
    nodeMetaFill(*store, folder, cancelled, [&](bool) { called = true; });
    EXPECT_FALSE(called);
    EXPECT_FALSE(cancelled.finished());

    MetaFillState state;
    nodeMetaFill(*store, folder, state, [](bool) {});
    const NodeRecord* gone = childNamed(folder, "n7");
    ASSERT_TRUE(gone);
    EXPECT_EQ(nodeMeta(*gone), kMetaKnown); // known: no size, no date
    EXPECT_EQ(nodeMeta(*childNamed(folder, "n8")), kMetaKnown | kMetaHasDate);

    // A folder that cannot be opened any more: every row is settled at once.
    NodeStorePtr again = Scanner(BrondelSettings{}).scanStore(t.path("d"), 1, ScanMeta::NamesFirst);
    SysCalls calls = sysCallsReal();
    calls.openat = [](int, const char*, int, mode_t) {
        errno = EACCES;
        return -1;
    };
    SysCallsOverride seam(calls);
    MetaFillState locked;
    bool done = false;
    nodeMetaFill(*again, again->root(), locked, [&](bool finished) { done = finished; });
    EXPECT_TRUE(done);
    for (uint32_t i = 0; i < again->root().childCount; ++i)
        EXPECT_TRUE(nodeMeta(again->root().children[i]) & kMetaKnown);
}

TEST(NodeStore, ALargeListingReadOnTwoThreadsEqualsTheOneThreadRead)
{
    // Past the size where records are placed and kinds worked out on two threads, where
    // status queries start while the folder is read, and where the names read are kept
    // by the store instead of copied: every record must be what the one-thread read
    // gives, with the kind its name and type call for; also when the folder's size
    // foretells too few entries, so that the arrays grow while the queries run.
    TempTree t;
    for (int i = 0; i < 800; ++i)
        t.file("long/" + std::string(200, 'n') + std::to_string(i) + ".txt", "ab");
    const char* extensions[] = {".txt", ".tar.gz", "", ".PDF", ".\u00e9t\u00e9", "."};
    for (int i = 0; i < 6000; ++i) {
        const std::string name = "top/entry_with_a_longer_name_" + std::to_string(i) + extensions[i % 6];
        if (i % 500 == 0)
            t.dir(name);
        else if (i % 700 == 1)
            t.symlink(name, i % 2 ? "entry_with_a_longer_name_0" : "missing");
        else
            t.file(name, std::string(size_t(i % 5), 'x'));
    }
    const BrondelSettings settings;
    SysCalls calls = sysCallsReal();
    calls.fstat = smallFolderFstat;
    for (bool understated : {false, true})
    for (const auto& [folder, count] : {std::pair{"top", 6000u}, std::pair{"long", 800u}})
    for (ScanMeta meta : {ScanMeta::Full, ScanMeta::NamesFirst}) {
        std::optional<SysCallsOverride> seam;
        if (understated)
            seam.emplace(calls);
        Scanner one(settings);
        one.setThreads(1);
        NodeStorePtr expected = one.scanStore(t.path(folder), 1, meta);
        NodeStorePtr store = Scanner(settings).scanStore(t.path(folder), 1, meta);
        const NodeRecord& top = store->root();
        ASSERT_EQ(top.childCount, count);
        ASSERT_EQ(expected->root().childCount, count);
        expectConsistent(top);
        for (uint32_t i = 0; i < top.childCount; ++i) {
            const NodeRecord& r = top.children[i];
            const NodeRecord& e = expected->root().children[i];
            ASSERT_EQ(r.nameView(), e.nameView()) << i;
            EXPECT_EQ(r.flags, e.flags) << r.name;
            EXPECT_EQ(r.kind, e.kind) << r.name;
            EXPECT_EQ(r.size, e.size) << r.name;
            EXPECT_EQ(nodeMeta(r), nodeMeta(e)) << r.name;
            const EntryType type = r.flags & kNodeAlias ? EntryType::Link : r.isDir() ? EntryType::Folder : EntryType::File;
            EXPECT_EQ(r.kind, kindOfEntry(r.nameView(), type)) << r.name;
            EXPECT_EQ(store->path(r), t.path(folder) + "/" + std::string(r.nameView()));
        }
    }
}
