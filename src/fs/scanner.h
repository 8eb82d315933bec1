#pragma once
// Builds DirNode trees from the file system: one directory read and one status query per
// entry. Deep scans read folders on two threads; every folder is sorted on its own, so
// the tree is the same as a single-threaded scan gives.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"

#include <cstdint>
#include <string>

class Scanner {
public:
    // The settings decide hidden files and the sort; they are copied once.
    explicit Scanner(const BrondelSettings& settings);

    // The root for `path` (as given) with its children read `depth` levels deep.
    DirNodePtr scan(const std::string& path, int64_t depth) const;

    // Reads a directory node's children on demand (depth 1). Marks it loaded even when
    // the folder cannot be read, so it is not read again.
    void loadChildren(DirNode& node) const;

    // Threads used for deep scans (1 gives the plain sequential walk).
    void setThreads(int threads) { m_threads = threads < 1 ? 1 : threads; }

private:
    BrondelSettings m_settings;
    int m_threads = 2;
};

// "PDF file" for report.pdf, "GZ file" for archive.tar.gz, "Document" without extension.
std::string nodeExtKind(std::string_view name);

// Appends every node of the tree (pre-order, root first) whose lower-cased name
// contains `lowerQuery`.
void filterWalk(const DirNodePtr& node, std::string_view lowerQuery, std::vector<DirNodePtr>& into);

// Lower case for matching: full Unicode lower-casing of valid UTF-8; malformed bytes are
// kept as they are (so a query holding the same bytes still matches).
std::string filterLower(std::string_view text);
