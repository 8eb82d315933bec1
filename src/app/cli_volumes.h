#pragma once

#include "app/cli_output.h"

struct CLIVolumes {
    static int run(CliOut& out);
};
