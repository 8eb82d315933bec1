#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"

// brondel search <path> <query>: every name below path (64 levels) containing query.
struct CLISearch {
    static int run(const Args& args, CliOut& out);
};
