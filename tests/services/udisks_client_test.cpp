// The disk service client: removable file systems picked out of the service's objects,
// Mount, Unmount, Eject against a stand-in service on a private bus, a busy drive naming
// its holder, and buses that are missing, silent, or answer nothing in time.

#include "../window/gui_test_main.h"
#include "services/udisks_client.h"
#include "fake_udisks.h"
#include "support/fake_session_bus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QProcess>

namespace {

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
        m_bus = std::make_unique<FakeUdisksBus>();
        m_address = m_bus->address();
    }

    void cleanupTestCase() { m_bus.reset(); }

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
        m_bus->service.objects = sampleObjects();
        m_bus->service.calls.clear();
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

        m_bus->service.busyMessage = QStringLiteral("target is busy: in use by: gimp (pid 77)");
        error = QStringLiteral("pending");
        client.run(UdisksAction::Unmount, *byDevice(client.volumes(), "/dev/sdb1"), [&](QString e, QString) { error = e; });
        QTRY_COMPARE(error, QStringLiteral("The drive is in use by gimp (process 77)."));

        // Eject of a mounted volume unmounts it first, on the block, then ejects the drive.
        m_bus->service.busyMessage.clear();
        m_bus->service.calls.clear();
        error = QStringLiteral("pending");
        client.run(UdisksAction::Eject, *byDevice(client.volumes(), "/dev/sdb2"), [&](QString e, QString) { error = e; });
        QTRY_COMPARE(error, QString());
        QCOMPARE(m_bus->service.calls.filter(QRegularExpression("Unmount|Eject")), (QStringList{"sdb2 Unmount", "stick Eject"}));
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
        m_bus->service.silent = true;
        UdisksClient client(m_address, nullptr, 500);
        QTRY_VERIFY_WITH_TIMEOUT(client.settled(), 5000);
        QVERIFY(!client.available());
        m_bus->service.silent = false;
    }

private:
    std::unique_ptr<FakeUdisksBus> m_bus;
    QString m_address;
};

BRONDEL_GUI_TEST_MAIN(UdisksClientTest)
#include "udisks_client_test.moc"
