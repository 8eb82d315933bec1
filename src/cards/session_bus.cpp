#include "cards/session_bus.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QStringList>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

QString sessionBusAddress()
{
    return QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS"));
}

std::string sessionBusUnixSocket(const QString& address)
{
    // Entries are separated by ';', key=value pairs by ','.
    for (const QString& entry : address.split(u';', Qt::SkipEmptyParts)) {
        if (!entry.startsWith(QLatin1String("unix:")))
            continue;
        for (const QString& pair : entry.mid(5).split(u',', Qt::SkipEmptyParts)) {
            const qsizetype eq = pair.indexOf(u'=');
            if (eq < 0)
                continue;
            const QString key = pair.left(eq);
            if (key != QLatin1String("path") && key != QLatin1String("abstract"))
                continue;
            const QByteArray value = QByteArray::fromPercentEncoding(pair.mid(eq + 1).toUtf8());
            std::string socket = key == QLatin1String("abstract") ? std::string(1, '\0') : std::string();
            return socket + value.toStdString();
        }
    }
    return {};
}

SessionBusProbe::SessionBusProbe(const QString& address)
{
    const std::string socket = sessionBusUnixSocket(address);
    sockaddr_un addr{};
    if (socket.empty() || socket.size() >= sizeof addr.sun_path)
        return;
    addr.sun_family = AF_UNIX;
    std::memcpy(addr.sun_path, socket.data(), socket.size());
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + socket.size() + (socket[0] ? 1 : 0));
    m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_fd < 0)
        return;
    // A local connect either completes at once or fails; EAGAIN (a full backlog) counts
    // as no answer.
    const std::string hello = std::string(1, '\0') + "AUTH EXTERNAL "
        + QByteArray::number(uint(::getuid())).toHex().toStdString() + "\r\n";
    if (::connect(m_fd, reinterpret_cast<sockaddr*>(&addr), length) != 0
        || ::send(m_fd, hello.data(), hello.size(), MSG_NOSIGNAL) != ssize_t(hello.size())) {
        ::close(m_fd);
        m_fd = -1;
    }
}

SessionBusProbe::~SessionBusProbe()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool SessionBusProbe::answered(std::chrono::steady_clock::time_point deadline)
{
    using namespace std::chrono;
    while (!m_answered && m_fd >= 0) {
        const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
        pollfd fd{m_fd, POLLIN, 0};
        const int ready = ::poll(&fd, 1, int(std::max<long long>(0, left)));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready == 0)
            return false; // nothing yet: the socket stays open for a later look
        if (ready > 0) {
            // Any reply will do (OK, or REJECTED for a stranger): someone is there.
            char reply[256];
            m_answered = ::recv(m_fd, reply, sizeof reply, 0) > 0;
        }
        // Replied, hung up or failed: there is nothing more to learn.
        ::close(m_fd);
        m_fd = -1;
    }
    return m_answered;
}

namespace {

// Bus threads that have not come back yet.
std::atomic<int> g_pendingConnects{0};

} // namespace

void sessionBusConnectThen(QString address, QString name, std::function<void(QDBusConnection)> then)
{
    g_pendingConnects.fetch_add(1);
    std::thread([address = std::move(address), name = std::move(name), then = std::move(then)] {
        then(QDBusConnection::connectToBus(address, name));
        g_pendingConnects.fetch_sub(1);
    }).detach();
}

bool sessionBusPending()
{
    return g_pendingConnects.load() > 0;
}
