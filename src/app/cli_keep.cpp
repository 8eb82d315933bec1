#include "app/cli_keep.h"

#include <cstdlib>
#include <string_view>
#include <vector>

void cliKeepUntilExit(std::shared_ptr<const void> tree)
{
    // Deliberately never destroyed (a function-local static would be freed at exit).
    static auto* kept = new std::vector<std::shared_ptr<const void>>();
    kept->push_back(std::move(tree));
}

bool cliPlainScan()
{
    const char* v = std::getenv("BRONDEL_SCAN_THREADS");
    return v && std::string_view(v) == "1";
}
