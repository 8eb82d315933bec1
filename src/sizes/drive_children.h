#pragma once
// The first-level items of drives, for the drive breakdown rows: read once in the
// background on first request, then kept for the life of the process (no
// invalidation). Announces arrivals with infoChangedPost(), like the folder sizes.

#include "config/brondel_settings.h"
#include "fs/dir_node.h"
#include "fs/work_pool.h"

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

class DriveChildren {
public:
    DriveChildren();
    ~DriveChildren(); // lets running listings finish

    DriveChildren(const DriveChildren&) = delete;
    DriveChildren& operator=(const DriveChildren&) = delete;

    // The one cache of the process (never destroyed).
    static DriveChildren& shared();

    // The children of `path` once read, sorted with `settings` as they were at the
    // first request; nothing (and a listing started, once) until then.
    std::optional<std::vector<DirNodePtr>> of(const std::string& path, const BrondelSettings& settings);

private:
    std::mutex m_lock;
    std::map<std::string, std::vector<DirNodePtr>> m_cache;
    std::set<std::string> m_busy;
    WorkPool m_pool; // last, so it drains before the state above goes
};
