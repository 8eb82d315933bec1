#pragma once
// A stand-in for the system's disk service on a private bus, for the tests of its
// client and of the sidebar's drive rows: a dbus-daemon of the test's own, and the
// object manager, file systems and drives the client calls.

#include "services/udisks_client.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

namespace {

QVariantMap blockProps(const char* device, const char* drive, const char* label, bool ignore = false)
{
    return {{"Device", QByteArray(device) + '\0'}, {"Drive", QVariant::fromValue(QDBusObjectPath(drive))},
        {"IdLabel", QString::fromLatin1(label)}, {"HintIgnore", ignore}, {"Size", qulonglong(1) << 30}};
}

QVariantMap fsProps(QList<QByteArray> mounts)
{
    for (QByteArray& m : mounts)
        m.append('\0');
    return {{"MountPoints", QVariant::fromValue(mounts)}};
}

QVariantMap driveProps(bool removable, const char* vendor = "", const char* model = "")
{
    return {{"Removable", removable}, {"Ejectable", removable}, {"CanPowerOff", removable},
        {"Vendor", QString::fromLatin1(vendor)}, {"Model", QString::fromLatin1(model)}};
}

const char* const kDriveIface = "org.freedesktop.UDisks2.Drive";
const char* const kBlockIface = "org.freedesktop.UDisks2.Block";
const char* const kFsIface = "org.freedesktop.UDisks2.Filesystem";

// A stick with a labelled file system, another without label, an internal disk and a
// block the service says to ignore.
UdisksObjects sampleObjects()
{
    const QString base = QStringLiteral("/org/freedesktop/UDisks2/");
    UdisksObjects objects;
    objects[QDBusObjectPath(base + "drives/stick")] = {{kDriveIface, driveProps(true, "Kingston", "DataTraveler")}};
    objects[QDBusObjectPath(base + "drives/internal")] = {{kDriveIface, driveProps(false)}};
    objects[QDBusObjectPath(base + "block_devices/sdb1")] = {
        {kBlockIface, blockProps("/dev/sdb1", "/org/freedesktop/UDisks2/drives/stick", "PHOTOS")}, {kFsIface, fsProps({})}};
    objects[QDBusObjectPath(base + "block_devices/sdb2")] = {
        {kBlockIface, blockProps("/dev/sdb2", "/org/freedesktop/UDisks2/drives/stick", "")},
        {kFsIface, fsProps({"/media/u/second"})}};
    objects[QDBusObjectPath(base + "block_devices/sdb3")] = {
        {kBlockIface, blockProps("/dev/sdb3", "/org/freedesktop/UDisks2/drives/stick", "EFI", true)},
        {kFsIface, fsProps({})}};
    objects[QDBusObjectPath(base + "block_devices/sdb")] = { // the whole disk: no file system
        {kBlockIface, blockProps("/dev/sdb", "/org/freedesktop/UDisks2/drives/stick", "")}};
    objects[QDBusObjectPath(base + "block_devices/sda1")] = {
        {kBlockIface, blockProps("/dev/sda1", "/org/freedesktop/UDisks2/drives/internal", "root")},
        {kFsIface, fsProps({"/"})}};
    return objects;
}

// The disk service as far as the client uses it.
class FakeUdisks : public QDBusVirtualObject {
public:
    UdisksObjects objects = sampleObjects();
    QString busyMessage; // Unmount and Eject fail with this when set
    bool silent = false; // GetManagedObjects never answered
    QStringList calls;

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString member = message.member();
        calls << message.path().section('/', -1) + ' ' + member;
        if (member == QLatin1String("GetManagedObjects")) {
            if (!silent)
                connection.send(message.createReply(QVariant::fromValue(objects)));
            return true;
        }
        QVariantMap& fs = objects[QDBusObjectPath(message.path())][kFsIface];
        if (member == QLatin1String("Mount")) {
            fs = fsProps({"/media/u/" + message.path().section('/', -1).toLatin1()});
            connection.send(message.createReply(QStringLiteral("/media/u/mounted")));
        } else if ((member == QLatin1String("Unmount") || member == QLatin1String("Eject")) && !busyMessage.isEmpty()) {
            connection.send(message.createErrorReply(QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy"), busyMessage));
        } else {
            if (member == QLatin1String("Unmount"))
                fs = fsProps({});
            connection.send(message.createReply());
        }
        return true;
    }
};

// A private bus with the stand-in service on it; `address()` is empty when no
// dbus-daemon could be started.
class FakeUdisksBus {
public:
    FakeUdisks service;

    FakeUdisksBus()
    {
        udisksRegisterTypes();
        m_daemon.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address=1"});
        if (!m_daemon.waitForStarted(5000) || !m_daemon.waitForReadyRead(5000))
            return;
        const QString address = QString::fromLatin1(m_daemon.readLine().trimmed());
        QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("fake_udisks"));
        if (bus.isConnected() && bus.registerVirtualObject(kUdisksRoot, &service, QDBusConnection::SubPath)
            && bus.registerService(kUdisksService))
            m_address = address;
    }
    ~FakeUdisksBus()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("fake_udisks"));
        m_daemon.kill();
        m_daemon.waitForFinished(3000);
    }
    const QString& address() const { return m_address; }

private:
    QProcess m_daemon;
    QString m_address;
};

} // namespace
