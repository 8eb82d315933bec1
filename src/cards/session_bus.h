#pragma once
// The session bus as this process sees it: only the address the session names, and a
// knock on its door that never waits.

#include <QString>

#include <chrono>
#include <functional>
#include <string>

class QDBusConnection;

// DBUS_SESSION_BUS_ADDRESS; empty when unset or empty, which means no bus. libdbus would
// otherwise look in $XDG_RUNTIME_DIR/bus and then autolaunch a daemon, which takes
// seconds and leaves the daemon behind.
QString sessionBusAddress();

// The socket of the first `unix:path=` or `unix:abstract=` entry of a bus address
// (percent escapes decoded; an abstract name starts with a NUL byte). Empty when the
// address has none.
std::string sessionBusUnixSocket(const QString& address);

// Whether anything answers at the bus's socket. The constructor connects without
// blocking and sends the opening line of the bus's authentication; answered() looks for
// the reply. A bus that accepts and never answers is told apart from a live one this way
// without any thread waiting on it.
class SessionBusProbe {
public:
    explicit SessionBusProbe(const QString& address);
    ~SessionBusProbe();
    SessionBusProbe(const SessionBusProbe&) = delete;
    SessionBusProbe& operator=(const SessionBusProbe&) = delete;

    // True once the bus has replied; waits for the reply until `deadline` at most.
    bool answered(std::chrono::steady_clock::time_point deadline);

private:
    int m_fd = -1;
    bool m_answered = false;
};

// Connects to `address` as the connection `name` on a thread of its own and runs `then`
// there with the result (not connected when the bus refused). The thread may never come
// back: Qt connects inside its D-Bus thread with a synchronous handshake, and libdbus
// waits for a bus that accepts and never answers without a time limit. Nobody waits for
// this thread; sessionBusPending() tells whether one is still out.
void sessionBusConnectThen(QString address, QString name, std::function<void(QDBusConnection)> then);

// Whether a connection made by sessionBusConnectThen is still waiting for an answer.
bool sessionBusPending();
