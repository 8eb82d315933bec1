#include "services/desktop_notify.h"

#include "cards/cards_changed.h"

#include <QStringList>
#include <QVariantMap>

QDBusMessage desktopNotifyMessage(const QString& summary, const QString& body)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("Notify"));
    // app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout
    call << QStringLiteral("Brondel") << uint(0) << QStringLiteral("system-file-manager") << summary << body
         << QStringList() << QVariantMap() << int(-1);
    call.setAutoStartService(true);
    return call;
}

bool desktopNotify(const QString& summary, const QString& body)
{
    return cardsBusSend(desktopNotifyMessage(summary, body));
}
