#include "support/temp_tree.h"

#include "support/test_env.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

void mkdirs(const std::string& path)
{
    for (size_t pos = 1; pos <= path.size(); ++pos) {
        if (pos == path.size() || path[pos] == '/')
            ::mkdir(path.substr(0, pos).c_str(), 0755);
    }
}

std::string parentOf(const std::string& p) { return p.substr(0, p.rfind('/')); }

} // namespace

TempTree::TempTree()
{
    std::string pattern = testHome() + "/tree-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    if (!::mkdtemp(buf.data()))
        throw std::runtime_error("mkdtemp failed");
    m_root = buf.data();
}

TempTree::~TempTree()
{
    // Make everything readable again so the tree can be cleaned up with the home.
    std::string cmd = "chmod -R u+rwx '" + m_root + "' 2>/dev/null";
    [[maybe_unused]] int rc = std::system(cmd.c_str());
}

std::string TempTree::dir(const std::string& rel)
{
    std::string p = path(rel);
    mkdirs(p);
    return p;
}

std::string TempTree::file(const std::string& rel, const std::string& content)
{
    std::string p = path(rel);
    mkdirs(parentOf(p));
    int fd = ::open(p.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        throw std::runtime_error("cannot create " + p);
    if (!content.empty() && ::write(fd, content.data(), content.size()) != ssize_t(content.size()))
        throw std::runtime_error("short write " + p);
    ::close(fd);
    return p;
}

std::string TempTree::sized(const std::string& rel, int64_t size)
{
    std::string p = file(rel);
    if (::truncate(p.c_str(), size) != 0)
        throw std::runtime_error("truncate " + p);
    return p;
}

std::string TempTree::symlink(const std::string& rel, const std::string& target)
{
    std::string p = path(rel);
    mkdirs(parentOf(p));
    if (::symlink(target.c_str(), p.c_str()) != 0)
        throw std::runtime_error("symlink " + p);
    return p;
}

std::string TempTree::hardlink(const std::string& rel, const std::string& existingRel)
{
    std::string p = path(rel);
    mkdirs(parentOf(p));
    if (::link(path(existingRel).c_str(), p.c_str()) != 0)
        throw std::runtime_error("link " + p);
    return p;
}

void TempTree::chmod(const std::string& rel, unsigned mode) { ::chmod(path(rel).c_str(), mode); }

void TempTree::setMtime(const std::string& rel, int64_t seconds, long nanoseconds)
{
    struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ::utimensat(AT_FDCWD, path(rel).c_str(), times, AT_SYMLINK_NOFOLLOW);
}
