#include "fs/scanner.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/huge_pages.h"
#include "fs/mount_table.h"
#include "fs/mount_watchdog.h"
#include "fs/run_both.h"
#include "fs/sort_nodes.h"
#include "fs/sys_calls.h"
#include "fs/utf8.h"
#include "fs/walk_gate.h"
#include "fs/work_stack.h"

#include <algorithm>
#include <cstring>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <thread>
#include <unordered_map>

namespace {

// Folders with at least this many entries have their entries' status read on two
// threads (a thread costs far less than a few thousand status queries).
constexpr size_t kSplitFolderFrom = 4096;

// Folders are opened by a path relative to an open folder above them, never by their
// full path, which may be longer than the system takes. Every few levels a folder's own
// descriptor becomes the base of the levels below it (sooner when the relative path
// grows long): a deep tree then holds one descriptor per few levels, not one per level.
constexpr int kLevelsPerBase = 8;
constexpr size_t kRelativePathLimit = 2048; // well below PATH_MAX, even with a long name added

constexpr size_t kDirentBuffer = 64 * 1024;

// A folder still to be read.
struct Job {
    NodeRecord* record = nullptr;
    int64_t remaining = 0;
    std::shared_ptr<DirFd> base; // an open folder above it (the working directory for the root)
    std::string fromBase;        // its path relative to `base`
    int levels = 0;              // folders in `fromBase`
    std::shared_ptr<const WalkAncestor> self; // it and the folders above it (deep scans only)
};

int openDirAt(int dirfd, const char* path)
{
    int fd;
    do
        fd = sysCalls().openat(dirfd, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    while (fd < 0 && errno == EINTR);
    return fd;
}

int statAt(int dirfd, const char* name, struct stat* st, int flags)
{
    int rc;
    do
        rc = sysCalls().fstatat(dirfd, name, st, flags);
    while (rc != 0 && errno == EINTR);
    return rc;
}

// One entry of a folder being read: its name (in the folder's packed name buffer) and
// what the directory entry said. Twelve bytes: a folder of a million entries is read
// into one small array.
struct Entry {
    uint32_t nameAt = 0;
    uint16_t nameLength = 0;
    unsigned char type = DT_UNKNOWN;
    uint8_t keep = 0; // listed
    uint8_t dir = 0;  // a folder, or a link to one
    uint8_t meta = 0; // NodeMeta once asked
    uint16_t kind = 0; // a file's kind from its name, when worked out while reading
};

// What a status query told about an entry.
struct EntryStatus {
    int64_t size = 0;
    int64_t date = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

// The status of a folder's entries by position: one slot per entry when most entries
// are asked (several threads then write their own slots), or only the few asked ones
// when names come first (one thread).
class EntryStatuses {
public:
    explicit EntryStatuses(bool sparse)
        : m_sparse(sparse)
    {
    }
    // Slots for `count` entries (dense), their room for `room` entries.
    void resize(size_t count, size_t room)
    {
        if (m_sparse)
            return;
        if (room > m_dense.capacity())
            hugePagesReserve(m_dense, room);
        m_dense.resize(count);
    }
    EntryStatus& at(uint32_t i) { return m_sparse ? m_few[i] : m_dense[i]; }
    EntryStatus get(uint32_t i) const
    {
        if (!m_sparse)
            return m_dense[i];
        auto it = m_few.find(i);
        return it == m_few.end() ? EntryStatus{} : it->second;
    }

private:
    const bool m_sparse;
    std::vector<EntryStatus> m_dense;
    std::unordered_map<uint32_t, EntryStatus> m_few;
};

// A large listing's status queries start while the folder is still being read: a second
// thread takes runs of the entries read so far, and once the reading ends both threads
// take what is left. The arrays it reads only move (grow past their room) while it
// holds no run: runs are examined under `moving` shared, and growing takes it alone.
class AskAhead {
public:
    static constexpr size_t kRun = 256;

    // Runs of entries below what has been read, until the reading has ended and no run
    // is left. `examine(from, to)` is called with `moving` held shared.
    template <typename Examine>
    void work(const Examine& examine)
    {
        for (;;) {
            const size_t limit = m_read.load(std::memory_order_acquire);
            size_t from = m_next.load(std::memory_order_relaxed), to = 0;
            do {
                if (from >= limit)
                    break;
                to = std::min(from + kRun, limit);
            } while (!m_next.compare_exchange_weak(from, to, std::memory_order_relaxed));
            if (from < limit) {
                std::shared_lock lock(m_moving);
                examine(from, to);
                continue;
            }
            std::unique_lock lock(m_waitLock);
            if (m_ended && m_next.load(std::memory_order_relaxed) >= m_read.load(std::memory_order_acquire))
                return;
            m_readMore.wait(lock, [&] { return m_ended || m_read.load(std::memory_order_acquire) > limit; });
        }
    }

    // The reader: `count` entries are in place (all of them when `ended`).
    void published(size_t count, bool ended)
    {
        {
            std::lock_guard lock(m_waitLock);
            m_read.store(count, std::memory_order_release);
            m_ended = ended;
        }
        m_readMore.notify_all();
    }

    // Held by the reader while the arrays grow.
    std::shared_mutex& moving() { return m_moving; }

private:
    std::shared_mutex m_moving;
    std::atomic<size_t> m_read{0}, m_next{0};
    std::mutex m_waitLock;
    std::condition_variable m_readMore;
    bool m_ended = false;
};

// The state one scan shares between its threads.
class ScanRun {
public:
    ScanRun(NodeStore& store, const BrondelSettings& settings, int threads, const NameFilter* searchFilter,
        ScanMeta meta, const ScanWatch* watch)
        : m_store(store)
        , m_settings(settings)
        , m_threads(threads)
        , m_searchFilter(searchFilter)
        // Sorting by date or size needs every status (unless names come first and the
        // order is made again once the status is in); folders-first needs to know folders.
        , m_statusForAll(meta == ScanMeta::Full && (settings.sortBy == "date" || settings.sortBy == "size"))
        , m_namesFirst(meta == ScanMeta::NamesFirst)
        , m_watch(watch)
    {
    }

    void run(int64_t depth)
    {
        NodeRecord& root = m_store.root();
        const std::string& rootPath = m_store.rootPath();
        Job first{&root, depth, std::make_shared<DirFd>(AT_FDCWD), rootPath, kLevelsPerBase, nullptr};
        if (depth >= 2) {
            // Only a walk that goes down needs to know where it started and what is mounted.
            struct stat st;
            if (statAt(AT_FDCWD, rootPath.c_str(), &st, 0) == 0) {
                first.self = std::make_shared<const WalkAncestor>(WalkAncestor{st.st_dev, st.st_ino, nullptr});
                m_gate.emplace(mountTableRead(), st.st_dev);
            }
        }
        if (m_threads <= 1 || depth < 2) {
            readTree(first);
            return;
        }
        std::vector<Job> initial;
        initial.push_back(std::move(first));
        WorkStack<Job>::run(std::move(initial), m_threads,
                            [this](Job& job, std::vector<Job>& subs) { readFolder(job, subs); });
    }

private:
    // Sequential depth-first reading.
    void readTree(Job& job)
    {
        std::vector<Job> subs;
        readFolder(job, subs);
        for (Job& sub : subs)
            readTree(sub);
    }

    // The folder's entries in directory order, without "." and ".." (and hidden ones
    // unless they are shown), their names packed into `names`. A read error is noted on
    // the record; what came before stays.
    // With `ahead`, a large folder's entries are examined by a second thread while they
    // are read (`examine`), and by both threads once read; `statuses` then grows along.
    // Returns whether they were examined so.
    template <typename Examine>
    bool readEntries(int fd, NodeRecord& record, std::vector<Entry>& entries, std::string& names,
        EntryStatuses& statuses, bool ahead, const Examine& examine) const
    {
        thread_local std::vector<char> buffer(kDirentBuffer);
        // A folder's own size roughly follows its entry count (ext4 and most others): a
        // large folder's arrays are reserved once rather than doubled a score of times.
        struct stat st;
        const bool large = sysCalls().fstat(fd, &st) == 0 && st.st_size > 64 * 1024;
        if (large) {
            const size_t guess = std::min<size_t>(size_t(st.st_size) / 32, size_t(1) << 23);
            hugePagesReserve(entries, guess);
            hugePagesReserve(names, guess * 20);
        }
        std::optional<AskAhead> asking;
        std::thread helper;
        if (ahead && large) {
            statuses.resize(0, entries.capacity());
            asking.emplace();
            helper = std::thread([&] { asking->work(examine); });
        }
        const int error = dirForEachEntry(fd, buffer, [&](const char* name, unsigned char type) {
            if (name[0] == '.' && !m_settings.showHidden)
                return;
            const size_t length = std::strlen(name);
            if (asking && (entries.size() == entries.capacity() || names.size() + length + 1 > names.capacity())) {
                std::unique_lock lock(asking->moving());
                entries.reserve(entries.capacity() * 2 + AskAhead::kRun);
                names.reserve(names.capacity() * 2 + length + 1);
                statuses.resize(entries.size(), entries.capacity());
            }
            Entry entry;
            entry.nameAt = uint32_t(names.size());
            entry.nameLength = uint16_t(length);
            entry.type = type;
            names.append(name, length + 1);
            entries.push_back(entry);
            if (asking) {
                statuses.resize(entries.size(), entries.capacity()); // within its room: nothing moves
                if (entries.size() % AskAhead::kRun == 0)
                    asking->published(entries.size(), false);
            }
        });
        record.readError = uint16_t(error);
        if (!asking) {
            statuses.resize(entries.size(), entries.size());
            return false;
        }
        asking->published(entries.size(), true);
        asking->work(examine);
        helper.join();
        return true;
    }

    // Reads one folder into the record's children; appends its subfolders still to be read.
    void readFolder(Job& job, std::vector<Job>& subs)
    {
        NodeRecord& parent = *job.record;
        if (m_watch && m_watch->cancel && m_watch->cancel->load(std::memory_order_relaxed))
            return;
        const std::string path = m_store.path(parent);
        // Held here until the subfolders that open through the same base have it.
        const std::shared_ptr<DirFd> base = std::move(job.base);
        // The first folder may lie on a drive that no longer answers: it is asked through
        // the watchdog and, when stuck, left unread. Folders below it are reached through
        // the gate, which knows the stuck devices, and their dead mount points (below).
        if (!job.self || !job.self->up)
            if (mountWatchdogCheck(path) != MountState::Responding) {
                parent.readError = ETIMEDOUT;
                return;
            }
        const int fd = openDirAt(base->fd(), job.fromBase.c_str());
        if (fd < 0) {
            parent.readError = uint16_t(errno);
            return;
        }
        parent.flags |= kNodeLoaded;
        const bool deeper = job.remaining >= 2;
        // Mount points of dead drives in this folder get no status query (it would hang):
        // they are listed as folders and left unread.
        const std::vector<std::string> stuck = mountWatchdogStuckEntries(path);
        std::string names;
        std::vector<Entry> entries;
        EntryStatuses statuses(m_namesFirst && !deeper);
        auto build = [&](size_t from, size_t to) {
            for (size_t i = from; i < to; ++i)
                examine(fd, entries[i], statuses, uint32_t(i), names.data() + entries[i].nameAt, deeper, stuck);
        };
        // A large listing asks for every entry's status: the queries start while it is read.
        const bool ahead = m_threads >= 2 && !m_namesFirst && !m_searchFilter && !deeper;
        const bool examined = readEntries(fd, parent, entries, names, statuses, ahead, build);
        // A listing keeps every entry: their kinds are worked out in directory order, the
        // order their names lie in (in display order the names would be read at random).
        const bool kindsRead = !m_searchFilter;
        if (kindsRead)
            runHalves(entries.size(), m_threads >= 2 && entries.size() >= kSplitFolderFrom, [&](size_t from, size_t to) {
                for (size_t i = from; i < to; ++i)
                    if (entries[i].type != DT_DIR && entries[i].type != DT_LNK)
                        entries[i].kind = kindOfEntry(std::string_view(names.data() + entries[i].nameAt, entries[i].nameLength), EntryType::File);
            });
        // A large folder's status queries are shared with a second thread; each entry is
        // examined in place, so the result does not depend on the split.
        if (!examined)
            runHalves(entries.size(), m_threads >= 2 && entries.size() >= kSplitFolderFrom && !m_namesFirst, build);
        std::vector<uint32_t> kept;
        hugePagesReserve(kept, entries.size());
        for (uint32_t i = 0; i < entries.size(); ++i)
            if (entries[i].keep)
                kept.push_back(i);
        std::deque<std::string> spelled; // kinds past the interned table, kept for the sort
        const std::vector<uint32_t> order =
            sortOrder(columnsOf(entries, statuses, kept, names, path, spelled), sortPlaceOf(path), m_settings);

        // The kept entries, in display order, become the folder's run of records. When
        // every entry is kept (a listing) the names go to the store as read, in one copy;
        // a search packs only the few it keeps.
        const char* arena = nullptr;
        std::vector<uint32_t> nameAt;
        const bool allKept = kept.size() == entries.size(); // kept[i] == i
        if (allKept) {
            arena = entries.empty() ? nullptr : m_store.addNames(std::move(names));
        } else if (!kept.empty()) {
            std::string packed;
            nameAt.resize(entries.size());
            for (uint32_t i : kept) {
                nameAt[i] = uint32_t(packed.size());
                packed.append(names, entries[i].nameAt, size_t(entries[i].nameLength) + 1);
            }
            arena = m_store.addNames(packed);
        }
        NodeRecord* children = m_store.allocate(kept.size());
        std::shared_ptr<DirFd> own; // this folder's descriptor, once a subfolder opens through it
        auto place = [&](size_t from, size_t to) {
            for (size_t slot = from; slot < to; ++slot) {
                const uint32_t i = allKept ? order[slot] : kept[order[slot]];
                const Entry& e = entries[i];
                const EntryStatus status = e.meta & kMetaHasDate ? statuses.get(i) : EntryStatus{};
                NodeRecord& child = children[slot];
                child.name = arena + (nameAt.empty() ? e.nameAt : nameAt[i]);
                child.nameLength = e.nameLength;
                child.parent = &parent;
                const bool link = e.type == DT_LNK;
                child.flags = uint8_t((e.dir ? kNodeDir : 0) | (link ? kNodeAlias : 0) | (e.dir ? 0 : kNodeLoaded));
                child.kind = kindsRead && !link && !e.dir
                    ? e.kind
                    : kindOfEntry(child.nameView(), link ? EntryType::Link : e.dir ? EntryType::Folder : EntryType::File);
                child.meta = e.meta;
                child.size = status.size;
                child.date = status.date;
                if (e.dir && deeper && mayEnter(e, status, job.self.get())) {
                    child.flags |= kNodeLoaded; // its read is on its way
                    subs.push_back(subJob(job, child, status, child.name, e.nameLength, base, fd, own));
                }
            }
        };
        // A large folder that is not gone into is placed in two halves at once: each
        // slot is written once, and kinds are interned from any thread.
        runHalves(order.size(), !deeper && m_threads >= 2 && order.size() >= kSplitFolderFrom, place);
        if (!own)
            sysClose(fd);
        parent.children = children;
        parent.childCount = uint32_t(kept.size());
        if (m_namesFirst && std::any_of(children, children + kept.size(), [](const NodeRecord& r) { return !(r.meta & kMetaKnown); }))
            parent.flags |= kNodeMetaPending;
        if (m_watch && m_watch->folderRead)
            m_watch->folderRead(m_store, parent);
    }

    // Asks for the entry's status where needed and decides whether it is listed.
    void examine(int fd, Entry& e, EntryStatuses& statuses, uint32_t index, const char* name, bool deeper,
        const std::vector<std::string>& stuck) const
    {
        const bool wanted = !m_searchFilter || m_searchFilter->matches(std::string_view(name, e.nameLength));
        if (!stuck.empty() && std::find(stuck.begin(), stuck.end(), std::string_view(name, e.nameLength)) != stuck.end()) {
            e.keep = wanted;
            e.type = DT_DIR;
            e.dir = 1;
            e.meta = kMetaKnown; // nothing more will be known
            return;
        }
        if (!wanted && e.type != DT_DIR && e.type != DT_LNK && e.type != DT_UNKNOWN)
            return; // a file the search will never print
        // A folder to go down into needs its device and inode; a link or an unknown
        // entry needs its status to tell whether it is a folder.
        const bool unsure = e.type == DT_LNK || e.type == DT_UNKNOWN;
        const bool ask = unsure || (deeper && e.type == DT_DIR) || (!m_namesFirst && (wanted || m_statusForAll));
        e.dir = e.type == DT_DIR;
        if (ask) {
            struct stat st;
            const int rc = statAt(fd, name, &st, 0);
            // Gone since the folder was read: left out. A link to nothing is still listed.
            if (rc != 0 && errno == ENOENT && statAt(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT)
                return;
            if (rc == 0) {
                e.dir = S_ISDIR(st.st_mode);
                EntryStatus& status = statuses.at(index);
                status.size = e.dir ? 0 : int64_t(st.st_size);
                status.date = int64_t(st.st_mtim.tv_sec);
                status.device = st.st_dev;
                status.inode = st.st_ino;
                e.meta = kMetaKnown | kMetaHasDate;
            } else {
                e.meta = kMetaKnown;
            }
        } else if (!m_namesFirst) {
            e.meta = kMetaKnown; // the search needs no more of it
        }
        e.keep = wanted || e.dir; // else a link or unknown entry that is no folder
    }

    SortColumns columnsOf(const std::vector<Entry>& entries, const EntryStatuses& statuses,
        const std::vector<uint32_t>& kept, const std::string& names, const std::string& path,
        std::deque<std::string>& spelled) const
    {
        const SortColumnsUsed used = sortColumnsUsed(sortPlaceOf(path), m_settings);
        SortColumns columns;
        hugePagesReserve(columns.names, kept.size());
        hugePagesReserve(columns.dirs, kept.size());
        for (uint32_t i : kept) {
            const Entry& e = entries[i];
            columns.names.emplace_back(names.data() + e.nameAt, e.nameLength);
            columns.dirs.push_back(e.dir);
            if (used.sizes)
                columns.sizes.push_back(e.meta & kMetaHasDate ? statuses.get(i).size : 0);
            if (used.dates)
                columns.dates.push_back(e.meta & kMetaHasDate ? statuses.get(i).date : SortColumns::kNoDate);
            if (used.kinds) {
                const uint16_t kind = kindOfEntry(columns.names.back(),
                    e.type == DT_LNK ? EntryType::Link : e.dir ? EntryType::Folder : EntryType::File);
                columns.kinds.push_back(kind != kKindFromName ? kindText(kind)
                                                              : std::string_view(spelled.emplace_back(nodeExtKind(columns.names.back()))));
            }
        }
        return columns;
    }

    static Job subJob(const Job& job, NodeRecord& child, const EntryStatus& status, const char* name, size_t length,
        const std::shared_ptr<DirFd>& base, int fd, std::shared_ptr<DirFd>& own)
    {
        Job sub{&child, job.remaining - 1, nullptr, {}, 1,
                std::make_shared<const WalkAncestor>(WalkAncestor{status.device, status.inode, job.self})};
        if (job.levels < kLevelsPerBase && job.fromBase.size() + 1 + length < kRelativePathLimit) {
            sub.base = base;
            sub.fromBase = job.fromBase + "/" + name;
            sub.levels = job.levels + 1;
        } else {
            if (!own)
                own = std::make_shared<DirFd>(fd);
            sub.base = own;
            sub.fromBase = name;
        }
        return sub;
    }

    bool mayEnter(const Entry& e, const EntryStatus& status, const WalkAncestor* path) const
    {
        if (!(e.meta & kMetaHasDate) || !m_gate)
            return false; // where it lives is unknown: it stays unread, as at the depth limit
        return m_gate->mayEnter(status.device, status.inode, e.type == DT_LNK ? WalkStep::Link : WalkStep::Folder, path);
    }

    NodeStore& m_store;
    const BrondelSettings& m_settings;
    const int m_threads;
    const NameFilter* const m_searchFilter;
    const bool m_statusForAll;
    const bool m_namesFirst;
    const ScanWatch* const m_watch;
    std::optional<WalkGate> m_gate; // set before the walk starts, for deep scans
};

} // namespace

Scanner::Scanner(const BrondelSettings& settings)
    : m_settings(settings)
{
}

NodeStorePtr Scanner::scanStore(const std::string& path, int64_t depth, ScanMeta meta) const
{
    auto store = std::make_shared<NodeStore>(path);
    if (depth >= 1)
        ScanRun(*store, m_settings, m_threads, m_searchFilter, meta, m_watch).run(depth);
    return store;
}

DirNodePtr Scanner::scan(const std::string& path, int64_t depth) const
{
    NodeStorePtr store = scanStore(path, depth, ScanMeta::Full);
    return nodeStoreToDirNode(*store, store->root());
}

void Scanner::loadChildren(DirNode& node) const
{
    if (node.childrenLoaded)
        return;
    auto fresh = scan(node.path, 1);
    node.children = std::move(fresh->children);
    node.readError = fresh->readError;
    node.childrenLoaded = true;
}

std::string filterLower(std::string_view text)
{
    if (asciiOnly(text) || !utf8Valid(text)) {
        std::string out(text);
        for (char& c : out)
            if (c >= 'A' && c <= 'Z')
                c = char(c - 'A' + 'a');
        return out;
    }
    return utf8CaseMapped(text, CaseMap::Lower);
}

NameFilter::NameFilter(std::string_view query)
    : m_lowerQuery(filterLower(query))
{
}

bool NameFilter::matches(std::string_view name) const
{
    if (asciiOnly(name)) {
        auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        auto it = std::search(name.begin(), name.end(), m_lowerQuery.begin(), m_lowerQuery.end(),
                              [&](char a, char q) { return lower(a) == q; });
        return it != name.end() || m_lowerQuery.empty();
    }
    return filterLower(name).find(m_lowerQuery) != std::string::npos;
}

void filterWalk(const DirNodePtr& node, const NameFilter& filter, std::vector<DirNodePtr>& into)
{
    if (filter.matches(node->name))
        into.push_back(node);
    for (const auto& child : node->children)
        filterWalk(child, filter, into);
}
