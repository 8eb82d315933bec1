#pragma once
// The settings file: parsing and formatting are pure, loading and saving do the I/O.

#include "config/brondel_settings.h"

#include <string>
#include <string_view>

// Applies every line of `text` over the defaults.
BrondelSettings settingsParse(std::string_view text);

// Whether rewriting the file from what settingsParse made of `text` loses something: an
// unknown or repeated key, a line without "=", a value that is not written back as it
// stands (TRUE, sort_by = "Size", a title holding a quote, a CR line end).
bool settingsLossy(std::string_view text);

// Copies into `onto` every field (and info module) in which `after` differs from
// `before`: one change made to a copy, applied to another copy of the settings.
void settingsMerge(const BrondelSettings& before, const BrondelSettings& after, BrondelSettings& onto);

// The whole file in its fixed layout.
std::string settingsFormat(const BrondelSettings& settings);

// Reads settingsPath(); defaults when it cannot be read. Never writes.
BrondelSettings settingsLoad();

// Writes the whole record to settingsPath() (see configRewrite). Errors are absorbed.
bool settingsSave(const BrondelSettings& settings);

// Applies the change from `before` to `after` to the file as it stands now and writes
// it, so whatever else another writer (a command, a hand edit) changed meanwhile stays.
bool settingsUpdate(const BrondelSettings& before, const BrondelSettings& after);

// The process-wide settings, loaded once on first use from whichever thread gets there
// first. Changed only on the main thread (or by a command-line handler), then saved.
// Deep code does not reach for this: callers pass the values they need.
struct Settings {
    static BrondelSettings& current();
};
