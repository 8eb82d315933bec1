#pragma once
// Process-level knobs of a command-line run.

#include <memory>

// A command-line process ends right after printing. Freeing a tree of a quarter of a
// million nodes one by one would only delay that exit, so large results are handed
// here and left for the operating system to reclaim.
void cliKeepUntilExit(std::shared_ptr<const void> tree);

// BRONDEL_SCAN_THREADS=1 asks for the plain reference scan (one thread, a status query
// for every entry); the benchmarks check that the fast scan prints the same.
bool cliPlainScan();
