// The brondel executable: a command-line run when the first argument is a command word,
// otherwise the graphical file manager.

#include "app/cli_router.h"
#include "app/launch_args.h"

#include <cstdlib>

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
    // The window arrives with the browser window; until then a GUI run does nothing.
    return 0;
}
