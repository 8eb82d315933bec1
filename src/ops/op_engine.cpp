#include "ops/op_engine.h"

#include "fs/sys_calls.h"

#include <cerrno>
#include <climits>
#include <vector>

void OpControl::cancel()
{
    std::lock_guard lock(m_lock);
    m_cancelled.store(true, std::memory_order_release);
    m_wake.notify_all();
}

void OpControl::pause() { m_paused.store(true, std::memory_order_release); }

void OpControl::resume()
{
    std::lock_guard lock(m_lock);
    m_paused.store(false, std::memory_order_release);
    m_wake.notify_all();
}

bool OpControl::waitWhilePaused()
{
    std::unique_lock lock(m_lock);
    m_wake.wait(lock, [this] { return !paused() || cancelled(); });
    return !cancelled();
}

bool opStampOf(const std::string& path, OpStamp& stamp)
{
    struct stat st;
    if (sysCalls().lstat(path.c_str(), &st) != 0)
        return false;
    stamp.dev = st.st_dev;
    stamp.ino = st.st_ino;
    stamp.isDir = S_ISDIR(st.st_mode);
    // A folder's size and time change with what is put in it, which an undo of the
    // folder itself does not care about.
    stamp.size = stamp.isDir ? 0 : int64_t(st.st_size);
    stamp.mtimeNs = stamp.isDir ? 0 : int64_t(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    return true;
}

namespace {

const char* kindTitle(OpKind kind)
{
    switch (kind) {
    case OpKind::Copy: return "Copy";
    case OpKind::Move: return "Move";
    case OpKind::Rename: return "Rename";
    case OpKind::NewFolder: return "New Folder";
    case OpKind::Trash: return "Move to Trash";
    case OpKind::Restore: return "Put Back";
    case OpKind::Delete: return "Delete";
    }
    return "";
}

} // namespace

std::string opUndoText(OpKind kind) { return std::string("Undo ") + kindTitle(kind); }
std::string opRedoText(OpKind kind) { return std::string("Redo ") + kindTitle(kind); }

std::string opKeepBothName(const std::string& name, int n, bool isDir)
{
    size_t dot = isDir ? std::string::npos : name.rfind('.');
    if (dot == 0)
        dot = std::string::npos; // a hidden file's leading dot starts no extension
    // "archive.tar.gz" numbers the archive, not the "tar".
    if (dot != std::string::npos && dot >= 5 && name.compare(dot - 4, 4, ".tar") == 0)
        dot -= 4;
    std::string stem = name.substr(0, dot);
    const std::string ext = dot == std::string::npos ? std::string() : name.substr(dot);
    const std::string number = " (" + std::to_string(n) + ")";
    // Shortened to fit one component, never inside a UTF-8 sequence.
    if (stem.size() + number.size() + ext.size() > NAME_MAX) {
        stem.resize(NAME_MAX > number.size() + ext.size() ? NAME_MAX - number.size() - ext.size() : 0);
        // Drop a sequence the cut left incomplete: find where the last one starts.
        size_t lead = stem.size();
        while (lead > 0 && stem.size() - lead < 4 && (static_cast<unsigned char>(stem[lead - 1]) & 0xC0) == 0x80)
            --lead;
        if (lead > 0) {
            const unsigned char first = static_cast<unsigned char>(stem[lead - 1]);
            const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
            if (stem.size() - (lead - 1) < length)
                stem.resize(lead - 1);
        }
    }
    return stem + number + ext;
}
