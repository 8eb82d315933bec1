#include "app/cli_peek_styles.h"

// Placeholder until the command lands.
int CLIPeekStyles::run(CliOut&) { return 0; }
