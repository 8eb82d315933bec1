#include "app/cli_cards.h"

// Placeholder until the card commands land.
int CLICards::runCards(const Args&, CliOut&) { return 0; }
int CLICards::runCard(const Args&, CliOut&) { return 0; }
