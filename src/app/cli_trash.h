#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"

struct CLITrash {
    static int run(const Args& args, CliOut& out);
};
