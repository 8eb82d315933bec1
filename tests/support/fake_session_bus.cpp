#include "support/fake_session_bus.h"

#include "support/test_env.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

FakeSessionBus::FakeSessionBus(std::string path, std::optional<std::chrono::milliseconds> hangUpAfter,
                               std::string greeting)
    : m_path(std::move(path))
    , m_hangUpAfter(hangUpAfter)
    , m_greeting(std::move(greeting))
{
    static std::atomic<int> serial{0};
    if (m_path.empty())
        m_path = testHome() + "/fake-bus-" + std::to_string(::getpid()) + "-" + std::to_string(serial++);
    ::unlink(m_path.c_str());
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (m_path.size() >= sizeof addr.sun_path)
        std::abort();
    std::memcpy(addr.sun_path, m_path.c_str(), m_path.size() + 1);
    m_listen = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listen < 0 || ::bind(m_listen, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0
        || ::listen(m_listen, 16) != 0 || ::pipe2(m_wake, O_CLOEXEC) != 0)
        std::abort();
    m_thread = std::thread([this] { serve(); });
}

FakeSessionBus::~FakeSessionBus()
{
    char stop = 0;
    (void)!::write(m_wake[1], &stop, 1);
    m_thread.join();
    ::close(m_listen);
    ::close(m_wake[0]);
    ::close(m_wake[1]);
    ::unlink(m_path.c_str());
}

void FakeSessionBus::serve()
{
    using Clock = std::chrono::steady_clock;
    std::vector<int> clients;
    std::optional<Clock::time_point> hangUpAt;
    for (;;) {
        int timeout = -1;
        if (hangUpAt)
            timeout = int(std::max<long>(0, std::chrono::duration_cast<std::chrono::milliseconds>(
                                                *hangUpAt - Clock::now()).count()));
        pollfd fds[2] = {{m_listen, POLLIN, 0}, {m_wake[0], POLLIN, 0}};
        if (::poll(fds, 2, timeout) < 0)
            continue;
        if (fds[1].revents)
            break;
        if (hangUpAt && Clock::now() >= *hangUpAt) {
            for (int fd : clients)
                ::close(fd);
            clients.clear();
            hangUpAt.reset();
        }
        if (fds[0].revents & POLLIN) {
            int fd = ::accept4(m_listen, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd >= 0) {
                // Whatever the client sends stays unread and unanswered.
                if (!m_greeting.empty())
                    (void)!::send(fd, m_greeting.data(), m_greeting.size(), MSG_NOSIGNAL);
                clients.push_back(fd);
                m_accepted.fetch_add(1);
                if (m_hangUpAfter && !hangUpAt)
                    hangUpAt = Clock::now() + *m_hangUpAfter;
            }
        }
    }
    for (int fd : clients)
        ::close(fd);
}

ScopedEnvVar::ScopedEnvVar(std::string name, const char* value)
    : m_name(std::move(name))
{
    if (const char* old = std::getenv(m_name.c_str()))
        m_previous = old;
    if (value)
        ::setenv(m_name.c_str(), value, 1);
    else
        ::unsetenv(m_name.c_str());
}

ScopedEnvVar::~ScopedEnvVar()
{
    if (m_previous)
        ::setenv(m_name.c_str(), m_previous->c_str(), 1);
    else
        ::unsetenv(m_name.c_str());
}
