#include "app/cli_keep.h"

#include <vector>

void cliKeepUntilExit(DirNodePtr tree)
{
    // Deliberately never destroyed (a function-local static would be freed at exit).
    static auto* kept = new std::vector<DirNodePtr>();
    kept->push_back(std::move(tree));
}
