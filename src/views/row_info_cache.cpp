#include "views/row_info_cache.h"

#include "fs/mount_watchdog.h"
#include "fs/volume.h"
#include "sizes/info_module.h"
#include "sizes/info_notifier.h"

#include <algorithm>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kPruneFloor = 4096;
constexpr int kAnnounceMs = 15; // one changed() for a burst of results

// The keys of the enabled modules: a value computed with other modules is due again.
std::string modulesKey(const BrondelSettings& settings)
{
    std::string key;
    for (const InfoModule* module : InfoModules::enabled(settings))
        key += module->key() + '\n';
    return key;
}

// Only a folder's texts may need the disk (a drive's space, a folder's size); a file's
// come from its node and a header has none.
bool needsDisk(const DirNode& node)
{
    return node.isDir && !node.isSectionHeader;
}

// The fields the modules read, without the children (a big folder's children would be
// copied for nothing).
DirNodePtr bareCopy(const DirNode& node)
{
    DirNodePtr copy = DirNode::make();
    copy->name = node.name;
    copy->path = node.path;
    copy->isDir = node.isDir;
    copy->size = node.size;
    copy->dateModified = node.dateModified;
    copy->kind = node.kind;
    copy->childrenLoaded = node.childrenLoaded;
    copy->isSectionHeader = node.isSectionHeader;
    copy->hue = node.hue;
    copy->isPinned = node.isPinned;
    return copy;
}

} // namespace

SizeCellContent listSizeCellFill(const DirNode& node, const BrondelSettings& settings)
{
    SizeCellContent cell;
    if (node.isSectionHeader)
        return cell;
    auto modules = InfoModules::enabled(settings);
    for (const InfoModule* module : modules) {
        auto fraction = module->fraction(node);
        if (!fraction)
            continue;
        cell.fraction = *fraction;
        for (const InfoModule* other : modules) {
            if (auto pair = other->pair(node)) {
                cell.text = QString::fromStdString(pair->first);
                cell.free = QString::fromStdString(pair->second);
                break;
            }
        }
        return cell;
    }
    if (auto line = infoLine(node, settings))
        cell.text = QString::fromStdString(*line);
    return cell;
}

RowInfo rowInfoCompute(const DirNode& node, const BrondelSettings& settings)
{
    RowInfo info;
    info.cell = listSizeCellFill(node, settings);
    if (!info.cell.fraction)
        info.line = info.cell.text;
    else if (auto line = infoLine(node, settings))
        info.line = QString::fromStdString(*line);
    return info;
}

RowInfoCache::RowInfoCache(int threads, QObject* parent)
    : QObject(parent)
    , m_work(threads, WorkClass::Utility)
{
    m_announce.setSingleShot(true);
    m_announce.setInterval(kAnnounceMs);
    connect(&m_announce, &QTimer::timeout, this, &RowInfoCache::changed);
    connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, this, &RowInfoCache::sizesChanged);
}

RowInfoCache& RowInfoCache::shared()
{
    static RowInfoCache* cache = new RowInfoCache;
    return *cache;
}

std::optional<RowInfo> RowInfoCache::find(const DirNode& node, const BrondelSettings& settings)
{
    if (!needsDisk(node))
        return rowInfoCompute(node, settings);
    if (mountWatchdogIsStuckAt(node.path)) {
        // A drive that does not answer: its row says so, and nothing is asked of it.
        RowInfo stuck;
        stuck.line = stuck.cell.text = QString::fromLatin1(kNotRespondingText);
        return stuck;
    }
    std::string modules = modulesKey(settings);
    std::optional<RowInfo> known;
    bool due = true;
    if (auto it = m_entries.find(node.path); it != m_entries.end()) {
        const Entry& entry = it->second;
        known = entry.info;
        due = entry.epoch != m_epoch || entry.modules != modules || Clock::now() - entry.computedAt >= kFresh;
    }
    if (due && m_pending.insert(node.path).second) {
        const uint64_t epoch = m_epoch;
        m_work.submit(this, [this, node = bareCopy(node), settings, modules = std::move(modules), epoch] {
            Entry entry{rowInfoCompute(*node, settings), Clock::now(), epoch, modules};
            return std::function<void()>([this, path = node->path, entry = std::move(entry)]() mutable {
                store(path, std::move(entry));
            });
        });
    }
    return known;
}

void RowInfoCache::store(const std::string& path, Entry entry)
{
    m_pending.erase(path);
    if (m_entries.size() > m_pruneAbove) {
        // Only the rows on screen are asked again: what was not asked for a while goes.
        const auto now = Clock::now();
        std::erase_if(m_entries, [now](const auto& item) { return now - item.second.computedAt >= kFresh; });
        m_pruneAbove = std::max(kPruneFloor, 2 * m_entries.size());
    }
    m_entries[path] = std::move(entry);
    if (!m_announce.isActive())
        m_announce.start();
}

void RowInfoCache::sizesChanged()
{
    ++m_epoch;
    emit changed(); // the views ask again and so start the recomputations
}

void RowInfoCache::clear()
{
    m_entries.clear();
    ++m_epoch;
}
