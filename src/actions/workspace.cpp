#include "actions/workspace.h"

#include "cards/session_bus.h"
#include "fs/call_mailbox.h"
#include "services/file_clipboard.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {

constexpr int kRevealTimeoutMs = 5000;

// Answers from the bus threads come back through this mailbox, made on the main thread
// and never deleted: a bus thread may outlive everything else.
CallPoster revealRelay()
{
    static CallMailbox* relay = new CallMailbox;
    return relay->poster();
}

} // namespace

std::string workspaceFileUrl(const std::string& path)
{
    return fileClipboardUrl(path);
}

bool workspaceOpen(const std::string& path)
{
    return QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(workspaceFileUrl(path))));
}

void workspaceReveal(const std::string& path, std::function<void()> fallback)
{
    // The bus is reached on a thread of its own (cards/session_bus): connecting to a bus
    // that accepts and never answers waits inside libdbus with no time limit, which on
    // the main thread would freeze every window. The main thread settles the request
    // once, with the answer or at the deadline, whichever comes first.
    const QString address = sessionBusAddress();
    if (address.isEmpty()) {
        fallback();
        return;
    }
    struct Request {
        std::function<void()> fallback;
        bool settled = false; // main thread only
        void settle(bool shown)
        {
            if (std::exchange(settled, true))
                return;
            if (!shown && fallback)
                fallback();
            fallback = nullptr;
        }
    };
    auto request = std::make_shared<Request>();
    request->fallback = std::move(fallback);
    QTimer::singleShot(kRevealTimeoutMs + 200, qApp, [request] { request->settle(false); });
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"), QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("ShowItems"));
    call << QStringList{QString::fromStdString(workspaceFileUrl(path))} << QString();
    CallPoster relay = revealRelay();
    sessionBusConnectThen(address, QStringLiteral("brondel_reveal"), [call, request, relay](QDBusConnection bus) {
        const bool shown = bus.isConnected()
            && bus.call(call, QDBus::Block, kRevealTimeoutMs).type() == QDBusMessage::ReplyMessage;
        if (!bus.isConnected()) // the next reveal connects afresh rather than reusing a failure
            QDBusConnection::disconnectFromBus(bus.name());
        relay.post([request, shown] { request->settle(shown); });
    });
}

QString workspaceRevealTitle()
{
    return QObject::tr("Reveal in File Manager");
}

void workspaceCopyPath(const std::string& path)
{
    auto* data = new QMimeData;
    data->setData(QStringLiteral("text/plain"), QByteArray::fromStdString(path));
    QGuiApplication::clipboard()->setMimeData(data);
}

void workspaceCopyItems(const std::vector<std::string>& paths, ClipboardIntent intent)
{
    QGuiApplication::clipboard()->setMimeData(fileClipboardData(paths, intent));
}

std::optional<ClipboardFiles> workspaceClipboardFiles()
{
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data ? fileClipboardRead(*data) : std::nullopt;
}
