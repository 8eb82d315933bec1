#pragma once
// A command-line process ends right after printing. Freeing a tree of a quarter of a
// million nodes one by one would only delay that exit, so large results are handed
// here and left for the operating system to reclaim.

#include "fs/dir_node.h"

void cliKeepUntilExit(DirNodePtr tree);
