#pragma once
// The desktop's services for files: open with the default application, show in the
// file manager, put a path on the clipboard. Platform-bound; nothing else in the
// program talks to them.

#include <functional>
#include <string>

// Opens the item at `path` with its default application.
void workspaceOpen(const std::string& path);

// Asks the desktop's file manager to show the item at `path` selected
// (org.freedesktop.FileManager1.ShowItems on the session bus). Without a session bus, or
// when no file manager answers, `fallback` runs instead, on the main thread. Never
// waits for the answer.
void workspaceReveal(const std::string& path, std::function<void()> fallback);

// Replaces the clipboard's content with `path` as plain text, byte for byte.
void workspaceCopyPath(const std::string& path);

// `path` as a file URL, every byte that is not a plain URL character percent-encoded,
// so a name that is not valid UTF-8 survives.
std::string workspaceFileUrl(const std::string& path);
