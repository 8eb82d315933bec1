#include "app/cli_infos.h"

// Placeholder until the command lands.
int CLIInfos::run(const Args&, CliOut&) { return 0; }
