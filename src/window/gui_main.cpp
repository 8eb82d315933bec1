#include "window/gui_main.h"

#include "app/launch_args.h"
#include "cards/cards_changed.h"
#include "config/settings_file.h"
#include "window/app_delegate.h"
#include "window/gui_messages.h"

#include <QApplication>

#include <unistd.h>

#include <climits>
#include <string>
#include <vector>

namespace {

std::string workingDirectory()
{
    char buf[PATH_MAX];
    return ::getcwd(buf, sizeof buf) ? std::string(buf) : std::string("/");
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
    int status = 0;
    {
        QApplication app(argc, argv);
        QApplication::setApplicationName(QStringLiteral("Brondel"));
        QApplication::setQuitOnLastWindowClosed(true);
        AppDelegate delegate(paths, paths.empty() ? RootChoice::Computer : RootChoice::Paths, launchViewMode(full),
                             Settings::current());
        delegate.applicationDidFinishLaunching();
        status = app.exec();
    }
    // Windows and background work are closed by now. A bus that never answered still
    // holds a thread inside libdbus, which the normal exit would wait for.
    cardsChangedExitIfStuck(status);
    return status;
}
