#include "fs/scanner.h"

#include "fs/file_io.h"
#include "fs/sort_nodes.h"
#include "fs/mount_watchdog.h"
#include "fs/sys_calls.h"
#include "fs/utf8.h"
#include "fs/work_stack.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <dirent.h>
#include <mutex>
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

struct Job {
    DirNode* node = nullptr;
    int64_t remaining = 0;
};

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
        if (m_threads <= 1 || depth < 2) {
            readTree(root, depth);
            return;
        }
        WorkStack<Job>::run({{&root, depth}}, m_threads,
                            [this](Job& job, std::vector<Job>& subs) { readFolder(*job.node, job.remaining, subs); });
    }

private:
    // Sequential depth-first reading.
    void readTree(DirNode& node, int64_t remaining)
    {
        std::vector<Job> subs;
        readFolder(node, remaining, subs);
        for (const Job& job : subs)
            readTree(*job.node, job.remaining);
    }

    // Reads one folder into node.children; appends its subfolders still to be read.
    void readFolder(DirNode& parent, int64_t remaining, std::vector<Job>& subs)
    {
        // A folder on a drive that does not answer is not opened: it stays empty.
        if (mountWatchdogCheck(parent.path) != MountState::Responding)
            return;
        int fd = sysOpen(parent.path.c_str(), O_RDONLY | O_DIRECTORY);
        DIR* dir = fd >= 0 ? ::fdopendir(fd) : nullptr;
        if (!dir) {
            if (fd >= 0)
                sysClose(fd);
            return;
        }
        const bool atRoot = parent.path == "/";
        struct Entry {
            std::string name;
            unsigned char type;
        };
        std::vector<Entry> entries;
        while (struct dirent* entry = ::readdir(dir)) {
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                continue;
            if (name[0] == '.' && !m_settings.showHidden)
                continue;
            entries.push_back({name, entry->d_type});
        }
        // Builds the nodes of entries [from, to) into slots of the same index; a slot
        // stays empty for an entry the search leaves out.
        std::vector<DirNodePtr> slots(entries.size());
        // Mount points of dead drives in this folder get no status query (it would hang).
        const std::vector<std::string> stuck = mountWatchdogStuckEntries(parent.path);
        auto build = [&](size_t from, size_t to) {
            for (size_t i = from; i < to; ++i) {
                const Entry& e = entries[i];
                if (!stuck.empty() && std::find(stuck.begin(), stuck.end(), e.name) != stuck.end()) {
                    if (!m_searchFilter || m_searchFilter->matches(e.name))
                        slots[i] = makeNode(fd, e.name.c_str(), atRoot ? "/" + e.name : parent.path + "/" + e.name,
                                            DT_DIR, StatusQuery::Skip);
                    continue;
                }
                const bool wanted = !m_searchFilter || m_searchFilter->matches(e.name);
                if (!wanted && e.type != DT_DIR && e.type != DT_LNK && e.type != DT_UNKNOWN)
                    continue; // a file the search will never print
                const bool needStatus = wanted || m_statusForAll || e.type == DT_LNK || e.type == DT_UNKNOWN;
                auto node = makeNode(fd, e.name.c_str(), atRoot ? "/" + e.name : parent.path + "/" + e.name, e.type,
                                     needStatus ? StatusQuery::Ask : StatusQuery::Skip);
                if (!wanted && !node->isDir)
                    continue; // a link or unknown entry that turned out not to be a folder
                slots[i] = std::move(node);
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
        std::vector<DirNodePtr> children;
        children.reserve(slots.size());
        for (auto& node : slots) {
            if (!node)
                continue;
            if (node->isDir && remaining >= 2) {
                node->childrenLoaded = true;
                subs.push_back({node.get(), remaining - 1});
            } else {
                node->childrenLoaded = !node->isDir;
            }
            children.push_back(std::move(node));
        }
        ::closedir(dir);
        parent.children = sortNodes(std::move(children), sortPlaceOf(parent.path), m_settings);
        parent.childrenLoaded = true;
    }

    enum class StatusQuery { Ask, Skip };

    static DirNodePtr makeNode(int dirfd, const char* name, std::string path, unsigned char dType, StatusQuery query)
    {
        auto node = DirNode::make();
        node->name = name;
        node->path = std::move(path);
        struct stat st;
        int rc = -1;
        if (query == StatusQuery::Ask) {
            do
                rc = sysCalls().fstatat(dirfd, name, &st, 0);
            while (rc != 0 && errno == EINTR);
        }
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
        return node;
    }

    const BrondelSettings& m_settings;
    const int m_threads;
    const NameFilter* const m_searchFilter;
    const bool m_statusForAll;
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
