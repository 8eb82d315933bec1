#pragma once
// The search of a window: the folders below a root walked as `brondel search` walks
// them (same links, same kernel file systems left out, same depth), with what matches
// handed over folder by folder while the walk goes on, and a flag that stops it.

#include "config/brondel_settings.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// How deep a search goes below its root.
constexpr int64_t kNameSearchDepth = 64;

struct NameSearchHit {
    std::string path;
    bool isDir = false;
    int64_t size = 0; // files whose status was read; 0 otherwise
};

struct NameSearchOptions {
    int threads = 2;
    // Checked before each folder is read: once set, no further folder is read.
    const std::atomic<bool>* cancel = nullptr;
};

// Walks `root` (the root itself included, as the command line does) and hands the
// entries whose names contain `query` (case-insensitively) to `found`, one call per
// folder that had any, never two calls at once. Runs on the calling thread; returns
// how many entries matched.
size_t nameSearchRun(const std::string& root, std::string_view query, const BrondelSettings& settings,
    const NameSearchOptions& options, const std::function<void(std::vector<NameSearchHit>)>& found);
