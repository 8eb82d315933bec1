#pragma once
// Decides whether a run is a command-line run and dispatches the command words.

#include "app/cli_output.h"
#include "app/launch_args.h"

#include <optional>

struct CLIRouter {
    // The exit status when the first argument is a command word (the command ran and
    // printed to `out`); nothing when the arguments are paths for the GUI.
    static std::optional<int> run(const Args& args, CliOut& out);

    static const char* const kUsage;
};
