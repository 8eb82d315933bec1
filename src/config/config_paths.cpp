#include "config/config_paths.h"

#include "fs/paths.h"

std::string configAbbreviateHome(const std::string& path)
{
    const std::string home = homeDir();
    if (path.starts_with(home + "/"))
        return "~" + path.substr(home.size());
    return path;
}

bool configSamePath(const std::string& a, const std::string& b)
{
    return a == b || expandTilde(a) == expandTilde(b);
}
