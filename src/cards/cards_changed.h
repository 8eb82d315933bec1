#pragma once
// The cards-changed notification: `brondel card <key> set` tells every running instance
// of the same user session to redraw its cards. Carried as a D-Bus signal on the session
// bus (no arguments). Without a session bus nothing is posted and nothing fails.

#include <functional>

class QObject;

// "com.larkspine.brondel.cardsChanged": the notification's name.
extern const char* const cardsChangedName;

// The signal's address on the bus.
extern const char* const cardsChangedPath;      // "/com/larkspine/brondel"
extern const char* const cardsChangedInterface; // "com.larkspine.brondel"
extern const char* const cardsChangedMember;    // "cardsChanged"

// Posts the notification and returns once it has left this process; false when there is
// no session bus. Prints nothing, also when the bus cannot be reached. Creates the
// process's QCoreApplication when there is none yet (the command line has none).
bool cardsChangedPost();

// Calls `callback` on the calling thread (which runs the Qt event loop: the GUI's main
// thread) each time any process posts the notification. The subscription lives as long
// as `owner`, or for the rest of the process when `owner` is null. False when there is
// no session bus.
bool cardsChangedObserve(std::function<void()> callback, QObject* owner = nullptr);
