#include "services/udisks_client.h"

#include "cards/session_bus.h"
#include "services/background_work.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QCoreApplication>
#include <QPointer>
#include <QRegularExpression>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace {

constexpr const char* kBlock = "org.freedesktop.UDisks2.Block";
constexpr const char* kFilesystem = "org.freedesktop.UDisks2.Filesystem";
constexpr const char* kDrive = "org.freedesktop.UDisks2.Drive";
constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";
// How long the knock on the bus socket may wait for the bus to say anything.
constexpr std::chrono::milliseconds kKnockWait{1000};

std::atomic<int> g_clients{0};

// A byte-string property ("ay"): the bytes without the terminating NUL.
QString bytesText(const QVariant& value)
{
    QByteArray bytes = value.toByteArray();
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    return QString::fromLocal8Bit(bytes);
}

// A list of byte strings ("aay"), however QtDBus handed it over.
QStringList bytesList(const QVariant& value)
{
    QStringList out;
    if (value.canConvert<QDBusArgument>()) {
        const QDBusArgument arg = value.value<QDBusArgument>();
        arg.beginArray();
        while (!arg.atEnd()) {
            QByteArray bytes;
            arg >> bytes;
            out << bytesText(bytes);
        }
        arg.endArray();
        return out;
    }
    for (const QByteArray& bytes : value.value<QList<QByteArray>>())
        out << bytesText(bytes);
    return out;
}

QString objectPathOf(const QVariant& value)
{
    return value.canConvert<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path() : value.toString();
}

} // namespace

void udisksRegisterTypes()
{
    static const bool once = [] {
        qDBusRegisterMetaType<QList<QByteArray>>();
        qDBusRegisterMetaType<UdisksInterfaces>();
        qDBusRegisterMetaType<UdisksObjects>();
        return true;
    }();
    (void)once;
}

std::vector<UdisksVolume> udisksVolumes(const UdisksObjects& objects)
{
    std::vector<UdisksVolume> out;
    for (auto it = objects.begin(); it != objects.end(); ++it) {
        const UdisksInterfaces& ifaces = it.value();
        if (!ifaces.contains(QLatin1String(kBlock)) || !ifaces.contains(QLatin1String(kFilesystem)))
            continue;
        const QVariantMap block = ifaces.value(QLatin1String(kBlock));
        if (block.value(QStringLiteral("HintIgnore")).toBool() || block.value(QStringLiteral("HintSystem")).toBool())
            continue;
        UdisksVolume volume;
        volume.block = it.key().path();
        volume.drive = objectPathOf(block.value(QStringLiteral("Drive")));
        const UdisksInterfaces drive = objects.value(QDBusObjectPath(volume.drive.isEmpty() ? "/" : volume.drive));
        const QVariantMap d = drive.value(QLatin1String(kDrive));
        if (!d.value(QStringLiteral("Removable")).toBool() && !d.value(QStringLiteral("MediaRemovable")).toBool())
            continue;
        volume.device = bytesText(block.value(QStringLiteral("PreferredDevice")));
        if (volume.device.isEmpty())
            volume.device = bytesText(block.value(QStringLiteral("Device")));
        volume.size = block.value(QStringLiteral("Size")).toLongLong();
        volume.mountPoints = bytesList(ifaces.value(QLatin1String(kFilesystem)).value(QStringLiteral("MountPoints")));
        volume.ejectable = d.value(QStringLiteral("Ejectable")).toBool();
        volume.canPowerOff = d.value(QStringLiteral("CanPowerOff")).toBool();
        volume.name = block.value(QStringLiteral("IdLabel")).toString();
        if (volume.name.isEmpty())
            volume.name = (d.value(QStringLiteral("Vendor")).toString() + QLatin1Char(' ')
                + d.value(QStringLiteral("Model")).toString()).trimmed();
        if (volume.name.isEmpty())
            volume.name = volume.device;
        out.push_back(volume);
    }
    std::sort(out.begin(), out.end(), [](const UdisksVolume& a, const UdisksVolume& b) { return a.device < b.device; });
    return out;
}

QString udisksErrorText(const QString& errorName, const QString& message)
{
    if (errorName.endsWith(QLatin1String(".DeviceBusy")) || message.contains(QLatin1String("target is busy"))) {
        // The service may name the holders: "... in use by: firefox (pid 1234)" or
        // "process 1234 (vim)".
        static const QRegularExpression byName(QStringLiteral("([\\w.+-]+)\\s*\\(pid[: ]\\s*(\\d+)\\)"));
        static const QRegularExpression byPid(QStringLiteral("process\\s+(\\d+)\\s*\\(([^)]+)\\)"));
        QStringList holders;
        for (auto it = byName.globalMatch(message); it.hasNext();) {
            const auto m = it.next();
            holders << QObject::tr("%1 (process %2)").arg(m.captured(1), m.captured(2));
        }
        for (auto it = byPid.globalMatch(message); it.hasNext();) {
            const auto m = it.next();
            holders << QObject::tr("%1 (process %2)").arg(m.captured(2), m.captured(1));
        }
        if (!holders.isEmpty())
            return QObject::tr("The drive is in use by %1.").arg(holders.join(QStringLiteral(", ")));
        return QObject::tr("The drive is in use by an application.");
    }
    if (errorName == QLatin1String("org.freedesktop.DBus.Error.NoReply")
        || errorName == QLatin1String("org.freedesktop.DBus.Error.Timeout"))
        return QObject::tr("The disk service did not answer.");
    if (errorName.endsWith(QLatin1String(".NotAuthorized"))
        || errorName.endsWith(QLatin1String(".NotAuthorizedCanObtain")))
        return QObject::tr("You are not allowed to do this.");
    return message.isEmpty() ? errorName : message;
}

QString udisksSystemBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address.isEmpty() ? QStringLiteral("unix:path=/var/run/dbus/system_bus_socket") : QString::fromLocal8Bit(address);
}

UdisksClient::UdisksClient(QString address, QObject* parent, int listTimeoutMs)
    : QObject(parent)
    , m_address(std::move(address))
    , m_listTimeoutMs(listTimeoutMs)
    , m_work(std::make_unique<BackgroundWork>(1, WorkClass::Utility))
    , m_connectionName(QStringLiteral("brondel_udisks_%1").arg(g_clients.fetch_add(1)))
{
    udisksRegisterTypes();
    // Knock first: libdbus waits without limit for a bus that accepts and never
    // answers. Only a bus that answered is connected to, and never on this thread.
    const int gen = ++m_generation;
    m_work->submit(this, [this, gen, address = m_address, name = m_connectionName]() -> std::function<void()> {
        SessionBusProbe probe(address);
        const bool answered = probe.answered(std::chrono::steady_clock::now() + kKnockWait);
        std::shared_ptr<QDBusConnection> bus;
        if (answered)
            bus = std::make_shared<QDBusConnection>(QDBusConnection::connectToBus(address, name));
        return [this, gen, bus] {
            if (gen != m_generation)
                return;
            if (!bus || !bus->isConnected()) {
                m_settled = true;
                emit changed();
                return;
            }
            connected(*bus);
        };
    });
}

UdisksClient::~UdisksClient()
{
    ++m_generation;
    if (m_bus)
        QDBusConnection::disconnectFromBus(m_connectionName);
}

void UdisksClient::connected(QDBusConnection bus)
{
    m_bus = std::make_unique<QDBusConnection>(bus);
    // Drives come and go, and mounts change: read the list again each time.
    m_bus->connect(QLatin1String(kUdisksService), QLatin1String(kUdisksRoot), QLatin1String(kObjectManager),
        QStringLiteral("InterfacesAdded"), this, SLOT(objectsChanged()));
    m_bus->connect(QLatin1String(kUdisksService), QLatin1String(kUdisksRoot), QLatin1String(kObjectManager),
        QStringLiteral("InterfacesRemoved"), this, SLOT(objectsChanged()));
    refresh();
}

void UdisksClient::objectsChanged() { refresh(); }

void UdisksClient::refresh()
{
    if (!m_bus)
        return;
    const QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(kUdisksService),
        QLatin1String(kUdisksRoot), QLatin1String(kObjectManager), QStringLiteral("GetManagedObjects"));
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(call, m_listTimeoutMs), this);
    const int gen = ++m_generation;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, gen](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        if (gen != m_generation)
            return;
        QDBusPendingReply<UdisksObjects> reply = *w;
        m_settled = true;
        m_available = !reply.isError();
        m_volumes = m_available ? udisksVolumes(reply.value()) : std::vector<UdisksVolume>{};
        emit changed();
    });
}

UdisksClient* UdisksClient::shared()
{
    static QPointer<UdisksClient> client;
    if (!client)
        client = new UdisksClient(udisksSystemBusAddress(), qApp);
    return client;
}

void UdisksClient::run(UdisksAction action, const UdisksVolume& volume, Done done)
{
    if (!m_bus) {
        done(tr("The disk service is not available."), QString());
        return;
    }
    // Eject and Power Off let go of a mounted file system first.
    if ((action == UdisksAction::Eject || action == UdisksAction::PowerOff) && volume.mounted()) {
        UdisksVolume unmounted = volume;
        unmounted.mountPoints.clear();
        run(UdisksAction::Unmount, volume, [this, action, unmounted, done](QString error, QString) {
            if (!error.isEmpty())
                done(error, QString());
            else
                run(action, unmounted, done);
        });
        return;
    }
    const bool onDrive = action == UdisksAction::Eject || action == UdisksAction::PowerOff;
    const char* member = action == UdisksAction::Mount ? "Mount"
        : action == UdisksAction::Unmount              ? "Unmount"
        : action == UdisksAction::Eject                ? "Eject"
                                                       : "PowerOff";
    QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(kUdisksService),
        onDrive ? volume.drive : volume.block, QLatin1String(onDrive ? kDrive : kFilesystem),
        QLatin1String(member));
    call << QVariantMap();
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(call, kActionTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, done](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusMessage reply = w->reply();
        if (reply.type() == QDBusMessage::ErrorMessage)
            done(udisksErrorText(reply.errorName(), reply.errorMessage()), QString());
        else
            done(QString(), reply.arguments().value(0).toString());
        refresh();
    });
}
