#include "fs/scanner.h"

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/mount_table.h"
#include "fs/mount_watchdog.h"
#include "fs/sort_nodes.h"
#include "fs/sys_calls.h"
#include "fs/utf8.h"
#include "fs/walk_gate.h"
#include "fs/work_stack.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <mutex>
#include <optional>
#include <thread>

namespace {

bool isAscii(std::string_view s)
{
    for (unsigned char c : s)
        if (c >= 0x80)
            return false;
    return true;
}

std::string asciiUpper(std::string_view s)
{
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
    return out;
}

// Full Unicode case mapping (root locale) of valid UTF-8. Names are short: the work is
// done in stack buffers, with the heap only for very long texts.
std::string icuCase(std::string_view s, bool upper)
{
    constexpr size_t kStack = 512;
    UChar inStack[kStack], outStack[kStack * 3];
    std::vector<UChar> inHeap, outHeap;
    UChar* in = inStack;
    UChar* out = outStack;
    size_t outCap = kStack * 3;
    if (s.size() + 1 > kStack) {
        inHeap.resize(s.size() + 1);
        outHeap.resize(s.size() * 3 + 8);
        in = inHeap.data();
        out = outHeap.data();
        outCap = outHeap.size();
    }
    int32_t inLen = 0, outLen = 0, len8 = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(in, int32_t(s.size() + 1), &inLen, s.data(), int32_t(s.size()), &status);
    if (U_FAILURE(status))
        return std::string(s);
    status = U_ZERO_ERROR;
    outLen = upper ? u_strToUpper(out, int32_t(outCap), in, inLen, "", &status)
                   : u_strToLower(out, int32_t(outCap), in, inLen, "", &status);
    if (U_FAILURE(status))
        return std::string(s);
    std::string result(size_t(outLen) * 3 + 1, '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8(result.data(), int32_t(result.size()), &len8, out, outLen, &status);
    if (U_FAILURE(status))
        return std::string(s);
    result.resize(size_t(len8));
    return result;
}

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
    DirNode* node = nullptr;
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

// The state one scan shares between its threads.
class ScanRun {
public:
    ScanRun(const BrondelSettings& settings, int threads, const NameFilter* searchFilter)
        : m_settings(settings)
        , m_threads(threads)
        , m_searchFilter(searchFilter)
        // Sorting by date or size needs every status; folders-first needs to know folders.
        , m_statusForAll(settings.sortBy == "date" || settings.sortBy == "size")
    {
    }

    void run(DirNode& root, int64_t depth)
    {
        Job first{&root, depth, std::make_shared<DirFd>(AT_FDCWD), root.path, kLevelsPerBase, nullptr};
        if (depth >= 2) {
            // Only a walk that goes down needs to know where it started and what is mounted.
            struct stat st;
            if (statAt(AT_FDCWD, root.path.c_str(), &st, 0) == 0) {
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

    struct Entry {
        std::string name;
        unsigned char type;
    };

    // The folder's entries in directory order, without "." and ".." (and hidden ones
    // unless they are shown). A read error is noted on the node; what came before stays.
    std::vector<Entry> readEntries(int fd, DirNode& node) const
    {
        thread_local std::vector<char> buffer(kDirentBuffer);
        std::vector<Entry> entries;
        node.readError = dirForEachEntry(fd, buffer, [&](const char* name, unsigned char type) {
            if (name[0] != '.' || m_settings.showHidden)
                entries.push_back({name, type});
        });
        return entries;
    }

    // What a status query told about one entry.
    struct Status {
        DirNodePtr node; // null: the entry is left out
        dev_t device = 0;
        ino_t inode = 0;
        bool known = false; // whether device and inode were read
    };

    // Reads one folder into node.children; appends its subfolders still to be read.
    void readFolder(Job& job, std::vector<Job>& subs)
    {
        DirNode& parent = *job.node;
        // Held here until the subfolders that open through the same base have it.
        const std::shared_ptr<DirFd> base = std::move(job.base);
        // The first folder may lie on a drive that no longer answers: it is asked through
        // the watchdog and, when stuck, left unread. Folders below it are reached through
        // the gate, which knows the stuck devices, and their dead mount points (below).
        if (!job.self || !job.self->up)
            if (mountWatchdogCheck(parent.path) != MountState::Responding) {
                parent.readError = ETIMEDOUT;
                return;
            }
        const int fd = openDirAt(base->fd(), job.fromBase.c_str());
        if (fd < 0) {
            parent.readError = errno;
            return;
        }
        const std::vector<Entry> entries = readEntries(fd, parent);
        const bool atRoot = parent.path == "/";
        const bool deeper = job.remaining >= 2;
        // Builds the nodes of entries [from, to) into slots of the same index; a slot
        // stays empty for an entry the search leaves out or that has vanished.
        std::vector<Status> slots(entries.size());
        // Mount points of dead drives in this folder get no status query (it would hang):
        // they are listed as folders and left unread.
        const std::vector<std::string> stuck = mountWatchdogStuckEntries(parent.path);
        auto build = [&](size_t from, size_t to) {
            for (size_t i = from; i < to; ++i) {
                const Entry& e = entries[i];
                const bool wanted = !m_searchFilter || m_searchFilter->matches(e.name);
                if (!stuck.empty() && std::find(stuck.begin(), stuck.end(), e.name) != stuck.end()) {
                    if (wanted)
                        slots[i] = makeNode(fd, e.name.c_str(), atRoot ? "/" + e.name : parent.path + "/" + e.name,
                                            DT_DIR, StatusQuery::Skip);
                    continue;
                }
                if (!wanted && e.type != DT_DIR && e.type != DT_LNK && e.type != DT_UNKNOWN)
                    continue; // a file the search will never print
                // A folder to go down into needs its device and inode.
                const bool needStatus = wanted || m_statusForAll || e.type == DT_LNK || e.type == DT_UNKNOWN
                    || (deeper && e.type == DT_DIR);
                Status status = makeNode(fd, e.name.c_str(), atRoot ? "/" + e.name : parent.path + "/" + e.name,
                                         e.type, needStatus ? StatusQuery::Ask : StatusQuery::Skip);
                if (status.node && (wanted || status.node->isDir))
                    slots[i] = std::move(status); // else a link or unknown entry that is no folder
            }
        };
        // A large folder's status queries are shared with a second thread; the slots
        // keep the directory's order, so the result does not depend on the split.
        if (m_threads >= 2 && entries.size() >= kSplitFolderFrom) {
            const size_t half = entries.size() / 2;
            std::thread helper(build, half, entries.size());
            build(0, half);
            helper.join();
        } else {
            build(0, entries.size());
        }
        std::shared_ptr<DirFd> own; // this folder's descriptor, once a subfolder opens through it
        std::vector<DirNodePtr> children;
        children.reserve(slots.size());
        for (size_t i = 0; i < slots.size(); ++i) {
            Status& status = slots[i];
            if (!status.node)
                continue;
            DirNode& node = *status.node;
            node.childrenLoaded = !node.isDir;
            if (node.isDir && deeper && mayEnter(status, entries[i].type, job.self.get())) {
                node.childrenLoaded = true;
                Job sub{&node, job.remaining - 1, nullptr, {}, 1,
                        std::make_shared<const WalkAncestor>(WalkAncestor{status.device, status.inode, job.self})};
                const std::string& name = entries[i].name;
                if (job.levels < kLevelsPerBase && job.fromBase.size() + 1 + name.size() < kRelativePathLimit) {
                    sub.base = base;
                    sub.fromBase = job.fromBase + "/" + name;
                    sub.levels = job.levels + 1;
                } else {
                    if (!own)
                        own = std::make_shared<DirFd>(fd);
                    sub.base = own;
                    sub.fromBase = name;
                }
                subs.push_back(std::move(sub));
            }
            children.push_back(std::move(status.node));
        }
        if (!own)
            sysClose(fd);
        parent.children = sortNodes(std::move(children), sortPlaceOf(parent.path), m_settings);
        parent.childrenLoaded = true;
    }

    bool mayEnter(const Status& status, unsigned char dType, const WalkAncestor* path) const
    {
        if (!status.known || !m_gate)
            return false; // where it lives is unknown: it stays unread, as at the depth limit
        return m_gate->mayEnter(status.device, status.inode, dType == DT_LNK ? WalkStep::Link : WalkStep::Folder,
                                path);
    }

    enum class StatusQuery { Ask, Skip };

    static Status makeNode(int dirfd, const char* name, std::string path, unsigned char dType, StatusQuery query)
    {
        Status status;
        struct stat st;
        int rc = -1;
        if (query == StatusQuery::Ask) {
            rc = statAt(dirfd, name, &st, 0);
            // Gone since the folder was read: left out. A link to nothing is still listed.
            if (rc != 0 && errno == ENOENT && statAt(dirfd, name, &st, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT)
                return status;
        }
        auto node = DirNode::make();
        node->name = name;
        node->path = std::move(path);
        const bool statOk = rc == 0;
        node->isDir = statOk ? S_ISDIR(st.st_mode) : dType == DT_DIR;
        node->size = statOk && !node->isDir ? int64_t(st.st_size) : 0;
        if (statOk)
            node->dateModified = int64_t(st.st_mtim.tv_sec);
        if (dType == DT_LNK)
            node->kind = "Alias";
        else if (node->isDir)
            node->kind = "Folder";
        else
            node->kind = nodeExtKind(node->name);
        status.node = std::move(node);
        if (statOk) {
            status.device = st.st_dev;
            status.inode = st.st_ino;
            status.known = true;
        }
        return status;
    }

    const BrondelSettings& m_settings;
    const int m_threads;
    const NameFilter* const m_searchFilter;
    const bool m_statusForAll;
    std::optional<WalkGate> m_gate; // set before the walk starts, for deep scans
};

} // namespace

Scanner::Scanner(const BrondelSettings& settings)
    : m_settings(settings)
{
}

DirNodePtr Scanner::scan(const std::string& path, int64_t depth) const
{
    auto root = DirNode::make();
    std::string last = pathLastComponent(path);
    root->name = last.empty() ? path : last;
    root->path = path;
    root->isDir = true;
    if (depth < 1)
        return root;
    ScanRun(m_settings, m_threads, m_searchFilter).run(*root, depth);
    return root;
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

std::string nodeExtKind(std::string_view name)
{
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return "Document";
    std::string_view ext = name.substr(dot + 1);
    std::string upper = isAscii(ext) ? asciiUpper(ext) : utf8Valid(ext) ? icuCase(ext, true) : asciiUpper(ext);
    return upper + " file";
}

std::string filterLower(std::string_view text)
{
    if (isAscii(text) || !utf8Valid(text)) {
        std::string out(text);
        for (char& c : out)
            if (c >= 'A' && c <= 'Z')
                c = char(c - 'A' + 'a');
        return out;
    }
    return icuCase(text, false);
}

NameFilter::NameFilter(std::string_view query)
    : m_lowerQuery(filterLower(query))
{
}

bool NameFilter::matches(std::string_view name) const
{
    if (isAscii(name)) {
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
