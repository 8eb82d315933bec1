#include "fs/file_info.h"

#include "fs/file_io.h"
#include "fs/sys_calls.h"

#include <QFile>
#include <QMimeDatabase>

#include <cerrno>
#include <climits>

namespace {

// Qt's own lookup (default match mode) takes a QString, which cannot carry a name that
// is not valid in the locale's encoding. Such a name is handed to Qt as an open file
// plus its decoded name instead, after the same type checks Qt makes first.
std::string mimeKind(const std::string& path, unsigned mode)
{
    QMimeDatabase db;
    QString decoded = QFile::decodeName(path.c_str());
    if (QFile::encodeName(decoded) == QByteArray(path.data(), qsizetype(path.size())))
        return db.mimeTypeForFile(decoded).name().toStdString();

    const char* special = S_ISDIR(mode) ? "inode/directory"
        : S_ISCHR(mode)                  ? "inode/chardevice"
        : S_ISBLK(mode)                  ? "inode/blockdevice"
        : S_ISFIFO(mode)                 ? "inode/fifo"
        : S_ISSOCK(mode)                 ? "inode/socket"
                                         : nullptr;
    if (special)
        return special;
    QFile file;
    int fd = sysOpen(path.c_str(), O_RDONLY);
    if (fd >= 0 && !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        sysClose(fd);
    return db.mimeTypeForFileNameAndData(decoded, &file).name().toStdString();
}

int statxRetry(const char* path, int flags, struct statx* st)
{
    int rc;
    do
        rc = sysCalls().statx(AT_FDCWD, path, flags, STATX_BASIC_STATS | STATX_BTIME, st);
    while (rc != 0 && errno == EINTR);
    return rc;
}

} // namespace

std::string fileInfoOctal(unsigned mode)
{
    mode &= 07777;
    if (mode == 0)
        return "0";
    std::string digits;
    for (; mode != 0; mode >>= 3)
        digits.insert(digits.begin(), char('0' + (mode & 7)));
    return digits;
}

FileInfo FileInfo::gather(const std::string& path)
{
    FileInfo info;
    info.path = path;
    // The empty path names the working directory, as a file URL made of it would.
    const std::string target = path.empty() ? std::string(".") : path;
    if (path.empty()) {
        char cwd[PATH_MAX];
        info.name = ::getcwd(cwd, sizeof cwd) ? pathLastComponent(cwd) : ".";
    } else {
        info.name = pathLastComponent(path);
    }

    struct statx st;
    if (statxRetry(target.c_str(), 0, &st) == 0) {
        info.kind = mimeKind(target, st.stx_mode);
        if (S_ISREG(st.stx_mode))
            info.size = int64_t(st.stx_size);
        if (st.stx_mask & STATX_BTIME)
            info.created = int64_t(st.stx_btime.tv_sec);
        if (st.stx_mask & STATX_MTIME)
            info.modified = int64_t(st.stx_mtime.tv_sec);
    }
    if (statxRetry(target.c_str(), AT_SYMLINK_NOFOLLOW, &st) == 0 && (st.stx_mask & STATX_MODE))
        info.permissions = fileInfoOctal(st.stx_mode);
    return info;
}
