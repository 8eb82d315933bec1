#include "ops/op_copy.h"

#include "fs/file_io.h"
#include "fs/sys_calls.h"

#include <cerrno>
#include <cstdio>
#include <sys/xattr.h>
#include <vector>

namespace {

// Large enough that a reflink or a server-side copy takes few calls, small enough that
// progress, pause and cancel answer within a fraction of a second.
constexpr size_t kRangeChunk = size_t(8) << 20;
constexpr size_t kBufferSize = size_t(256) << 10;

template <typename Call>
auto retryIntr(Call call)
{
    decltype(call()) rc;
    do
        rc = call();
    while (rc < 0 && errno == EINTR);
    return rc;
}

// copy_file_range cannot be used between these two files: fall back to read and write.
bool rangeUnsupported(int error)
{
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EBADF
        || error == EPERM;
}

int copyByReadWrite(int in, int out, const OpChunkDone& chunkDone)
{
    // One buffer per thread: a fresh megabyte for each of many small files would cost
    // more than copying them.
    thread_local std::vector<char> buffer(kBufferSize);
    for (;;) {
        ssize_t n = retryIntr([&] { return sysCalls().read(in, buffer.data(), buffer.size()); });
        if (n < 0)
            return errno;
        if (n == 0)
            return 0;
        if (!sysWriteAll(out, buffer.data(), size_t(n)))
            return errno ? errno : EIO;
        if (!chunkDone(uint64_t(n)))
            return ECANCELED;
    }
}

// Copies the extended attributes the target accepts; a file system without them, or an
// attribute only root may set, is no reason to fail the copy.
void copyXattrs(int in, int out)
{
    ssize_t size = sysCalls().flistxattr(in, nullptr, 0);
    if (size <= 0)
        return;
    std::vector<char> names(size_t(size) + 1);
    size = sysCalls().flistxattr(in, names.data(), names.size());
    if (size <= 0)
        return;
    std::vector<char> value;
    for (size_t at = 0; at < size_t(size);) {
        const char* name = names.data() + at;
        at += std::char_traits<char>::length(name) + 1;
        ssize_t length = sysCalls().fgetxattr(in, name, nullptr, 0);
        if (length < 0)
            continue;
        value.resize(size_t(length) + 1);
        length = sysCalls().fgetxattr(in, name, value.data(), value.size());
        if (length < 0)
            continue;
        if (sysCalls().fsetxattr(out, name, value.data(), size_t(length), 0) != 0 && errno == ENOTSUP)
            return;
    }
}

void setTimes(const std::string& path, const struct stat& st)
{
    const struct timespec times[2] = {st.st_atim, st.st_mtim};
    sysCalls().utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

} // namespace

std::string opJoin(const std::string& dir, const std::string& name)
{
    if (dir.empty())
        return name;
    return dir.back() == '/' ? dir + name : dir + "/" + name;
}

int opCopyData(int in, int out, const OpChunkDone& chunkDone)
{
    sysCalls().fadvise(in, 0, 0, POSIX_FADV_SEQUENTIAL); // a hint: read ahead further
    for (;;) {
        ssize_t n = retryIntr([&] { return sysCalls().copy_file_range(in, nullptr, out, nullptr, kRangeChunk, 0); });
        if (n < 0) {
            if (rangeUnsupported(errno))
                return copyByReadWrite(in, out, chunkDone); // continues from the current offsets
            return errno;
        }
        if (n == 0)
            return 0;
        if (!chunkDone(uint64_t(n)))
            return ECANCELED;
    }
}

int opRenameNoReplace(const std::string& from, const std::string& to)
{
    int rc = retryIntr([&] { return sysCalls().renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE); });
    if (rc == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return errno;
    // No atomic no-replace rename here: check, then rename. The window is tiny, and a
    // hard link (which never replaces) is tried first for a file.
    struct stat st;
    if (sysCalls().lstat(to.c_str(), &st) == 0)
        return EEXIST;
    if (sysCalls().lstat(from.c_str(), &st) == 0 && !S_ISDIR(st.st_mode)) {
        bool linkable = true;
        bool tempUsed = false;
        int error = filePlaceNew(from, to, linkable, tempUsed);
        if (error)
            return error;
        if (!tempUsed)
            sysCalls().unlink(from.c_str()); // the old name of a file now also at `to`
        return 0;
    }
    return retryIntr([&] { return sysCalls().rename(from.c_str(), to.c_str()); }) == 0 ? 0 : errno;
}

int opCopyRegular(const std::string& source, const struct stat& st, const std::string& target,
                  OpDurability durability, const OpChunkDone& chunkDone, const std::function<int()>& beforePlace)
{
    int in = sysOpen(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NOCTTY);
    if (in < 0)
        return errno;
    std::string temp;
    int out = -1;
    for (int attempt = 0; attempt < 100 && out < 0; ++attempt) {
        temp = fileTempName(target);
        out = sysOpen(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
        if (out < 0 && errno != EEXIST)
            break;
    }
    if (out < 0) {
        int error = errno;
        sysClose(in);
        return error;
    }
    int error = opCopyData(in, out, chunkDone);
    if (error == 0) {
        copyXattrs(in, out);
        // Only root may give a file away; anyone may pick among their own groups.
        if (sysCalls().fchown(out, st.st_uid, st.st_gid) != 0)
            sysCalls().fchown(out, uid_t(-1), st.st_gid);
        sysCalls().fchmod(out, st.st_mode & 07777);
        if (durability == OpDurability::Synced && retryIntr([&] { return sysCalls().fdatasync(out); }) != 0)
            error = errno;
    }
    if (sysClose(out) != 0 && error == 0)
        error = errno; // a network file system may report a failed write only here
    sysClose(in);
    if (error == 0) {
        setTimes(temp, st);
        if (beforePlace)
            error = beforePlace();
        if (error == 0)
            error = opRenameNoReplace(temp, target);
    }
    if (error != 0)
        sysCalls().unlink(temp.c_str()); // our own half copy, never the user's file
    return error;
}

int opCopySymlink(const std::string& source, const struct stat& st, const std::string& target)
{
    std::string text(size_t(st.st_size > 0 ? st.st_size : 255) + 1, '\0');
    for (;;) {
        ssize_t n = sysCalls().readlink(source.c_str(), text.data(), text.size());
        if (n < 0)
            return errno;
        if (size_t(n) < text.size()) {
            text.resize(size_t(n));
            break;
        }
        text.resize(text.size() * 2); // the link changed size meanwhile
    }
    if (sysCalls().symlink(text.c_str(), target.c_str()) != 0)
        return errno;
    setTimes(target, st);
    return 0;
}

int opSyncFolder(const std::string& dir)
{
    int fd = sysOpen(dir.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0)
        return errno;
    int error = retryIntr([&] { return sysCalls().fsync(fd); }) == 0 ? 0 : errno;
    sysClose(fd);
    return error == EINVAL || error == EROFS || error == ENOTSUP ? 0 : error;
}

void opFinishFolder(const std::string& target, const struct stat& st)
{
    sysCalls().fchmodat(AT_FDCWD, target.c_str(), st.st_mode & 07777, 0);
    setTimes(target, st);
}
