#pragma once
// What is in the Trash, and the ways out of it: put back, erase for good, empty. Every
// trash folder of the user counts (the home trash and each volume's .Trash/<uid> and
// .Trash-<uid>); each item is files/<name> with its record info/<name>.trashinfo. The
// record parsers are pure; the folder reads and moves go through the system-call seam.

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A parsed .trashinfo record.
struct TrashInfoRecord {
    std::string path;         // Path=, percent escapes decoded to bytes (maybe relative)
    std::string deletionDate; // DeletionDate= as written, "YYYY-MM-DDThh:mm:ss"
    std::string pathValue;    // Path= as written, escapes and all
};

// The record of a .trashinfo text: its [Trash Info] group's Path= (required) and
// DeletionDate=. Nothing when the group or the path is missing.
std::optional<TrashInfoRecord> trashInfoParse(std::string_view text);

// Decodes %XX escapes to bytes; a '%' not followed by two hex digits stays as it is.
std::string trashPercentDecode(std::string_view text);

// The same, for a reader that must not guess: nothing when a '%' is not followed by two
// hex digits.
std::optional<std::string> trashPercentDecodeStrict(std::string_view text);

// A DeletionDate= value as a time, read as local time; nothing when malformed.
std::optional<std::time_t> trashDateParse(std::string_view text);

// One item in a trash folder.
struct TrashItem {
    std::string trashDir;     // the trash folder (holding files/ and info/)
    std::string name;         // the item's name under files/
    std::string originalPath; // absolute: where it was, and where it goes back to
    std::string deletionDate; // as recorded
    std::optional<std::time_t> deleted;
    bool folder = false;
    int64_t size = -1; // a file's size; -1 for folders and unreadable items

    std::string filesPath() const { return trashDir + "/files/" + name; }
    std::string infoPath() const { return trashDir + "/info/" + name + ".trashinfo"; }
};

// The trash folders of the current user that exist: the home trash first, then for
// each of `topdirs` (volume mount points) $topdir/.Trash/<uid> (only under a real,
// sticky .Trash) and $topdir/.Trash-<uid>.
std::vector<std::string> trashDirsExisting(const std::vector<std::string>& topdirs);

// The mount points whose trash folders count: every mount of the table but pseudo file
// systems and "/" (whose trash is the home one or none), leaving out mounts the
// watchdog finds not responding.
std::vector<std::string> trashVolumeTopdirs();

// The items of one trash folder whose top folder is `topdir` (relative Path= values are
// taken from there), in the order of info/. Records without their item are left out,
// like the other clients do.
std::vector<TrashItem> trashListDir(const std::string& trashDir, const std::string& topdir);

// The items of every existing trash folder for `topdirs` (home trash included).
std::vector<TrashItem> trashListAll(const std::vector<std::string>& topdirs);

// Whether any trash folder for `topdirs` holds anything under files/.
bool trashHasItems(const std::vector<std::string>& topdirs);

// Puts `item` back at `target` (its original path, or another name the user chose):
// the missing folders above it are made, the item is renamed there and its record
// removed. EEXIST when something is at `target` already (nothing moves then), else 0
// or the errno of the failure.
int trashRestore(const TrashItem& item, const std::string& target);

// A free name beside `target` for a restore that must not replace what is there:
// "name 2.ext", "name 3.ext", ...; `exists` tells whether a path is taken.
std::string trashRestoreFreeName(const std::string& target, const std::function<bool(const std::string&)>& exists);

// Erases `item` for good: its files/ entry (a folder with everything inside it), its
// record and its line in directorysizes. 0 or the errno of the first failure.
int trashErase(const TrashItem& item);

// Erases every item of `items`, calling `progress(done, total)` after each; stops early
// when `stop` turns true. How many were erased.
size_t trashEraseAll(const std::vector<TrashItem>& items, const std::function<void(size_t, size_t)>& progress,
    const std::atomic<bool>* stop = nullptr);

// directorysizes text without the lines of the (undecoded) names in `names`; lines
// that are not "size mtime name" are dropped too.
std::string trashDirectorySizesWithout(std::string_view text, const std::vector<std::string>& names);
