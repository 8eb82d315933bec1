#include "fs/kind_table.h"

#include "fs/utf8.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace {

struct StringHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
};

// Texts are written once, before their number is handed out, and never freed: readers
// on any thread look a number up without a lock.
class KindTable {
public:
    uint16_t intern(std::string_view kind)
    {
        std::lock_guard lock(m_mutex);
        if (auto it = m_ids.find(kind); it != m_ids.end())
            return it->second;
        const size_t id = m_ids.size();
        if (id >= kKindFromName)
            return kKindFromName;
        auto* text = new std::string(kind);
        m_texts[id].store(text, std::memory_order_release);
        m_ids.emplace(*text, uint16_t(id));
        return uint16_t(id);
    }

    std::string_view text(uint16_t id) const
    {
        if (id == kKindFromName)
            return {};
        const std::string* text = m_texts[id].load(std::memory_order_acquire);
        return text ? std::string_view(*text) : std::string_view();
    }

    // The number of a file name's extension kind, from a small per-thread memo keyed by
    // the extension's bytes (most folders hold a handful of extensions).
    uint16_t ofExtension(std::string_view name)
    {
        const size_t dot = name.rfind('.');
        const std::string_view ext = dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot);
        // A small direct-mapped memo of short extensions first (a folder of a million
        // entries asks a million times), then a map of all seen.
        struct Slot {
            char bytes[15];
            uint8_t length = 0xFF; // empty
            uint16_t id = 0;
        };
        thread_local Slot recent[64];
        Slot* slot = nullptr;
        if (ext.size() <= sizeof(Slot::bytes)) {
            const size_t hash = ext.empty() ? 0 : (ext.size() * 31 + uint8_t(ext.back()) * 7 + uint8_t(ext[1 % ext.size()])) & 63;
            slot = &recent[hash];
            if (slot->length == ext.size() && (ext.empty() || std::memcmp(slot->bytes, ext.data(), ext.size()) == 0))
                return slot->id;
        }
        thread_local std::unordered_map<std::string, uint16_t, StringHash, std::equal_to<>> memo;
        uint16_t id;
        if (auto it = memo.find(ext); it != memo.end()) {
            id = it->second;
        } else {
            id = intern(nodeExtKind(name));
            if (id == kKindFromName)
                return id;
            if (memo.size() < 4096)
                memo.emplace(std::string(ext), id);
        }
        if (slot) {
            if (!ext.empty()) // an empty view may hold no pointer at all
                std::memcpy(slot->bytes, ext.data(), ext.size());
            slot->length = uint8_t(ext.size());
            slot->id = id;
        }
        return id;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<std::string_view, uint16_t, StringHash, std::equal_to<>> m_ids;
    std::unique_ptr<std::atomic<const std::string*>[]> m_texts{new std::atomic<const std::string*>[kKindFromName]()};
};

// Never destroyed: a thread let go of at exit may still be interning.
KindTable& table()
{
    static KindTable* kinds = new KindTable;
    return *kinds;
}

std::string asciiUpper(std::string_view s)
{
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
    return out;
}

} // namespace

uint16_t kindIntern(std::string_view kind)
{
    return table().intern(kind);
}

std::string_view kindText(uint16_t id)
{
    return table().text(id);
}

uint16_t kindOfEntry(std::string_view name, EntryType type)
{
    static const uint16_t alias = kindIntern("Alias");
    static const uint16_t folder = kindIntern("Folder");
    switch (type) {
    case EntryType::Link: return alias;
    case EntryType::Folder: return folder;
    case EntryType::File: break;
    }
    return table().ofExtension(name);
}

std::string nodeExtKind(std::string_view name)
{
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return "Document";
    std::string_view ext = name.substr(dot + 1);
    std::string upper = asciiOnly(ext) || !utf8Valid(ext) ? asciiUpper(ext) : utf8CaseMapped(ext, CaseMap::Upper);
    return upper + " file";
}
