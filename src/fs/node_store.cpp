#include "fs/node_store.h"

#include "fs/file_io.h"
#include "fs/huge_pages.h"
#include "fs/kind_table.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace {

constexpr size_t kRecordChunk = 4096;      // records per chunk, unless a folder needs more
constexpr size_t kNameChunk = 256 * 1024;  // bytes per name chunk, unless a folder needs more

} // namespace

uint8_t nodeMeta(const NodeRecord& record)
{
    return std::atomic_ref<uint8_t>(const_cast<uint8_t&>(record.meta)).load(std::memory_order_acquire);
}

void nodeMetaPublish(NodeRecord& record, int64_t size, const int64_t* date)
{
    record.size = size;
    record.date = date ? *date : 0;
    const uint8_t meta = uint8_t(kMetaKnown | (date ? kMetaHasDate : 0));
    std::atomic_ref<uint8_t>(record.meta).store(meta, std::memory_order_release);
}

NodeStore::NodeStore(std::string rootPath)
    : m_rootPath(std::move(rootPath))
{
    const std::string last = pathLastComponent(m_rootPath);
    const std::string& name = last.empty() ? m_rootPath : last;
    std::string packed = name;
    packed.push_back('\0');
    m_root.name = addNames(packed);
    m_root.nameLength = uint16_t(std::min<size_t>(name.size(), UINT16_MAX));
    m_root.flags = kNodeDir;
    m_root.kind = kindOfEntry(name, EntryType::Folder);
}

NodeStore::~NodeStore() = default;

NodeRecord* NodeStore::allocate(size_t count)
{
    if (count == 0)
        return nullptr;
    std::lock_guard lock(m_mutex);
    if (count > m_recordsLeft) {
        const size_t size = std::max(kRecordChunk, count);
        auto* chunk = static_cast<NodeRecord*>(std::calloc(size, sizeof(NodeRecord)));
        if (!chunk)
            throw std::bad_alloc();
        hugePagesAdvise(chunk, size * sizeof(NodeRecord)); // still untouched: calloc maps fresh pages
        m_recordChunks.emplace_back(chunk);
        m_recordNext = m_recordChunks.back().get();
        m_recordsLeft = size;
        m_bytes += size * sizeof(NodeRecord);
    }
    NodeRecord* block = m_recordNext;
    m_recordNext += count;
    m_recordsLeft -= count;
    return block;
}

const char* NodeStore::addNames(std::string_view packed)
{
    std::lock_guard lock(m_mutex);
    if (packed.size() > m_namesLeft) {
        const size_t size = std::max(kNameChunk, packed.size());
        m_nameChunks.emplace_back(new char[size]);
        m_nameNext = m_nameChunks.back().get();
        m_namesLeft = size;
        m_bytes += size;
    }
    char* at = m_nameNext;
    std::memcpy(at, packed.data(), packed.size());
    m_nameNext += packed.size();
    m_namesLeft -= packed.size();
    return at;
}

const char* NodeStore::addNames(std::string&& packed)
{
    if (packed.size() < kNameChunk / 2)
        return addNames(std::string_view(packed));
    std::lock_guard lock(m_mutex);
    m_bytes += packed.capacity();
    return m_keptNames.emplace_back(std::move(packed)).data();
}

void NodeStore::appendPath(const NodeRecord& record, std::string& into) const
{
    if (!record.parent) {
        into += m_rootPath;
        return;
    }
    appendPath(*record.parent, into);
    // As the scanner joins them: "/" + name at the root folder, path + "/" + name below.
    if (record.parent->parent || m_rootPath != "/")
        into.push_back('/');
    into.append(record.name, record.nameLength);
}

std::string NodeStore::path(const NodeRecord& record) const
{
    std::string out;
    appendPath(record, out);
    return out;
}

size_t NodeStore::bytesHeld() const
{
    std::lock_guard lock(m_mutex);
    return m_bytes;
}

std::string_view nodeKindText(const NodeRecord& record)
{
    if (record.kind != kKindFromName)
        return kindText(record.kind);
    // Past the table's capacity: worked out again (only ever a file's extension kind).
    thread_local std::string text;
    text = nodeExtKind(record.nameView());
    return text;
}

namespace {

DirNodePtr nodeFrom(const NodeRecord& record, std::string path)
{
    auto node = DirNode::make();
    node->name.assign(record.name, record.nameLength);
    node->path = std::move(path);
    node->isDir = record.isDir();
    const uint8_t meta = nodeMeta(record);
    if (meta & kMetaKnown) {
        node->size = record.size;
        if (meta & kMetaHasDate)
            node->dateModified = record.date;
    }
    node->kind = std::string(nodeKindText(record));
    node->childrenLoaded = record.flags & kNodeLoaded;
    node->readError = record.readError;
    return node;
}

} // namespace

void nodeStoreChildrenTo(const NodeStore& store, const NodeRecord& record, std::string& pathBuffer,
    std::vector<DirNodePtr>& into)
{
    into.reserve(into.size() + record.childCount);
    const size_t base = pathBuffer.size();
    const bool slash = record.parent || store.rootPath() != "/";
    for (uint32_t i = 0; i < record.childCount; ++i) {
        const NodeRecord& child = record.children[i];
        if (slash)
            pathBuffer.push_back('/');
        pathBuffer.append(child.name, child.nameLength);
        DirNodePtr node = nodeFrom(child, pathBuffer);
        if (child.childCount)
            nodeStoreChildrenTo(store, child, pathBuffer, node->children);
        into.push_back(std::move(node));
        pathBuffer.resize(base);
    }
}

DirNodePtr nodeStoreToDirNode(const NodeStore& store, const NodeRecord& record)
{
    std::string path = store.path(record);
    DirNodePtr node = nodeFrom(record, path);
    if (!record.parent)
        node->kind.clear(); // a scanned root has no kind of its own
    nodeStoreChildrenTo(store, record, path, node->children);
    return node;
}

bool DirNode::hasEntries() const
{
    return !children.empty() || (store && store->root().childCount > 0);
}

size_t dirNodeEntryCount(const DirNode& node)
{
    return node.children.size() + (node.store ? node.store->root().childCount : 0);
}

DirNodePtr nodeStoreRecordNode(const NodeStore& store, const NodeRecord& record)
{
    auto node = DirNode::make();
    node->name.assign(record.name, record.nameLength);
    node->path = store.path(record);
    node->isDir = record.isDir();
    const uint8_t meta = nodeMeta(record);
    if (meta & kMetaKnown)
        node->size = record.size;
    if (meta & kMetaHasDate)
        node->dateModified = record.date;
    node->kind = std::string(nodeKindText(record));
    node->childrenLoaded = !record.isDir();
    return node;
}
