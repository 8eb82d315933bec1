#pragma once
// The compact form of a scanned tree. A folder of a million entries becomes a million
// small fixed-size records and one arena of names, not a million heap objects:
// - records live in chunks the store owns and never move once written, so a record is
//   addressed by pointer; a folder's children are one contiguous run of records, in
//   display order, written by the one thread that read the folder;
// - names live in the store's arena, NUL-terminated (ready for system calls); a
//   record's path is its parent's path plus its name, worked out when asked;
// - kinds ("PDF file", "Folder", "Alias") are interned process-wide (kind_table.h).
// A listing may be shown before its entries' status is read (names first): the size and
// date of a record are then written later by one thread while others read them. Both
// sides go through nodeMeta() / nodeMetaPublish(), an acquire/release pair on the
// record's `meta` byte, so a reader sees either nothing or the whole status.
// The store is freed as a whole, never record by record.

#include "fs/dir_node.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

enum NodeFlag : uint8_t {
    kNodeDir = 1,      // a folder, or a link to one
    kNodeAlias = 2,    // a symbolic link
    kNodeLoaded = 4,   // its children have been read (folders), or it has none (files)
    kNodeMetaPending = 8, // some children were read names first: their status is still to come
};

enum NodeMeta : uint8_t {
    kMetaKnown = 1,   // the status query has been made: size and date are final
    kMetaHasDate = 2, // the query succeeded: date holds the modification time
};

struct NodeRecord {
    const char* name = nullptr;         // in the store's arena, NUL-terminated
    const NodeRecord* parent = nullptr; // null for the root
    NodeRecord* children = nullptr;     // childCount records in display order
    int64_t size = 0;                   // bytes; 0 for folders
    int64_t date = 0;                   // whole seconds since 1970, with kMetaHasDate
    uint32_t childCount = 0;
    uint16_t nameLength = 0;
    uint16_t kind = 0;      // kind_table.h
    uint8_t flags = 0;      // NodeFlag
    uint8_t meta = 0;       // NodeMeta; read through nodeMeta() once shared
    uint16_t readError = 0; // errno of reading the folder's entries, 0 when read in full

    bool isDir() const { return flags & kNodeDir; }
    std::string_view nameView() const { return {name, nameLength}; }
};
// All-zero bytes are a default record, so zeroed memory holds records without a constructor.
static_assert(std::is_trivially_destructible_v<NodeRecord> && std::is_trivially_copyable_v<NodeRecord>);

// The record's NodeMeta bits, safe against a concurrent nodeMetaPublish().
uint8_t nodeMeta(const NodeRecord& record);
// Sets size and date (or no date) and then, with release order, the meta bits.
void nodeMetaPublish(NodeRecord& record, int64_t size, const int64_t* date);

class NodeStore {
public:
    // `rootPath` as given (not normalised); the root record's name is its last component.
    explicit NodeStore(std::string rootPath);
    ~NodeStore();
    NodeStore(const NodeStore&) = delete;
    NodeStore& operator=(const NodeStore&) = delete;

    NodeRecord& root() { return m_root; }
    const NodeRecord& root() const { return m_root; }
    const std::string& rootPath() const { return m_rootPath; }

    // The following may be called from several threads at once.
    // `count` zeroed records, contiguous and never moved.
    NodeRecord* allocate(size_t count);
    // Copies `packed` (names, each followed by a NUL) into the arena; returns where it begins.
    const char* addNames(std::string_view packed);
    // The same, keeping a large `packed` itself instead of a copy.
    const char* addNames(std::string&& packed);

    // The record's full path: the root path, then each name down to it.
    std::string path(const NodeRecord& record) const;
    // The same appended to `into` (no allocation when it has room).
    void appendPath(const NodeRecord& record, std::string& into) const;

    // Bytes held by records and names (the benchmarks' bytes per entry).
    size_t bytesHeld() const;

private:
    std::string m_rootPath;
    NodeRecord m_root;
    mutable std::mutex m_mutex;
    // Chunks are calloc'ed: the system hands out zero pages as they are first written,
    // so a large folder's records are zeroed by the threads that fill them.
    struct FreeChunk {
        void operator()(NodeRecord* chunk) const { std::free(chunk); }
    };
    std::vector<std::unique_ptr<NodeRecord, FreeChunk>> m_recordChunks;
    size_t m_recordsLeft = 0;
    NodeRecord* m_recordNext = nullptr;
    std::vector<std::unique_ptr<char[]>> m_nameChunks;
    std::deque<std::string> m_keptNames; // large listings' names, kept as read (never moved)
    size_t m_namesLeft = 0;
    char* m_nameNext = nullptr;
    size_t m_bytes = 0;
};

using NodeStorePtr = std::shared_ptr<NodeStore>;

// The record's kind text ("Folder", "Alias", "PNG file", "Document").
std::string_view nodeKindText(const NodeRecord& record);

// A DirNode tree copied from a record and the children read below it (the form that
// the rest of the code and the tests take; a copy, not a view).
DirNodePtr nodeStoreToDirNode(const NodeStore& store, const NodeRecord& record);
// The same for the children only, into `into` (the record's own node stays the caller's).
void nodeStoreChildrenTo(const NodeStore& store, const NodeRecord& record, std::string& pathBuffer,
    std::vector<DirNodePtr>& into);

// One record as a node of its own, without children: what actions and the info
// modules take for a row (size and date only once its status is known).
DirNodePtr nodeStoreRecordNode(const NodeStore& store, const NodeRecord& record);

// The number of a folder's entries, in either form.
size_t dirNodeEntryCount(const DirNode& node);

// Calls each(name, isDir) for every entry of a folder, in order, in either form.
template <typename Each>
void dirNodeForEachEntry(const DirNode& node, Each&& each)
{
    for (const DirNodePtr& child : node.children)
        each(std::string_view(child->name), child->isDir);
    if (node.store)
        for (uint32_t i = 0; i < node.store->root().childCount; ++i)
            each(node.store->root().children[i].nameView(), node.store->root().children[i].isDir());
}
