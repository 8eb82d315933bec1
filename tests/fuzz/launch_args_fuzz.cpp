// Launch arguments (NUL-separated in the input): stripping never leaves a "--view" or a
// "-psn_" argument, keeps the others in order, and the view mode is always defined.

#include "app/launch_args.h"
#include "fuzz_check.h"

#include <algorithm>

namespace {

bool isSubsequence(const Args& part, const Args& whole)
{
    auto at = whole.begin();
    for (const std::string& arg : part) {
        at = std::find(at, whole.end(), arg);
        if (at == whole.end())
            return false;
        ++at;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text = fuzzText(data, size);
    Args args;
    size_t start = 0;
    while (start <= text.size() && args.size() < 64) {
        size_t end = text.find('\0', start);
        if (end == std::string_view::npos)
            end = text.size();
        args.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    const Args flagsGone = launchStripFlags(args);
    FUZZ_CHECK(std::find(flagsGone.begin(), flagsGone.end(), "--view") == flagsGone.end());
    FUZZ_CHECK(isSubsequence(flagsGone, args));
    const Args platformGone = launchStripPlatformArgs(args);
    FUZZ_CHECK(std::none_of(platformGone.begin(), platformGone.end(), [](const std::string& a) { return a.starts_with("-psn_"); }));
    FUZZ_CHECK(isSubsequence(platformGone, args));
    const ViewMode mode = launchViewMode(args);
    FUZZ_CHECK(mode == ViewMode::Icon || mode == ViewMode::List || mode == ViewMode::Column || mode == ViewMode::Peek);
    return 0;
}
