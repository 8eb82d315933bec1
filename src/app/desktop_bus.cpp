#include "app/desktop_bus.h"

#include "cards/session_bus.h"
#include "fs/call_mailbox.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>

const char* const desktopFileManagerService = "org.freedesktop.FileManager1";
const char* const desktopFileManagerPath = "/org/freedesktop/FileManager1";
const char* const desktopApplicationService = "com.larkspine.brondel";
const char* const desktopApplicationPath = "/com/larkspine/brondel/Application";
const char* const desktopApplicationInterface = "com.larkspine.brondel.Application";

namespace {

// The connection both services and the hand-over use.
constexpr const char* kConnectionName = "brondel_desktop";

// What both services share: the application's requests, and the local paths of the
// URIs a call carries (the others are passed over).
class RequestsAdaptor : public QObject {
public:
    RequestsAdaptor(std::shared_ptr<const DesktopRequests> requests, QObject* parent)
        : QObject(parent)
        , m_requests(std::move(requests))
    {
    }

protected:
    static std::vector<std::string> localPaths(const QStringList& uris)
    {
        std::vector<std::string> paths;
        for (const QString& uri : uris)
            if (auto path = desktopUriToPath(uri))
                paths.push_back(std::move(*path));
        return paths;
    }

    std::shared_ptr<const DesktopRequests> m_requests;
};

// The file-manager service's calls carry a startup token we have no use for: windows
// come to the front the way every other window does.
class FileManagerAdaptor : public RequestsAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    using RequestsAdaptor::RequestsAdaptor;

public slots:
    void ShowFolders(const QStringList& uris, const QString& startupId) { forward(m_requests->showFolders, uris); }
    void ShowItems(const QStringList& uris, const QString& startupId) { forward(m_requests->showItems, uris); }
    void ShowItemProperties(const QStringList& uris, const QString& startupId)
    {
        forward(m_requests->showProperties, uris);
    }

private:
    static void forward(const std::function<void(std::vector<std::string>)>& to, const QStringList& uris)
    {
        std::vector<std::string> paths = localPaths(uris);
        if (to && !paths.empty())
            to(std::move(paths));
    }
};

class ApplicationAdaptor : public RequestsAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.larkspine.brondel.Application")
public:
    using RequestsAdaptor::RequestsAdaptor;

public slots:
    // Folders as file URIs (so any bytes of a name travel), and the --view number.
    void Open(const QStringList& uris, int view)
    {
        if (m_requests->open)
            m_requests->open(localPaths(uris), desktopViewFromNumber(view));
    }
};

QString pathToUri(const std::string& path)
{
    return QStringLiteral("file://")
        + QString::fromLatin1(QUrl::toPercentEncoding(QByteArray::fromStdString(path), "/"));
}

// Asks the bus for `name` without queueing behind another owner; `then(owned)` runs on
// `context`'s thread. The request is asynchronous: a bus that stops answering leaves it
// unanswered and nothing waits.
void requestName(QDBusConnection bus, const QString& name, QObject* context, std::function<void(bool)> then)
{
    constexpr uint kDoNotQueue = 4;
    constexpr uint kPrimaryOwner = 1, kAlreadyOwner = 4;
    auto message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                  QStringLiteral("/org/freedesktop/DBus"),
                                                  QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    message << name << kDoNotQueue;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, 3000), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, then = std::move(then)] {
        QDBusPendingReply<uint> reply = *watcher;
        watcher->deleteLater();
        then(reply.isValid() && (reply.value() == kPrimaryOwner || reply.value() == kAlreadyOwner));
    });
}

// Where the bus thread hands its connection back: made on the first call's thread (the
// GUI's main thread) and never deleted, since the bus thread may come back after
// everything else has gone.
CallPoster mainThreadRelay()
{
    static CallMailbox* relay = new CallMailbox;
    return relay->poster();
}

} // namespace

std::optional<std::string> desktopUriToPath(const QString& uri)
{
    QByteArray path;
    if (uri.startsWith(u'/')) {
        path = uri.toUtf8();
    } else {
        const QUrl url(uri, QUrl::StrictMode);
        if (!url.isValid() || url.scheme() != QLatin1String("file"))
            return std::nullopt;
        const QString host = url.host();
        if (!host.isEmpty() && host != QLatin1String("localhost"))
            return std::nullopt;
        // Decoded as bytes: a name's escapes need not spell UTF-8.
        path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
        if (!path.startsWith('/'))
            return std::nullopt;
    }
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path.toStdString();
}

std::vector<std::pair<std::string, std::vector<std::string>>> desktopItemsByFolder(
    const std::vector<std::string>& items)
{
    std::vector<std::pair<std::string, std::vector<std::string>>> groups;
    std::set<std::string> seen;
    for (const std::string& item : items) {
        if (!seen.insert(item).second)
            continue;
        const size_t slash = item.rfind('/');
        const std::string folder = slash == 0 || slash == std::string::npos ? "/" : item.substr(0, slash);
        auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g.first == folder; });
        if (group == groups.end())
            groups.push_back({folder, {item}});
        else
            group->second.push_back(item);
    }
    return groups;
}

int desktopViewNumber(ViewMode mode)
{
    switch (mode) {
    case ViewMode::Icon: return 1;
    case ViewMode::List: return 2;
    case ViewMode::Column: return 3;
    case ViewMode::Peek: return 4;
    }
    return 2;
}

ViewMode desktopViewFromNumber(int number)
{
    switch (number) {
    case 1: return ViewMode::Icon;
    case 3: return ViewMode::Column;
    case 4: return ViewMode::Peek;
    default: return ViewMode::List;
    }
}

namespace {

} // namespace

bool desktopServe(const QString& address, DesktopRequests requests, QObject* owner,
                  std::function<void(DesktopServed)> done)
{
    if (address.isEmpty())
        return false;
    auto shared = std::make_shared<const DesktopRequests>(std::move(requests));
    QPointer<QObject> guard(owner);
    sessionBusConnectThen(address, QString::fromLatin1(kConnectionName),
                          [relay = mainThreadRelay(), guard, shared, done = std::move(done)](QDBusConnection bus) {
        // Back on the owner's thread: the objects are made and registered there (so calls
        // reach them there), and the names asked for without waiting.
        relay.post([guard, shared, done, bus]() mutable {
            QObject* owner = guard.data();
            if (!owner)
                return;
            auto report = [done](DesktopServed served) {
                if (done)
                    done(served);
            };
            if (!bus.isConnected())
                return report(DesktopServed::NoBus);
            bus.registerObject(QString::fromLatin1(desktopApplicationPath), new ApplicationAdaptor(shared, owner),
                               QDBusConnection::ExportAllSlots);
            bus.registerObject(QString::fromLatin1(desktopFileManagerPath), new FileManagerAdaptor(shared, owner),
                               QDBusConnection::ExportAllSlots);
            requestName(bus, QString::fromLatin1(desktopApplicationService), owner, [bus, owner, report](bool ours) {
                if (!ours)
                    return report(DesktopServed::Elsewhere);
                // Another file manager may already answer for the desktop: it keeps that.
                requestName(bus, QString::fromLatin1(desktopFileManagerService), owner,
                            [report](bool) { report(DesktopServed::Ours); });
            });
        });
    });
    return true;
}

bool desktopHandOver(const QString& address, const std::vector<std::string>& folders, ViewMode mode,
                     std::chrono::milliseconds wait)
{
    if (address.isEmpty())
        return false;
    struct Outcome {
        std::mutex mutex;
        std::condition_variable done;
        std::optional<bool> accepted;
    };
    auto outcome = std::make_shared<Outcome>();
    QStringList uris;
    for (const std::string& folder : folders)
        uris << pathToUri(folder);
    auto call = QDBusMessage::createMethodCall(QString::fromLatin1(desktopApplicationService),
                                               QString::fromLatin1(desktopApplicationPath),
                                               QString::fromLatin1(desktopApplicationInterface), QStringLiteral("Open"));
    call << uris << desktopViewNumber(mode);
    // Never started by the bus for this: the name has no activation file, so an absent
    // Brondel is an immediate error rather than a new process.
    call.setAutoStartService(false);
    sessionBusConnectThen(address, QString::fromLatin1(kConnectionName), [outcome, call, wait](QDBusConnection bus) {
        bool accepted = false;
        if (bus.isConnected())
            accepted = bus.call(call, QDBus::Block, int(wait.count())).type() == QDBusMessage::ReplyMessage;
        std::lock_guard lock(outcome->mutex);
        outcome->accepted = accepted;
        outcome->done.notify_all();
    });
    std::unique_lock lock(outcome->mutex);
    outcome->done.wait_for(lock, wait, [&] { return outcome->accepted.has_value(); });
    return outcome->accepted.value_or(false);
}

#include "desktop_bus.moc"
