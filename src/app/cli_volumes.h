#pragma once

#include "app/cli_output.h"
#include "fs/volume.h"

#include <vector>

struct CLIVolumes {
    // `brondel volumes`: the mounted drives with used, free and total space.
    static int run(CliOut& out);

    // The table for `volumes`, in their order (or the line saying there are none).
    static void print(const std::vector<Volume>& volumes, CliOut& out);
};
