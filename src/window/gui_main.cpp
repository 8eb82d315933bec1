#include "window/gui_main.h"

#include "app/desktop_bus.h"
#include "app/launch_args.h"
#include "cards/cards_changed.h"
#include "cards/session_bus.h"
#include "config/settings_file.h"
#include "window/app_delegate.h"
#include "window/gui_messages.h"

#include <QAccessible>
#include <QApplication>
#include <QTimer>

#include <unistd.h>

#include <chrono>
#include <climits>
#include <string>
#include <vector>

namespace {

std::string workingDirectory()
{
    char buf[PATH_MAX];
    return ::getcwd(buf, sizeof buf) ? std::string(buf) : std::string("/");
}

// How long the bus may take to answer, counted from before the application object is
// made (which itself takes longer than a live bus needs).
constexpr std::chrono::milliseconds kBusAnswer{100};

// A start by the session bus that is never asked for a window ends after this long.
constexpr int kServiceIdleMs = 30000;

// Qt's own users of the session bus (the platform's accessibility bridge, made with the
// first widget) connect on the UI thread, look the bus up when no address is set (and
// may autolaunch one), and wait for a silent bus forever. They are shown no bus at all:
// the bridge is made now, while the address names nothing, and Qt keeps that outcome
// for the rest of the run. The address is then put back for the programs we start.
void hideSessionBusFromQt()
{
    constexpr const char* kVar = "DBUS_SESSION_BUS_ADDRESS";
    const bool wasSet = qEnvironmentVariableIsSet(kVar);
    const QByteArray address = qgetenv(kVar);
    qputenv(kVar, "disabled:");
    QAccessible::isActive();
    if (wasSet)
        qputenv(kVar, address);
    else
        qunsetenv(kVar);
}

} // namespace

int brondelGuiMain(int argc, char** argv)
{
    const Args args = launchArguments(argc, argv);
    const Args full(argv, argv + argc);
    std::vector<std::string> paths;
    const std::string cwd = workingDirectory();
    for (const auto& arg : args)
        paths.push_back(launchExpandPath(arg, cwd));

    guiInstallMessageHandler(); // before Qt has anything to say
    const auto busDeadline = std::chrono::steady_clock::now() + kBusAnswer;
    SessionBusProbe bus(sessionBusAddress());
    const LaunchProcess process = launchProcessChoice(full);
    const ViewMode mode = launchViewMode(full);
    int status = 0;
    {
        QApplication app(argc, argv);
        const bool busLive = bus.answered(busDeadline);
        if (!busLive)
            hideSessionBusFromQt();
        // A Brondel already running takes the folders, and this process is done.
        if (busLive && process == LaunchProcess::Shared && desktopHandOver(sessionBusAddress(), paths, mode)) {
            cardsChangedExitIfStuck(0);
            return 0;
        }
        if (process == LaunchProcess::Service && !busLive)
            return 0; // started for a bus that is gone: nobody to serve
        QApplication::setApplicationName(QStringLiteral("Brondel"));
        QApplication::setQuitOnLastWindowClosed(true);
        const RootChoice root = process == LaunchProcess::Service ? RootChoice::Nothing
            : paths.empty()                                       ? RootChoice::Computer
                                                                  : RootChoice::Paths;
        AppDelegate delegate(paths, root, mode, Settings::current());
        const PeekAnimationFlags peek = launchPeekAnimation(full);
        delegate.setPeekAnimation(peek.slow, peek.noAnim);
        delegate.applicationDidFinishLaunching();
        // The windows are up first; the bus is answered in the background.
        if (busLive) {
            delegate.serveDesktop(sessionBusAddress(), [process](DesktopServed served) {
                if (process == LaunchProcess::Service && served != DesktopServed::Ours)
                    QApplication::quit(); // another Brondel answers already
            });
        }
        if (process == LaunchProcess::Service) {
            QTimer::singleShot(kServiceIdleMs, &delegate, [&delegate] {
                if (delegate.windows().empty())
                    QApplication::quit();
            });
        }
        status = app.exec();
    }
    // Windows and background work are closed by now. A bus that never answered still
    // holds a thread inside libdbus, which the normal exit would wait for.
    cardsChangedExitIfStuck(status);
    return status;
}
