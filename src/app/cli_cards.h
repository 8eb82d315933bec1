#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"

// "cards" and "card": one handler for both words.
struct CLICards {
    static int runCards(const Args& args, CliOut& out);
    static int runCard(const Args& args, CliOut& out);
};
