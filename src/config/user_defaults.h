#pragma once
// The user-defaults store: small per-user values that are no configuration file of
// their own (the current Peek style). Kept with QSettings in
// $XDG_CONFIG_HOME/brondel/brondel.conf (default ~/.config/brondel/brondel.conf); this
// is the one place that knows where and how.

#include <optional>
#include <string>

// The store's file: $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
std::string userDefaultsPath();

// The string stored under `key`, or nothing when none is (or when the store is not a
// regular file: a FIFO, a device).
std::optional<std::string> userDefaultsString(const std::string& key);

// Stores `value` under `key` and writes the store at once. Errors are absorbed.
void userDefaultsSetString(const std::string& key, const std::string& value);
