// The disk service client: removable file systems picked out of the service's objects,
// Mount, Unmount, Eject against a stand-in service on a private bus, a busy drive naming
// its holder, and buses that are missing, silent, or answer nothing in time.

#include "../window/gui_test_main.h"
#include "services/udisks_client.h"
#include "support/fake_session_bus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
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
    QString busyMessage; // Unmount fails with this when set
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
        } else if (member == QLatin1String("Unmount") && !busyMessage.isEmpty()) {
            connection.send(message.createErrorReply(QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy"), busyMessage));
        } else {
            if (member == QLatin1String("Unmount"))
                fs = fsProps({});
            connection.send(message.createReply());
        }
        return true;
    }
};

const UdisksVolume* byDevice(const std::vector<UdisksVolume>& volumes, const QString& device)
{
    for (const UdisksVolume& v : volumes)
        if (v.device == device)
            return &v;
    return nullptr;
}

} // namespace

class UdisksClientTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        udisksRegisterTypes();
        m_daemon.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address=1"});
        if (!m_daemon.waitForStarted(5000) || !m_daemon.waitForReadyRead(5000))
            QSKIP("no dbus-daemon");
        m_address = QString::fromLatin1(m_daemon.readLine().trimmed());
        QDBusConnection service = QDBusConnection::connectToBus(m_address, QStringLiteral("fake_udisks"));
        QVERIFY(service.isConnected());
        QVERIFY(service.registerVirtualObject(kUdisksRoot, &m_fake, QDBusConnection::SubPath));
        QVERIFY(service.registerService(kUdisksService));
    }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("fake_udisks"));
        m_daemon.kill();
        m_daemon.waitForFinished(3000);
    }

    void removableFileSystemsOnly()
    {
        const std::vector<UdisksVolume> volumes = udisksVolumes(sampleObjects());
        QCOMPARE(volumes.size(), size_t(2));
        QCOMPARE(volumes[0].device, QStringLiteral("/dev/sdb1"));
        QCOMPARE(volumes[0].name, QStringLiteral("PHOTOS"));
        QVERIFY(!volumes[0].mounted());
        QVERIFY(volumes[0].ejectable && volumes[0].canPowerOff);
        QCOMPARE(volumes[0].drive, QStringLiteral("/org/freedesktop/UDisks2/drives/stick"));
        QCOMPARE(volumes[1].name, QStringLiteral("Kingston DataTraveler")); // no label
        QCOMPARE(volumes[1].mountPoints, QStringList{"/media/u/second"});
    }

    void errorTexts()
    {
        const QString busy = QStringLiteral("org.freedesktop.UDisks2.Error.DeviceBusy");
        struct Case {
            QString name, message, text;
        } cases[] = {
            {busy, "Error unmounting /dev/sdb1: target is busy: in use by: firefox (pid 1234)",
             "The drive is in use by firefox (process 1234)."},
            {busy, "Cannot unmount: process 42 (vim) holds /media/u/x", "The drive is in use by vim (process 42)."},
            {busy, "Error unmounting /dev/sdb1: target is busy", "The drive is in use by an application."},
            {"org.freedesktop.UDisks2.Error.Failed", "Error unmounting: target is busy",
             "The drive is in use by an application."},
            {"org.freedesktop.DBus.Error.NoReply", "", "The disk service did not answer."},
            {"org.freedesktop.UDisks2.Error.NotAuthorizedCanObtain", "x", "You are not allowed to do this."},
            {"org.freedesktop.UDisks2.Error.Failed", "Wrong fs type", "Wrong fs type"},
        };
        for (const Case& c : cases)
            QCOMPARE(udisksErrorText(c.name, c.message), c.text);
    }

    void mountUnmountEjectThroughTheService()
    {
        if (m_address.isEmpty())
            QSKIP("no bus");
        m_fake.objects = sampleObjects();
        m_fake.calls.clear();
        UdisksClient client(m_address);
        QTRY_VERIFY(client.settled());
        QVERIFY(client.available());
        QCOMPARE(client.volumes().size(), size_t(2));

        QString error = QStringLiteral("pending");
        QString mountedAt;
        client.run(UdisksAction::Mount, *byDevice(client.volumes(), "/dev/sdb1"), [&](QString e, QString at) {
            error = e;
            mountedAt = at;
        });
        QTRY_VERIFY(error != QLatin1String("pending"));
        QCOMPARE(error, QString());
        QCOMPARE(mountedAt, QStringLiteral("/media/u/mounted"));
        QTRY_VERIFY(byDevice(client.volumes(), "/dev/sdb1") && byDevice(client.volumes(), "/dev/sdb1")->mounted());

        m_fake.busyMessage = QStringLiteral("target is busy: in use by: gimp (pid 77)");
        error = QStringLiteral("pending");
        client.run(UdisksAction::Unmount, *byDevice(client.volumes(), "/dev/sdb1"), [&](QString e, QString) { error = e; });
        QTRY_COMPARE(error, QStringLiteral("The drive is in use by gimp (process 77)."));

        // Eject of a mounted volume unmounts it first, on the block, then ejects the drive.
        m_fake.busyMessage.clear();
        m_fake.calls.clear();
        error = QStringLiteral("pending");
        client.run(UdisksAction::Eject, *byDevice(client.volumes(), "/dev/sdb2"), [&](QString e, QString) { error = e; });
        QTRY_COMPARE(error, QString());
        QCOMPARE(m_fake.calls.filter(QRegularExpression("Unmount|Eject")), (QStringList{"sdb2 Unmount", "stick Eject"}));
    }

    void noBusSilentBusOrSilentServiceNeverHang()
    {
        // A socket nobody listens on, a bus that accepts and never speaks.
        FakeSessionBus silentBus({}, std::chrono::milliseconds(10000));
        for (const QString& address : {QStringLiteral("unix:path=/nonexistent/bus"),
                 QString::fromStdString(silentBus.address())}) {
            QElapsedTimer clock;
            clock.start();
            UdisksClient client(address);
            QVERIFY(clock.elapsed() < 200);
            QTRY_VERIFY_WITH_TIMEOUT(client.settled(), 5000);
            QVERIFY(!client.available());
            QVERIFY(client.volumes().empty());
        }
        if (m_address.isEmpty())
            return;
        m_fake.silent = true;
        UdisksClient client(m_address, nullptr, 500);
        QTRY_VERIFY_WITH_TIMEOUT(client.settled(), 5000);
        QVERIFY(!client.available());
        m_fake.silent = false;
    }

private:
    QProcess m_daemon;
    QString m_address;
    FakeUdisks m_fake;
};

BRONDEL_GUI_TEST_MAIN(UdisksClientTest)
#include "udisks_client_test.moc"
