#pragma once
// The cards-changed notification: `brondel card <key> set` tells every running instance
// of the same user session to redraw its cards. Carried as a D-Bus signal on the session
// bus (no arguments). Without a session bus nothing is posted and nothing fails.
//
// The bus never holds anything up. Only the address in DBUS_SESSION_BUS_ADDRESS is used:
// when it is unset or empty there is no bus (Qt would otherwise look one up and may start
// a daemon of its own). Connecting happens on a thread of its own, because libdbus waits
// without any time limit for a bus that accepts the connection and never answers; such a
// thread is abandoned, and the process then ends through cardsChangedExitIfStuck.

#include <chrono>
#include <functional>

class QObject;

// "com.larkspine.brondel.cardsChanged": the notification's name.
extern const char* const cardsChangedName;

// The signal's address on the bus.
extern const char* const cardsChangedPath;      // "/com/larkspine/brondel"
extern const char* const cardsChangedInterface; // "com.larkspine.brondel"
extern const char* const cardsChangedMember;    // "cardsChanged"

enum class CardsPost {
    Sent,        // the bus has taken the signal
    NoBus,       // no bus address, or the bus refused the connection
    Unconfirmed, // the bus did not answer in time; the post may still go out
};

// The command line's wait for a post.
inline constexpr std::chrono::milliseconds kCardsPostWait{500};

// Posts the notification and waits at most `wait` for the bus to confirm it has left
// this process. Prints nothing, whatever the bus does. Creates the process's
// QCoreApplication when there is none yet (the command line has none).
CardsPost cardsChangedPost(std::chrono::milliseconds wait = kCardsPostWait);

// Calls `callback` on the calling thread (which runs the Qt event loop: the GUI's main
// thread) each time any process posts the notification. Returns at once: the
// subscription is made in the background, and `subscribed` (when given) is then called
// on the calling thread with whether it worked. The callback lives as long as `owner`, or
// for the rest of the process when `owner` is null. False when there is no bus address.
bool cardsChangedObserve(std::function<void()> callback, QObject* owner = nullptr,
                         std::function<void(bool subscribed)> subscribed = {});

// Sends `message` (a signal, or a call whose reply nobody waits for) on the session bus,
// from the same connection and thread as the notification: returns at once, and a bus
// that never answers holds up nothing. False when there is no bus address.
class QDBusMessage;
bool cardsBusSend(const QDBusMessage& message);

// Whether a connection to the bus is still waiting for an answer.
bool cardsChangedBusPending();

// Ends the process at once with `status` (standard streams flushed) when a connection is
// still waiting: Qt's D-Bus thread is then stuck inside libdbus, and the normal exit
// would wait for it forever in a static destructor. Returns otherwise. For the very end
// of main, after everything that must be saved is saved.
void cardsChangedExitIfStuck(int status);
