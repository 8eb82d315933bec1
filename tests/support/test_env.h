#pragma once
// Every test process runs against a throw-away home: HOME, XDG_* and BRONDEL_* point
// into a temporary directory made before any test starts.

#include <string>

// Creates the temporary home and exports the variables (idempotent).
void testIsolateEnvironment();

// The temporary home of this process.
const std::string& testHome();

// Hides the system's applications from this process: XDG_DATA_DIRS becomes a temporary
// folder that holds only the system's MIME database, so that file types still resolve.
// Call before the first look-up of an application (the index is read once per process).
// Returns the user's applications folder ($XDG_DATA_HOME/applications), made if missing.
std::string testIsolateApplications();

// Runs `command` through /bin/sh; returns its exit status and fills stdout/stderr.
int testRun(const std::string& command, std::string* out = nullptr, std::string* err = nullptr);

// The running test executable's own path (to start it again, e.g. on a private bus).
std::string testSelfPath();

// The brondel executable under test.
std::string testBrondel();
