#pragma once
// A desktop notification (org.freedesktop.Notifications), for a long file operation
// that ended while its window was not in front. Sent without waiting for any answer;
// nothing happens without a session bus.

#include <QDBusMessage>
#include <QString>

// The Notify call itself.
QDBusMessage desktopNotifyMessage(const QString& summary, const QString& body);

// Sends it; false when there is no session bus to send it on.
bool desktopNotify(const QString& summary, const QString& body);
