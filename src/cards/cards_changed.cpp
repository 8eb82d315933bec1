#include "cards/cards_changed.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

const char* const cardsChangedName = "com.larkspine.brondel.cardsChanged";
const char* const cardsChangedPath = "/com/larkspine/brondel";
const char* const cardsChangedInterface = "com.larkspine.brondel";
const char* const cardsChangedMember = "cardsChanged";

namespace {

// Qt reports an unreachable bus with warnings; no command may write to stderr, and a
// missing bus is not an error here.
void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

class QuietMessages {
public:
    QuietMessages() : m_previous(qInstallMessageHandler(quiet)) {}
    ~QuietMessages() { qInstallMessageHandler(m_previous); }

private:
    QtMessageHandler m_previous;
};

// QtDBus wants an application object; a command-line run gets one for the rest of the
// process (it ends moments later).
void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    static int argc = 1;
    static char name[] = "brondel";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
}

class CardsChangedReceiver : public QObject {
    Q_OBJECT
public:
    CardsChangedReceiver(std::function<void()> callback, QObject* parent)
        : QObject(parent), m_callback(std::move(callback))
    {
    }

public slots:
    void changed() { m_callback(); }

private:
    std::function<void()> m_callback;
};

} // namespace

bool cardsChangedPost()
{
    ensureApplication();
    QuietMessages quietly;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    auto signal = QDBusMessage::createSignal(QString::fromLatin1(cardsChangedPath),
                                             QString::fromLatin1(cardsChangedInterface),
                                             QString::fromLatin1(cardsChangedMember));
    if (!bus.send(signal))
        return false;
    // The bus delivers one connection's messages in order: when the answer to this call
    // arrives, the signal has been sent, and the process may end.
    auto ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                               QStringLiteral("/org/freedesktop/DBus"),
                                               QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    bus.call(ping, QDBus::Block, 3000);
    return true;
}

bool cardsChangedObserve(std::function<void()> callback, QObject* owner)
{
    QuietMessages quietly;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    auto* receiver = new CardsChangedReceiver(std::move(callback), owner);
    if (bus.connect(QString(), QString::fromLatin1(cardsChangedPath), QString::fromLatin1(cardsChangedInterface),
                    QString::fromLatin1(cardsChangedMember), receiver, SLOT(changed())))
        return true;
    delete receiver;
    return false;
}

#include "cards_changed.moc"
