#pragma once
// Every test process runs against a throw-away home: HOME, XDG_* and BRONDEL_* point
// into a temporary directory made before any test starts.

#include <string>

// Creates the temporary home and exports the variables (idempotent).
void testIsolateEnvironment();

// The temporary home of this process.
const std::string& testHome();

// Runs `command` through /bin/sh; returns its exit status and fills stdout/stderr.
int testRun(const std::string& command, std::string* out = nullptr, std::string* err = nullptr);

// The running test executable's own path (to start it again, e.g. on a private bus).
std::string testSelfPath();

// The brondel executable under test.
std::string testBrondel();
