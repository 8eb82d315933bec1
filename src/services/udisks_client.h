#pragma once
// Drives the system's disk service (UDisks2, on the system bus) knows about: the
// removable ones not mounted yet, and Mount, Unmount, Eject and Power Off for them.
// Every call is asynchronous with a time limit; connecting happens on a pool thread after
// a knock on the bus socket, so a bus that never answers never holds the UI, and with
// no system bus the client is simply unavailable.

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

class BackgroundWork;

using UdisksInterfaces = QMap<QString, QVariantMap>;
using UdisksObjects = QMap<QDBusObjectPath, UdisksInterfaces>;
Q_DECLARE_METATYPE(UdisksInterfaces)
Q_DECLARE_METATYPE(UdisksObjects)

inline constexpr const char* kUdisksService = "org.freedesktop.UDisks2";
inline constexpr const char* kUdisksRoot = "/org/freedesktop/UDisks2";

// A file system on a removable drive.
struct UdisksVolume {
    QString block;        // the block device's object path (Filesystem.Mount/Unmount)
    QString drive;        // its drive's object path (Drive.Eject/PowerOff)
    QString device;       // "/dev/sdb1"
    QString name;         // the label, else the drive's vendor and model, else the device
    QStringList mountPoints;
    qint64 size = 0;
    bool ejectable = false;
    bool canPowerOff = false;

    bool mounted() const { return !mountPoints.isEmpty(); }
};

// The file systems of removable drives among `objects` (a GetManagedObjects answer),
// ordered by device; blocks the service says to ignore are left out.
std::vector<UdisksVolume> udisksVolumes(const UdisksObjects& objects);

// What to tell the user about a failed call: a drive busy on unmount says which
// application holds it when the service's message names one.
QString udisksErrorText(const QString& errorName, const QString& message);

// DBUS_SYSTEM_BUS_ADDRESS, else the standard socket.
QString udisksSystemBusAddress();

// Makes QtDBus know the nested maps of GetManagedObjects (once per process).
void udisksRegisterTypes();

enum class UdisksAction { Mount, Unmount, Eject, PowerOff };

class UdisksClient : public QObject {
    Q_OBJECT
public:
    static constexpr int kListTimeoutMs = 3000;
    static constexpr int kActionTimeoutMs = 30000; // a mount may check the file system first

    explicit UdisksClient(QString address = udisksSystemBusAddress(), QObject* parent = nullptr,
        int listTimeoutMs = kListTimeoutMs);
    ~UdisksClient() override;

    // Whether the service answered (false until then, and for good without a bus).
    bool available() const { return m_available; }
    // Whether the first attempt to reach the service has finished either way.
    bool settled() const { return m_settled; }
    const std::vector<UdisksVolume>& volumes() const { return m_volumes; }

    // Reads the volumes again; changed() follows.
    void refresh();
    // Runs `action` on `volume`; `done` gets an empty text on success, else what to
    // show, and for a mount the folder it is mounted at.
    using Done = std::function<void(QString error, QString mountPoint)>;
    void run(UdisksAction action, const UdisksVolume& volume, Done done);

    // The process's client of the system bus, made on first use (main thread).
    static UdisksClient* shared();

signals:
    void changed();

private slots:
    void objectsChanged();

private:
    void connected(QDBusConnection bus);

    QString m_address;
    int m_listTimeoutMs;
    std::unique_ptr<BackgroundWork> m_work;
    std::unique_ptr<QDBusConnection> m_bus;
    QString m_connectionName;
    bool m_available = false;
    bool m_settled = false;
    int m_generation = 0;
    std::vector<UdisksVolume> m_volumes;
};
