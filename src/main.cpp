// The brondel executable: a command-line run when the first argument is a command word,
// otherwise the graphical file manager (the GUI objects exist only in that case, so
// `brondel --help` starts fast).

#include "app/cli_router.h"
#include "app/launch_args.h"
#include "config/settings_file.h"
#include "window/app_delegate.h"

#include <QApplication>

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

namespace {

std::string workingDirectory()
{
    char buf[PATH_MAX];
    return ::getcwd(buf, sizeof buf) ? std::string(buf) : std::string("/");
}

} // namespace

int main(int argc, char** argv)
{
    Args args = launchArguments(argc, argv);
    {
        CliOut out(CliOut::Target::Stdout);
        if (auto status = CLIRouter::run(args, out)) {
            out.flush();
            return *status;
        }
    }

    Args full(argv, argv + argc);
    std::vector<std::string> paths;
    const std::string cwd = workingDirectory();
    for (const auto& arg : args)
        paths.push_back(launchExpandPath(arg, cwd));

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brondel"));
    QApplication::setQuitOnLastWindowClosed(true);
    AppDelegate delegate(paths, paths.empty() ? RootChoice::Computer : RootChoice::Paths, launchViewMode(full),
        Settings::current());
    delegate.applicationDidFinishLaunching();
    return app.exec();
}
