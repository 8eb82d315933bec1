// Deleting for good. Every step goes through the descriptor of the folder holding the
// item (fstatat, openat, unlinkat, never a path walked again from the top), so a link
// anywhere in the tree is removed as a link and a folder swapped for a link while the job
// runs leads nowhere outside the tree. A folder holding a mount is not entered.

#include "fs/dir_fd.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "ops/op_job.h"

#include <cerrno>

namespace {

// 0, or the errno of `call` (which returns 0 or -1), retried while interrupted.
template <typename Call>
int uninterrupted(Call call)
{
    int result;
    do
        result = call();
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

int openFolderAt(int dirFd, const char* name, int& fd)
{
    do
        fd = sysCalls().openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC, 0);
    while (fd < 0 && errno == EINTR);
    return fd < 0 ? errno : 0;
}

// A name that deleting may remove from its folder: one component, not "." or "..".
bool removableName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name != "/" && name.find('/') == std::string::npos;
}

} // namespace

OpJob::Flow OpJob::removeAt(int dirFd, const std::string& dirPath, const std::string& name, dev_t device)
{
    const std::string path = opJoin(dirPath, name);
    struct stat st;
    Flow flow = attempt(path, [&] {
        return uninterrupted([&] { return sysCalls().fstatat(dirFd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW); });
    });
    if (flow != Flow::Ok)
        return flow;
    m_progress.currentItem = path;
    if (S_ISDIR(st.st_mode)) {
        if (st.st_dev != device) // another file system mounted here: not ours to empty
            return attempt(path, [] { return EBUSY; });
        int fd = -1;
        flow = attempt(path, [&] { return openFolderAt(dirFd, name.c_str(), fd); });
        if (flow != Flow::Ok)
            return flow;
        DirFd folder(fd);
        std::vector<std::string> names;
        std::vector<char> buffer(size_t(64) << 10);
        flow = attempt(path, [&] {
            names.clear();
            return dirForEachEntry(folder.fd(), buffer, [&](const char* entry, unsigned char) { names.emplace_back(entry); });
        });
        if (flow != Flow::Ok)
            return flow;
        bool emptied = true;
        for (const std::string& entry : names) {
            const Flow inner = removeAt(folder.fd(), path, entry, device);
            if (inner == Flow::Stop)
                return inner;
            emptied = emptied && inner == Flow::Ok;
        }
        if (!emptied) // what was skipped keeps the folder; it was reported already
            return Flow::Skipped;
        flow = attempt(path, [&] {
            return uninterrupted([&] { return sysCalls().unlinkat(dirFd, name.c_str(), AT_REMOVEDIR); });
        });
    } else {
        flow = attempt(path, [&] { return uninterrupted([&] { return sysCalls().unlinkat(dirFd, name.c_str(), 0); }); });
        if (flow == Flow::Ok && S_ISREG(st.st_mode))
            m_progress.bytesDone += uint64_t(st.st_size);
    }
    if (flow == Flow::Ok) {
        ++m_progress.itemsDone;
        tick();
    }
    return flow;
}

void OpJob::runDelete(const OpRequest& request)
{
    m_progress.counting = true;
    for (const std::string& source : request.sources)
        count(source);
    m_progress.counting = false;
    tick(true);
    for (const std::string& source : request.sources) {
        const std::string name = pathLastComponent(source);
        const std::string parent = pathParent(source);
        if (!removableName(name) || parent.empty()) {
            if (attempt(source, [] { return EINVAL; }) == Flow::Stop)
                return;
            continue;
        }
        int fd = -1;
        struct stat where;
        // The folder the user is in may be reached through a link; the items in it never are.
        Flow flow = attempt(source, [&] {
            fd = sysOpen(parent.c_str(), O_RDONLY | O_DIRECTORY);
            if (fd < 0)
                return errno;
            if (sysCalls().fstat(fd, &where) == 0)
                return 0;
            const int error = errno;
            sysClose(fd);
            return error;
        });
        if (flow == Flow::Stop)
            return;
        if (flow != Flow::Ok)
            continue;
        DirFd folder(fd);
        if (removeAt(folder.fd(), parent, name, where.st_dev) == Flow::Stop)
            return;
    }
}
