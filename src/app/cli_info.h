#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"

struct CLIInfo {
    static int run(const Args& args, CliOut& out);
};
