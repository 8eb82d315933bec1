#include "app/cli_keep.h"

#include <cstdlib>
#include <string_view>
#include <vector>

void cliKeepUntilExit(DirNodePtr tree)
{
    // Deliberately never destroyed (a function-local static would be freed at exit).
    static auto* kept = new std::vector<DirNodePtr>();
    kept->push_back(std::move(tree));
}

bool cliPlainScan()
{
    const char* v = std::getenv("BRONDEL_SCAN_THREADS");
    return v && std::string_view(v) == "1";
}
