#include "cards/card_show_all.h"

#include <mutex>
#include <set>

namespace {

struct ShowAll {
    std::mutex lock;
    std::set<std::string> keys;
};

ShowAll& showAll()
{
    static ShowAll s;
    return s;
}

} // namespace

bool cardShowAllHas(const std::string& key)
{
    auto& s = showAll();
    std::lock_guard guard(s.lock);
    return s.keys.count(key) != 0;
}

void cardShowAllToggle(const std::string& key)
{
    auto& s = showAll();
    std::lock_guard guard(s.lock);
    if (!s.keys.erase(key))
        s.keys.insert(key);
}

void cardShowAllClear()
{
    auto& s = showAll();
    std::lock_guard guard(s.lock);
    s.keys.clear();
}
