// size_walk PATH [THREADS]: prints the total size of PATH as one folder size walk
// measures it, in bytes, on one line. Without THREADS the walk picks its threads as the
// folder size cache does.

#include "sizes/folder_size_walk.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: size_walk PATH [THREADS]\n", stdout);
        return 2;
    }
    const int threads = argc > 2 ? std::atoi(argv[2]) : kFolderSizeWalkAuto;
    std::printf("%lld\n", static_cast<long long>(folderSizeWalk(argv[1], threads)));
    return 0;
}
