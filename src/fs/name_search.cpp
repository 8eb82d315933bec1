#include "fs/name_search.h"

#include "fs/node_store.h"
#include "fs/scanner.h"

#include <mutex>

namespace {

NameSearchHit hitOf(const NodeStore& store, const NodeRecord& record)
{
    return {store.path(record), record.isDir(), nodeMeta(record) & kMetaKnown ? record.size : 0};
}

} // namespace

size_t nameSearchRun(const std::string& root, std::string_view query, const BrondelSettings& settings,
    const NameSearchOptions& options, const std::function<void(std::vector<NameSearchHit>)>& found)
{
    const NameFilter filter(query);
    std::mutex handing; // the scan reads folders on two threads; `found` sees one at a time
    size_t matches = 0;
    ScanWatch watch;
    watch.cancel = options.cancel;
    watch.folderRead = [&](const NodeStore& store, const NodeRecord& folder) {
        std::vector<NameSearchHit> hits;
        if (!folder.parent && filter.matches(folder.nameView()))
            hits.push_back(hitOf(store, folder));
        // The filter keeps every folder (what is below may match): they are checked again.
        for (uint32_t i = 0; i < folder.childCount; ++i)
            if (filter.matches(folder.children[i].nameView()))
                hits.push_back(hitOf(store, folder.children[i]));
        if (hits.empty())
            return;
        std::lock_guard lock(handing);
        matches += hits.size();
        found(std::move(hits));
    };
    Scanner scanner(settings);
    scanner.setThreads(options.threads);
    scanner.setSearchFilter(&filter);
    scanner.setWatch(&watch);
    NodeStorePtr store = scanner.scanStore(root, kNameSearchDepth);
    // A root that could not be read is still a match by its name, as on the command line.
    const NodeRecord& top = store->root();
    if (!(top.flags & kNodeLoaded) && filter.matches(top.nameView())
        && !(options.cancel && options.cancel->load(std::memory_order_relaxed))) {
        ++matches;
        found({hitOf(*store, top)});
    }
    return matches;
}
