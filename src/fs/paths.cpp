#include "fs/paths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace {

std::string homeOfUser(const std::string& user)
{
    struct passwd pw;
    struct passwd* found = nullptr;
    std::vector<char> buf(16384);
    if (user.empty())
        getpwuid_r(::getuid(), &pw, buf.data(), buf.size(), &found);
    else
        getpwnam_r(user.c_str(), &pw, buf.data(), buf.size(), &found);
    return found && found->pw_dir ? std::string(found->pw_dir) : std::string();
}

} // namespace

std::string homeDir()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    std::string home = homeOfUser("");
    return home.empty() ? "/" : home;
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
