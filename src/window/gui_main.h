#pragma once
// The entry of a GUI run. The executable loads this library only when the arguments
// are not a command, so a command-line run never maps Qt Gui or Qt Widgets.

extern "C" {
// Opens the launch windows for the (already stripped) arguments and runs the event
// loop; returns the process's exit status.
int brondelGuiMain(int argc, char** argv);
}

// The symbol the executable looks up.
inline constexpr const char* kBrondelGuiEntry = "brondelGuiMain";
