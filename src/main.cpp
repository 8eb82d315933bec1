// The brondel executable: a command-line run when the first argument is a command word,
// otherwise the graphical file manager. The GUI library is loaded only for a GUI run, so
// `brondel --help` starts without Qt Gui or Qt Widgets.

#include "app/cli_router.h"
#include "app/launch_args.h"
#include "cards/cards_changed.h"
#include "window/gui_main.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

constexpr const char* kGuiLibrary = "libbrondel_gui.so";

#ifndef BRONDEL_BIN_TO_LIBS
#define BRONDEL_BIN_TO_LIBS "../lib/brondel"
#endif

// The GUI library beside the executable (a build tree), in the private library folder
// of an installed tree, else wherever the loader finds it.
void* openGuiLibrary()
{
    char exe[PATH_MAX];
    ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n > 0) {
        std::string dir(exe, size_t(n));
        dir = dir.substr(0, dir.rfind('/') + 1);
        for (const std::string& path : {dir + kGuiLibrary, dir + BRONDEL_BIN_TO_LIBS + "/" + kGuiLibrary})
            if (void* lib = ::dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL))
                return lib;
    }
    return ::dlopen(kGuiLibrary, RTLD_NOW | RTLD_GLOBAL);
}

} // namespace

int main(int argc, char** argv)
{
    {
        CliOut out(CliOut::Target::Stdout);
        if (auto status = CLIRouter::run(launchArguments(argc, argv), out)) {
            out.flush();
            // A command that talked to a silent bus leaves a thread in libdbus; the
            // normal exit would wait for it.
            cardsChangedExitIfStuck(*status);
            return *status;
        }
    }
    void* gui = openGuiLibrary();
    auto entry = gui ? reinterpret_cast<int (*)(int, char**)>(::dlsym(gui, kBrondelGuiEntry)) : nullptr;
    if (!entry) {
        // Not a command run: the only way to tell the user why no window opens.
        std::fprintf(stderr, "brondel: cannot load the interface (%s)\n", ::dlerror());
        return 1;
    }
    return entry(argc, argv);
}
