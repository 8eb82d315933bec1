#pragma once
// A session bus that accepts connections and never says a word: the way a hung bus
// looks to a client. libdbus, once connected, waits for the bus's greeting with no time
// limit, so any client that waits on the handshake waits until this bus lets go. Given a
// greeting, it says that much to each client and nothing more.

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class FakeSessionBus {
public:
    // Listens on a fresh socket at `path` (under the test home when empty). With
    // `hangUpAfter`, every connection is closed after that long, so a client that would
    // otherwise wait forever comes back (a failing test then fails instead of hanging).
    explicit FakeSessionBus(std::string path = {},
                            std::optional<std::chrono::milliseconds> hangUpAfter = std::nullopt,
                            std::string greeting = {});
    // Closes every connection, which also releases clients still waiting.
    ~FakeSessionBus();
    FakeSessionBus(const FakeSessionBus&) = delete;
    FakeSessionBus& operator=(const FakeSessionBus&) = delete;

    const std::string& path() const { return m_path; }
    std::string address() const { return "unix:path=" + m_path; }
    // Connections accepted so far.
    int accepted() const { return m_accepted.load(); }

private:
    void serve();

    std::string m_path;
    std::optional<std::chrono::milliseconds> m_hangUpAfter;
    std::string m_greeting;
    int m_listen = -1;
    int m_wake[2] = {-1, -1};
    std::atomic<int> m_accepted{0};
    std::thread m_thread;
};

// Sets (or, with nullptr, removes) one environment variable for the life of the object.
class ScopedEnvVar {
public:
    ScopedEnvVar(std::string name, const char* value);
    ~ScopedEnvVar();
    ScopedEnvVar(const ScopedEnvVar&) = delete;
    ScopedEnvVar& operator=(const ScopedEnvVar&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};
