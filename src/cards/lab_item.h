#pragma once
// The plates of Peek mode: one record per entry a Peek style draws, made from a folder
// (its visible entries) or from the drives of the Computer root, and the one-line
// metadata text under a plate's name. Everything that reads the disk here is meant for
// a background thread; labMeta is pure.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct LabItem {
    std::string name;
    std::string path;
    bool isDir = false;
    int64_t bytes = 0;    // size; a drive's used bytes
    int64_t capacity = 0; // a drive's total bytes; 0 for anything else
    std::optional<int64_t> date; // modification time, seconds since 1970
    std::string kind;     // "Folder", "PDF file", ...
    int64_t count = 0;    // visible entries of a folder; -1 when it cannot be read
    std::string group;    // the kind group ("Folders", "Images", ...) as the icon view groups

    bool operator==(const LabItem&) const = default;
};

// The names of a folder's visible entries (never those beginning with "."), sorted as
// the views sort names, and how many there are in all. `limit` cuts the names (a
// negative limit keeps them all); `total` still counts every visible entry, so a view
// can say how many it left out. Empty when the folder cannot be listed.
struct LabListing {
    std::vector<std::string> names;
    int64_t total = 0;
};
LabListing labList(const std::string& path, int64_t limit);

// Full paths of the visible entries of a folder, sorted, at most `limit` of them (a
// negative limit: all).
std::vector<std::string> labChildren(const std::string& path, int64_t limit);

// One entry's attributes (links followed; a dangling link reads as a file of 0 bytes).
LabItem labStat(const std::string& path, const std::string& name);

// labStat of each of labChildren(path, limit), named by the last path component.
std::vector<LabItem> labChildItems(const std::string& path, int64_t limit);

// The items of a listing of `path` (names as labList gives them).
std::vector<LabItem> labItemsOf(const std::string& path, const std::vector<std::string>& names);

// The Computer root: Home, then each mounted drive with its used and total bytes.
std::vector<LabItem> labDataOverview();

// The same from given parts (tests).
struct Volume;
std::vector<LabItem> labDataOverview(const std::string& home, const std::vector<Volume>& volumes);

// "12.0 GB free of 100.0 GB" for a drive, the human size of a file, "1 item" or
// "N items" for a folder (a negative count shows as 0).
std::string labMeta(const LabItem& item);
