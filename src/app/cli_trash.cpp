#include "app/cli_trash.h"

// Placeholder until the command lands.
int CLITrash::run(const Args&, CliOut&) { return 0; }
