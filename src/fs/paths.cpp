#include "fs/paths.h"

#include "fs/dir_fd.h"
#include "fs/sys_calls.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace {

// One password-database entry: of the running user for an empty name.
template <typename Field>
std::string passwdField(const std::string& user, Field field)
{
    struct passwd pw;
    struct passwd* found = nullptr;
    std::vector<char> buf(16384);
    if (user.empty())
        getpwuid_r(::getuid(), &pw, buf.data(), buf.size(), &found);
    else
        getpwnam_r(user.c_str(), &pw, buf.data(), buf.size(), &found);
    const char* value = found ? field(*found) : nullptr;
    return value ? std::string(value) : std::string();
}

std::string homeOfUser(const std::string& user)
{
    return passwdField(user, [](const passwd& p) { return p.pw_dir; });
}

} // namespace

std::string homeDir()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    std::string home = homeOfUser("");
    return home.empty() ? "/" : home;
}

std::string loginName()
{
    std::string name = passwdField("", [](const passwd& p) { return p.pw_name; });
    if (name.empty())
        if (const char* user = std::getenv("USER"))
            name = user;
    return name;
}

std::string expandTilde(const std::string& path)
{
    if (path.empty() || path[0] != '~')
        return path;
    size_t slash = path.find('/');
    std::string user = path.substr(1, slash == std::string::npos ? std::string::npos : slash - 1);
    std::string home = user.empty() ? homeDir() : homeOfUser(user);
    if (home.empty())
        return path;
    std::string rest = slash == std::string::npos ? "" : path.substr(slash);
    // "~/" on a home of "/" must not give "//".
    if (home.size() > 1 && home.back() == '/')
        home.pop_back();
    if (home == "/" && !rest.empty())
        return rest;
    return home + rest;
}

std::string pathBytesFromText(const QString& text)
{
    const std::string encoded = QFile::encodeName(text).toStdString();
    struct stat st;
    if (sysCalls().stat(encoded.c_str(), &st) == 0 || !text.startsWith(QLatin1Char('/')))
        return encoded;
    std::string path;
    std::vector<char> buffer(64 * 1024);
    for (const QString& part : text.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        std::string next = path + "/" + QFile::encodeName(part).toStdString();
        if (sysCalls().stat(next.c_str(), &st) != 0) {
            const int fd = sysOpen(path.empty() ? "/" : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (fd < 0)
                return encoded;
            const DirFd folder(fd);
            next.clear();
            dirForEachEntry(folder.fd(), buffer, [&](const char* name, unsigned char) {
                if (next.empty() && QFile::decodeName(name) == part)
                    next = path + "/" + name;
            });
            if (next.empty())
                return encoded;
        }
        path = std::move(next);
    }
    return path.empty() ? encoded : path;
}

bool pathTaken(const std::string& path)
{
    struct stat st;
    return sysCalls().lstat(path.c_str(), &st) == 0 || errno != ENOENT;
}

bool pathsShareDevice(const std::string& folder, const std::string& path)
{
    struct stat target {}, source {};
    return sysCalls().stat(folder.c_str(), &target) == 0 && sysCalls().lstat(path.c_str(), &source) == 0
        && target.st_dev == source.st_dev;
}

bool pathIsFolder(const std::string& path)
{
    struct stat st;
    return sysCalls().stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}
