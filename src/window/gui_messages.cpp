#include "window/gui_messages.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

std::atomic<bool> g_debug{false};

void guiMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const bool always = type == QtCriticalMsg || type == QtFatalMsg;
    if (!always && !g_debug.load(std::memory_order_relaxed))
        return;
    const QByteArray text = qFormatLogMessage(type, context, message).toLocal8Bit();
    std::fprintf(stderr, "%s\n", text.constData());
    std::fflush(stderr);
}

} // namespace

void guiInstallMessageHandler()
{
    g_debug = std::getenv("BRONDEL_DEBUG") != nullptr;
    qInstallMessageHandler(guiMessage);
}
