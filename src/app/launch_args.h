#pragma once
// Launch arguments: what start-up strips before the command router sees the list, the
// initial view mode, and how a path argument becomes a folder to open.

#include "app/view_mode.h"

#include <string>
#include <vector>

using Args = std::vector<std::string>;

// Drops every argument that begins with "-psn_" (added by some launchers).
Args launchStripPlatformArgs(const Args& args);

// Removes each "--view" together with the argument after it (a trailing "--view" alone),
// and the process flags "--new-process" and "--service". The Peek flags "--slow" and
// "--no-anim" stay: they are read from the full list (launchPeekAnimation).
Args launchStripFlags(const Args& args);

// Which process a GUI launch runs in.
enum class LaunchProcess {
    Shared,  // hand the folders to a Brondel already running, else run alone
    Own,     // "--new-process": always a process of its own
    Service, // "--service": started by the session bus; no window until asked for one
};

// From the full argument list (program path included): "--service" wins over
// "--new-process"; neither gives Shared. The value of a "--view" is never a flag.
LaunchProcess launchProcessChoice(const Args& fullArgs);

// The mode for windows opened at launch, from the full argument list (program path
// included): the number after the first "--view"; 1 icon, 3 column, 4 peek, anything
// else list.
ViewMode launchViewMode(const Args& fullArgs);

// Peek mode's animation flags, from the full argument list: "--slow" makes every Peek
// animation six times longer (to watch it), "--no-anim" opens the popovers of the
// popover chain at once.
struct PeekAnimationFlags {
    bool slow = false;
    bool noAnim = false;
    bool operator==(const PeekAnimationFlags&) const = default;
};
PeekAnimationFlags launchPeekAnimation(const Args& fullArgs);

// Turns a path argument into a folder to open: a local file:// URI (what launchers pass
// for the desktop entry's %U) decoded, "~" expanded, made absolute against `cwd`, "."
// and ".." resolved as text; an existing non-folder gives its parent.
std::string launchExpandPath(const std::string& arg, const std::string& cwd);

// The process's arguments without the program path, "-psn_" ones and "--view" pairs.
Args launchArguments(int argc, char** argv);
