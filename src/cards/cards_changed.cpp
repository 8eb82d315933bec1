#include "cards/cards_changed.h"

#include "cards/session_bus.h"
#include "fs/call_mailbox.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

const char* const cardsChangedName = "com.larkspine.brondel.cardsChanged";
const char* const cardsChangedPath = "/com/larkspine/brondel";
const char* const cardsChangedInterface = "com.larkspine.brondel";
const char* const cardsChangedMember = "cardsChanged";

namespace {

// One private connection for everything this process says or hears about cards.
constexpr const char* kConnectionName = "brondel_cards_changed";

void busConnectThen(QString address, std::function<void(QDBusConnection)> then)
{
    sessionBusConnectThen(std::move(address), QString::fromLatin1(kConnectionName), std::move(then));
}

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

// Receives the bus signal in the thread that first observed (the GUI's main thread) and
// hands it to every live callback. One per process and never deleted: the bus thread
// that subscribes it may outlive everything else.
class CardsChangedRelay : public QObject {
    Q_OBJECT
public:
    static CardsChangedRelay* instance()
    {
        static CardsChangedRelay* relay = new CardsChangedRelay;
        return relay;
    }

    // Main thread only, like everything here but the subscription itself.
    void add(const QString& address, QObject* owner, std::function<void()> callback,
             std::function<void(bool)> subscribed)
    {
        m_entries.push_back({owner, owner != nullptr, std::move(callback)});
        if (subscribed) {
            if (m_state == State::Done)
                QMetaObject::invokeMethod(this, [subscribed, ok = m_subscribed] { subscribed(ok); },
                                          Qt::QueuedConnection);
            else
                m_waiting.push_back(std::move(subscribed));
        }
        if (m_state != State::Idle)
            return;
        m_state = State::Connecting;
        busConnectThen(address, [this, relay = m_mailbox.poster()](QDBusConnection bus) {
            const bool ok = bus.isConnected()
                && bus.connect(QString(), QString::fromLatin1(cardsChangedPath),
                               QString::fromLatin1(cardsChangedInterface), QString::fromLatin1(cardsChangedMember),
                               this, SLOT(changed()));
            relay.post([this, ok] { finish(ok); });
        });
    }

public slots:
    void changed()
    {
        std::erase_if(m_entries, [](const Entry& e) { return e.owned && !e.owner; });
        const std::vector<Entry> entries = m_entries; // a callback may observe again
        for (const Entry& e : entries)
            if (!e.owned || e.owner)
                e.callback();
    }

private:
    struct Entry {
        QPointer<QObject> owner;
        bool owned;
        std::function<void()> callback;
    };
    enum class State { Idle, Connecting, Done };

    void finish(bool ok)
    {
        m_state = State::Done;
        m_subscribed = ok;
        for (auto& subscribed : std::exchange(m_waiting, {}))
            subscribed(ok);
    }

    CallMailbox m_mailbox; // the bus thread's answer
    std::vector<Entry> m_entries;
    std::vector<std::function<void(bool)>> m_waiting;
    State m_state = State::Idle;
    bool m_subscribed = false;
};

} // namespace

CardsPost cardsChangedPost(std::chrono::milliseconds wait)
{
    const QString address = sessionBusAddress();
    if (address.isEmpty())
        return CardsPost::NoBus;
    ensureApplication();
    struct Outcome {
        std::mutex mutex;
        std::condition_variable done;
        std::optional<CardsPost> result;
    };
    auto outcome = std::make_shared<Outcome>();
    busConnectThen(address, [outcome](QDBusConnection bus) {
        CardsPost result = CardsPost::NoBus;
        const auto signal = QDBusMessage::createSignal(QString::fromLatin1(cardsChangedPath),
                                                       QString::fromLatin1(cardsChangedInterface),
                                                       QString::fromLatin1(cardsChangedMember));
        if (bus.isConnected() && bus.send(signal)) {
            // The bus handles one connection's messages in order: once this call is
            // answered, the signal has gone out.
            auto ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                       QStringLiteral("/org/freedesktop/DBus"),
                                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
            bus.call(ping, QDBus::Block, 3000);
            result = CardsPost::Sent;
        }
        std::lock_guard lock(outcome->mutex);
        outcome->result = result;
        outcome->done.notify_all();
    });
    std::unique_lock lock(outcome->mutex);
    outcome->done.wait_for(lock, wait, [&] { return outcome->result.has_value(); });
    return outcome->result.value_or(CardsPost::Unconfirmed);
}

bool cardsChangedObserve(std::function<void()> callback, QObject* owner, std::function<void(bool)> subscribed)
{
    const QString address = sessionBusAddress();
    if (address.isEmpty())
        return false;
    CardsChangedRelay::instance()->add(address, owner, std::move(callback), std::move(subscribed));
    return true;
}

bool cardsBusSend(const QDBusMessage& message)
{
    const QString address = sessionBusAddress();
    if (address.isEmpty())
        return false;
    ensureApplication();
    busConnectThen(address, [message](QDBusConnection bus) {
        if (bus.isConnected())
            bus.send(message);
    });
    return true;
}

bool cardsChangedBusPending()
{
    return sessionBusPending();
}

void cardsChangedExitIfStuck(int status)
{
    if (!cardsChangedBusPending())
        return;
    std::fflush(nullptr);
    std::_Exit(status);
}

#include "cards_changed.moc"
