#pragma once
// Builds DirNode trees from the file system: one directory read and one status query per
// entry. Deep scans read folders on two threads; every folder is sorted on its own, so
// the tree is the same as a single-threaded scan gives. Folders are opened relative to
// an open folder above them, so paths longer than the system takes are walked too.
// A deep scan lists a link to a folder as an "Alias" folder and goes through it unless
// it leads back to a folder on the way down; it never goes into the kernel's own file
// systems (see WalkGate). A folder that cannot be read, or only in part, carries the
// errno in readError; an entry gone before its status was read is left out.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"
#include "fs/kind_table.h"
#include "fs/node_store.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

// Case-insensitive name matching for the search: the query is lower-cased once; ASCII
// names are matched without copying.
class NameFilter {
public:
    explicit NameFilter(std::string_view query);
    bool matches(std::string_view name) const;

private:
    std::string m_lowerQuery;
};

enum class ScanMeta { Full, NamesFirst };

// Follows a scan as it goes (a search that shows what it finds while it walks).
// `folderRead` runs on the scan's threads, possibly two at once, as soon as a folder's
// entries are in the store; a set `cancel` stops the walk at the next folder, whose
// read and everything below it are skipped.
struct ScanWatch {
    std::function<void(const NodeStore& store, const NodeRecord& folder)> folderRead;
    const std::atomic<bool>* cancel = nullptr;
};

class Scanner {
public:
    // The settings decide hidden files and the sort; they are copied once.
    explicit Scanner(const BrondelSettings& settings);

    // A search keeps only what it prints. With a filter set, an entry that the filter
    // does not match gets no status query when its directory entry already tells
    // whether it is a folder, and is left out unless it is a folder (its descendants
    // may match). Sorting is stable, so what is kept stands in the same order as in a
    // full scan; the folders kept this way carry size 0 and no date.
    void setSearchFilter(const NameFilter* filter) { m_searchFilter = filter; }
    // The watch must outlive the scans made with it.
    void setWatch(const ScanWatch* watch) { m_watch = watch; }

    // The tree for `path` (as given) with its children read `depth` levels deep, in the
    // compact store. With ScanMeta::NamesFirst only entries whose status tells whether
    // they are folders (links, unknown types) or that the walk goes into are asked:
    // the rest wait for nodeMetaFill, and the order is by name until then.
    NodeStorePtr scanStore(const std::string& path, int64_t depth, ScanMeta meta = ScanMeta::Full) const;

    // The same tree as DirNodes (a copy of the store's).
    DirNodePtr scan(const std::string& path, int64_t depth) const;

    // Reads a directory node's children on demand (depth 1). Marks it loaded even when
    // the folder cannot be read, so it is not read again.
    void loadChildren(DirNode& node) const;

    // Threads used for deep scans (1 gives the plain sequential walk).
    void setThreads(int threads) { m_threads = threads < 1 ? 1 : threads; }

private:
    BrondelSettings m_settings;
    int m_threads = 2;
    const NameFilter* m_searchFilter = nullptr;
    const ScanWatch* m_watch = nullptr;
};


// Appends every node of the tree (pre-order, root first) whose name the filter matches.
void filterWalk(const DirNodePtr& node, const NameFilter& filter, std::vector<DirNodePtr>& into);

// Lower case for matching: full Unicode lower-casing of valid UTF-8; malformed bytes are
// kept as they are (so a query holding the same bytes still matches).
std::string filterLower(std::string_view text);
