#pragma once
// The desktop's services for files: open with the default application, show in the
// file manager, put a path on the clipboard. Platform-bound; nothing else in the
// program talks to them.

#include "services/file_clipboard.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

// Opens the item at `path` with its default application; false when the desktop has
// nothing to open it with (or could not start it). Never waits for the application.
bool workspaceOpen(const std::string& path);

// Asks the desktop's file manager to show the item at `path` selected
// (org.freedesktop.FileManager1.ShowItems on the session bus). Without a session bus, or
// when no file manager answers, `fallback` runs instead, on the main thread. Never
// waits for the answer.
void workspaceReveal(const std::string& path, std::function<void()> fallback);

// The title of the item that reveals: the platform's file manager by its usual name.
QString workspaceRevealTitle();

// Replaces the clipboard's content with `path` as plain text, byte for byte.
void workspaceCopyPath(const std::string& path);

// Puts items on the clipboard as other file managers exchange them: a URI list (also in
// the GNOME and KDE forms, marked as copied or cut) and their paths as plain text, one
// a line.
void workspaceCopyItems(const std::vector<std::string>& paths, ClipboardIntent intent = ClipboardIntent::Copy);

// The files on the clipboard, copied or cut, in any of those forms.
std::optional<ClipboardFiles> workspaceClipboardFiles();

// `path` as a file URL, every byte that is not a plain URL character percent-encoded,
// so a name that is not valid UTF-8 survives.
std::string workspaceFileUrl(const std::string& path);
