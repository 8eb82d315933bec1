#include "fs/file_io.h"

#include "fs/sys_calls.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>

std::optional<std::string> fileReadAll(const std::string& path)
{
    int fd = sysOpen(path.c_str(), O_RDONLY);
    if (fd < 0)
        return std::nullopt;
    struct stat st;
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        sysClose(fd);
        return std::nullopt;
    }
    std::string text;
    char buf[65536];
    for (;;) {
        ssize_t n = sysReadAll(fd, buf, sizeof buf);
        if (n < 0) {
            sysClose(fd);
            return std::nullopt;
        }
        text.append(buf, size_t(n));
        if (size_t(n) < sizeof buf)
            break;
    }
    sysClose(fd);
    return text;
}

std::string pathParent(const std::string& path)
{
    size_t end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    size_t slash = path.rfind('/', end - 1);
    if (slash == std::string::npos)
        return "";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string pathLastComponent(const std::string& path)
{
    size_t end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    if (end == 1 && path[0] == '/')
        return "/";
    size_t slash = path.rfind('/', end - 1);
    size_t start = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(start, end - start);
}

bool fileMakeDirs(const std::string& dir)
{
    if (dir.empty())
        return false;
    struct stat st;
    if (sysCalls().stat(dir.c_str(), &st) == 0)
        return S_ISDIR(st.st_mode);
    std::string parent = pathParent(dir);
    if (!parent.empty() && parent != dir)
        fileMakeDirs(parent);
    if (sysCalls().mkdir(dir.c_str(), 0777) == 0 || errno == EEXIST)
        return sysCalls().stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    return false;
}

std::optional<std::string> fileWriteTemp(const std::string& path, std::string_view text)
{
    // A unique temporary name in the same directory, so the rename stays on one device.
    static std::atomic<unsigned> counter{0};
    std::string temp;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        temp = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-"
            + std::to_string(stamp & 0xffffff);
        fd = sysOpen(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (fd < 0 && errno != EEXIST)
            return std::nullopt;
    }
    if (fd < 0)
        return std::nullopt;
    bool ok = sysWriteAll(fd, text.data(), text.size());
    ok = ok && sysCalls().fsync(fd) == 0;
    ok = sysClose(fd) == 0 && ok;
    if (ok)
        return temp;
    int error = errno;
    sysCalls().unlink(temp.c_str());
    errno = error;
    return std::nullopt;
}

bool fileWriteAtomic(const std::string& path, std::string_view text, ParentDirs parents)
{
    if (path.empty())
        return false;
    std::string dir = pathParent(path);
    if (parents == ParentDirs::Create && !dir.empty())
        fileMakeDirs(dir);
    std::optional<std::string> temp = fileWriteTemp(path, text);
    if (!temp)
        return false;
    if (sysCalls().rename(temp->c_str(), path.c_str()) == 0)
        return true;
    sysCalls().unlink(temp->c_str());
    return false;
}
