#pragma once
// What dropping files does, decided from the keys held and where the files come from:
// a move on the same device, a copy across devices; Ctrl copies, Shift moves, Alt asks.
// A drop that would change nothing (onto the folder the items are in, a folder into
// itself or below itself) does nothing.

#include <Qt>

#include <string>
#include <vector>

enum class DropChoice { None, Copy, Move, Ask };

struct DropFacts {
    bool sameDevice = true;    // the items and the target folder are on one file system
    bool intoOwnFolder = false; // every item already sits in the target folder
    bool intoItself = false;    // the target is one of the items or lies inside one
};

DropChoice dropChoose(Qt::KeyboardModifiers keys, const DropFacts& facts);

// The keys held at the drop being delivered now. Qt's item views hand their model the
// dropped data without the drop event's keys, so a view notes them (DropKeysNote) around
// its own handling of the event; outside such a note, the keyboard's state now.
Qt::KeyboardModifiers dropKeys();

// Notes `keys` as the drop's keys for its own lifetime (UI thread only; they nest).
class DropKeysNote {
public:
    explicit DropKeysNote(Qt::KeyboardModifiers keys);
    ~DropKeysNote();
    DropKeysNote(const DropKeysNote&) = delete;
    DropKeysNote& operator=(const DropKeysNote&) = delete;

private:
    Qt::KeyboardModifiers m_previous;
    bool m_hadPrevious;
};

// The facts that need no disk: whether every source sits in `target`, or the target is
// a source or lies below one (paths as given, without trailing slashes).
DropFacts dropFactsOfPaths(const std::vector<std::string>& sources, const std::string& target);
