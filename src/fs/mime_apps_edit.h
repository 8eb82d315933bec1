#pragma once
// Making an application the default for a file type, in the user's mimeapps.list: the
// text edit is a pure function (every other line, group and comment stays as it was);
// the write replaces the file atomically.

#include <string>
#include <string_view>

// `text` (a mimeapps.list, maybe empty) with `id` the default application of `type`: first
// in [Default Applications] and [Added Associations] (the others stay after it), and out of
// [Removed Associations]. Groups and keys that are missing are added.
std::string mimeAppsWithDefault(std::string_view text, std::string_view type, std::string_view id);

// Applies mimeAppsWithDefault to `path` (a missing file counts as empty) and writes it
// back atomically. 0 or an errno. Writes the disk: never on the UI thread.
int mimeAppsSetDefault(const std::string& path, std::string_view type, std::string_view id);
