#include "app/launch_args.h"

#include "app/desktop_bus.h"
#include "config/config_text.h"
#include "fs/file_io.h"
#include "fs/paths.h"

#include <sys/stat.h>

Args launchStripPlatformArgs(const Args& args)
{
    Args out;
    for (const auto& a : args)
        if (!a.starts_with("-psn_"))
            out.push_back(a);
    return out;
}

Args launchStripFlags(const Args& args)
{
    Args out;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--view") {
            ++i; // skip its value, whatever it is
            continue;
        }
        if (args[i] == "--new-process" || args[i] == "--service")
            continue;
        out.push_back(args[i]);
    }
    return out;
}

LaunchProcess launchProcessChoice(const Args& fullArgs)
{
    LaunchProcess choice = LaunchProcess::Shared;
    for (size_t i = 1; i < fullArgs.size(); ++i) {
        if (fullArgs[i] == "--view")
            ++i;
        else if (fullArgs[i] == "--service")
            return LaunchProcess::Service;
        else if (fullArgs[i] == "--new-process")
            choice = LaunchProcess::Own;
    }
    return choice;
}

ViewMode launchViewMode(const Args& fullArgs)
{
    for (size_t i = 0; i < fullArgs.size(); ++i) {
        if (fullArgs[i] != "--view")
            continue;
        if (i + 1 >= fullArgs.size())
            return ViewMode::List;
        auto number = configParseInt(fullArgs[i + 1]);
        if (!number)
            return ViewMode::List;
        switch (*number) {
        case 1: return ViewMode::Icon;
        case 3: return ViewMode::Column;
        case 4: return ViewMode::Peek;
        default: return ViewMode::List;
        }
    }
    return ViewMode::List;
}

PeekAnimationFlags launchPeekAnimation(const Args& fullArgs)
{
    PeekAnimationFlags flags;
    for (const auto& a : fullArgs) {
        flags.slow = flags.slow || a == "--slow";
        flags.noAnim = flags.noAnim || a == "--no-anim";
    }
    return flags;
}

namespace {

// Resolves "." and ".." as text in an absolute path; the result has no trailing slash.
std::string standardize(const std::string& absolute)
{
    std::vector<std::string> parts;
    size_t pos = 0;
    while (pos <= absolute.size()) {
        size_t slash = absolute.find('/', pos);
        if (slash == std::string::npos)
            slash = absolute.size();
        std::string part = absolute.substr(pos, slash - pos);
        pos = slash + 1;
        if (part.empty() || part == ".")
            continue;
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
            continue;
        }
        parts.push_back(std::move(part));
    }
    std::string out;
    for (const auto& p : parts)
        out += "/" + p;
    return out.empty() ? "/" : out;
}

} // namespace

std::string launchExpandPath(const std::string& arg, const std::string& cwd)
{
    std::string path = expandTilde(arg);
    if (arg.starts_with("file:"))
        if (auto local = desktopUriToPath(QString::fromUtf8(arg.data(), qsizetype(arg.size()))))
            path = std::move(*local);
    if (!path.starts_with('/'))
        path = cwd + "/" + path;
    path = standardize(path);
    struct stat st;
    if (::stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode))
        path = pathParent(path);
    return path;
}

Args launchArguments(int argc, char** argv)
{
    Args args;
    for (int i = 1; i < argc; ++i)
        args.emplace_back(argv[i]);
    return launchStripFlags(launchStripPlatformArgs(args));
}
