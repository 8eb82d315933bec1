#pragma once
// The settings file: parsing and formatting are pure, loading and saving do the I/O.

#include "config/brondel_settings.h"

#include <string>
#include <string_view>

// Applies every line of `text` over the defaults.
BrondelSettings settingsParse(std::string_view text);

// The whole file in its fixed layout.
std::string settingsFormat(const BrondelSettings& settings);

// Reads settingsPath(); defaults when it cannot be read. Never writes.
BrondelSettings settingsLoad();

// Writes the whole record to settingsPath(). Errors are absorbed.
bool settingsSave(const BrondelSettings& settings);

// The process-wide settings, loaded once on first use from whichever thread gets there
// first. Changed only on the main thread (or by a command-line handler), then saved.
// Deep code does not reach for this: callers pass the values they need.
struct Settings {
    static BrondelSettings& current();
};
