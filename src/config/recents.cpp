#include "config/recents.h"

#include "config/config_file.h"
#include "config/config_text.h"
#include "fs/file_io.h"

#include <algorithm>

std::vector<std::string> recentsParse(std::string_view text)
{
    std::vector<std::string> paths;
    for (std::string_view line : configSplitLines(text))
        if (!line.empty())
            paths.emplace_back(line);
    return paths;
}

std::string recentsFormat(const std::vector<std::string>& paths)
{
    std::string out;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (i)
            out += '\n';
        out += paths[i];
    }
    return out;
}

std::vector<std::string> recentsLoad()
{
    auto text = configRead(recentsPath(), ConfigBytes::Any);
    if (!text)
        return {};
    std::vector<std::string> paths = recentsParse(*text);
    std::erase_if(paths, [](const std::string& path) { return !configExists(path); });
    return paths;
}

void recentsNote(const std::string& path, const BrondelSettings& settings)
{
    // One path per line: a folder whose name holds a line break would read back as two.
    if (path.find('\n') != std::string::npos)
        return;
    std::vector<std::string> paths = recentsLoad();
    std::erase(paths, path);
    paths.insert(paths.begin(), path);
    paths.resize(std::min(paths.size(), size_t(std::max<int64_t>(settings.recentCount, 0))));
    configRewrite(recentsPath(), recentsFormat(paths), {ConfigBytes::Any, nullptr});
}

void recentsClear()
{
    // Clearing does not create the configuration folder: with none there is nothing to
    // clear.
    if (configExists(pathParent(recentsPath())))
        configRewrite(recentsPath(), "", {ConfigBytes::Any, nullptr});
}
