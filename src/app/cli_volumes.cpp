#include "app/cli_volumes.h"

// Placeholder until the command lands.
int CLIVolumes::run(CliOut&) { return 0; }
