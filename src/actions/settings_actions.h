#pragma once
// The menu items that change only the settings: hidden files, the sort key and
// direction, folders first, and which info modules are on. Each changes the process's
// settings, saves them (off the main thread, in order with the other configuration
// edits) and refreshes every window.

#include <functional>
#include <string>

struct BrondelSettings;
struct BrowserContext;
class QMenu;

struct SettingsActions {
    // Applies `apply` to the process's settings, then writes only what it changed to the
    // file (read afresh, off the main thread) and refreshes every window.
    static void change(const BrowserContext& context, const std::function<void(BrondelSettings&)>& apply);

    // Whether the info module `key` is on, by its own default when the settings do not say.
    static bool infoIsOn(const BrondelSettings& settings, const std::string& key);

    static void toggleHidden(const BrowserContext& context);
    static void toggleFoldersFirst(const BrowserContext& context);
    static void toggleAscending(const BrowserContext& context);
    // `key` is one of "name", "date", "size", "kind".
    static void setSort(const BrowserContext& context, const std::string& key);
    // A column header clicked: sorts by `key`, ascending; the key already sorted by
    // flips the direction instead.
    static void sortByColumn(const BrowserContext& context, const std::string& key);
    static void toggleInfo(const BrowserContext& context, const std::string& key);

    // "Name", "Date Modified", "Size", "Kind", then "Ascending" and "Folders First",
    // checked as the settings stand.
    static void sortMenuFill(QMenu& menu, const BrowserContext& context);
    // One item per info module, checked when it is on.
    static void infoMenuFill(QMenu& menu, const BrowserContext& context);
};
