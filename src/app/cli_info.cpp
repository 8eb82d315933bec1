#include "app/cli_info.h"

// Placeholder until the command lands.
int CLIInfo::run(const Args&, CliOut&) { return 0; }
