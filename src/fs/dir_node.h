#pragma once
// One file-system entry or pseudo-entry (a section header, a favourites entry), shared
// by reference between trees, views and caches. Names and paths hold the bytes the OS
// gives: a name that is not valid UTF-8 is kept exactly.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct DirNode;
using DirNodePtr = std::shared_ptr<DirNode>;
class NodeStore; // node_store.h

struct DirNode {
    std::string name;
    std::string path;
    bool isDir = false;
    int64_t size = 0;
    std::optional<int64_t> dateModified; // whole seconds since 1970
    std::string kind;
    std::vector<DirNodePtr> children;
    // A folder read for a window holds its entries in the compact store instead (the
    // store's root record is this folder): `children` then stays empty.
    std::shared_ptr<NodeStore> store;
    bool childrenLoaded = false;
    // Why the folder's entries could not be read, or read only in part: the errno of
    // opening or reading it (EACCES, ENOENT, EIO, ...; ETIMEDOUT for a drive that does not answer); 0 when
    // read in full or not read.
    int readError = 0;
    bool isSectionHeader = false;
    std::optional<double> hue;
    bool isPinned = false;

    static DirNodePtr make() { return std::make_shared<DirNode>(); }

    // Whether the folder has entries, in either form.
    bool hasEntries() const;
};
