#pragma once
// The Qt application of a core test that needs an event loop (queued notices, mailboxes).

#include <QCoreApplication>

#include <functional>

// The process's application, made on first use (named after the test executable).
QCoreApplication& testApp();

// Runs the event loop until `done` or `ms` have passed (sanitizer builds are slow);
// returns `done()`.
bool testSpinUntil(const std::function<bool()>& done, int ms = 20000);
