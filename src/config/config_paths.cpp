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

std::optional<std::string> configUnstorable(std::string_view text)
{
    if (text.find('"') != std::string_view::npos)
        return "a double quote";
    if (text.find('\n') != std::string_view::npos)
        return "a line break";
    return std::nullopt;
}

std::string configRefusedPath(const std::string& path, const std::string& where, const std::string& what,
    const std::string& file)
{
    return "\u201c" + path + "\u201d was not added to " + where + ": its path holds " + what + ", which " + file
        + " cannot store.";
}
