#include "actions/workspace.h"

#include "services/file_clipboard.h"

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

namespace {

constexpr int kRevealTimeoutMs = 5000;

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
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        fallback();
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"), QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("ShowItems"));
    call << QStringList{QString::fromStdString(workspaceFileUrl(path))} << QString();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kRevealTimeoutMs), qApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, qApp,
        [fallback = std::move(fallback)](QDBusPendingCallWatcher* done) {
            if (done->isError())
                fallback();
            done->deleteLater();
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
