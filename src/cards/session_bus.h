#pragma once
// The session bus as this process sees it: only the address the session names, and a
// knock on its door that never waits.

#include <QString>

#include <chrono>
#include <string>

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
