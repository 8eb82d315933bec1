#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"

// brondel list [path]: a folder's children with their info texts.
struct CLIList {
    static int run(const Args& args, CliOut& out);
};
