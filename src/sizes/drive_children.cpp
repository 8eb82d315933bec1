#include "sizes/drive_children.h"

#include "fs/mount_watchdog.h"
#include "fs/scanner.h"
#include "sizes/info_notifier.h"

namespace {

// Each drive is listed once; a few at a time is plenty.
constexpr int kPoolThreads = 2;

} // namespace

DriveChildren::DriveChildren()
    : m_pool(kPoolThreads, WorkClass::Utility) // first-level listings of drives
{
}

DriveChildren::~DriveChildren() = default;

DriveChildren& DriveChildren::shared()
{
    static DriveChildren* children = new DriveChildren;
    return *children;
}

std::optional<std::vector<DirNodePtr>> DriveChildren::of(const std::string& path, const BrondelSettings& settings)
{
    std::lock_guard guard(m_lock);
    if (auto it = m_cache.find(path); it != m_cache.end())
        return it->second;
    if (m_busy.insert(path).second) {
        m_pool.start([this, path, settings] {
            // A drive that does not answer is not read (and nothing is kept, so it is
            // listed once it answers again).
            if (mountWatchdogCheck(path) != MountState::Responding) {
                std::lock_guard guard(m_lock);
                m_busy.erase(path);
                return;
            }
            auto children = Scanner(settings).scan(path, 1)->children;
            {
                std::lock_guard guard(m_lock);
                m_cache[path] = std::move(children);
                m_busy.erase(path);
            }
            infoChangedPost();
        });
    }
    return std::nullopt;
}
