#include "fs/folder_diff.h"

#include <string_view>
#include <unordered_map>

FolderDiff folderDiff(const NodeRecord& before, const NodeRecord& after)
{
    FolderDiff diff;
    std::unordered_map<std::string_view, uint32_t> fresh;
    fresh.reserve(after.childCount);
    for (uint32_t i = 0; i < after.childCount; ++i)
        fresh.emplace(after.children[i].nameView(), i);
    diff.oldToNew.assign(before.childCount, -1);
    uint32_t kept = 0;
    for (uint32_t i = 0; i < before.childCount; ++i) {
        const NodeRecord& old = before.children[i];
        const auto found = fresh.find(old.nameView());
        if (found == fresh.end()) {
            ++diff.removed;
            continue;
        }
        ++kept;
        diff.oldToNew[i] = int32_t(found->second);
        const NodeRecord& now = after.children[found->second];
        const uint8_t oldMeta = nodeMeta(old);
        const uint8_t newMeta = nodeMeta(now);
        // A status still unknown on either side is no change: it is read later.
        const bool bothKnown = (oldMeta & kMetaKnown) && (newMeta & kMetaKnown);
        if (found->second != i || old.flags != now.flags || old.kind != now.kind
            || (bothKnown && (old.size != now.size || old.date != now.date || oldMeta != newMeta)))
            diff.changed = true;
    }
    diff.added = after.childCount - kept;
    if (diff.added || diff.removed)
        diff.changed = true;
    return diff;
}
