#pragma once
// Path strings as the program compares them: the home folder, tilde expansion.

#include <string>

// The user's home folder: $HOME when set, else the password database's entry.
std::string homeDir();

// The login name of the user running the program ("" when unknown).
std::string loginName();

// Expands a leading "~" or "~/..." to the home folder and "~user/..." to that user's
// home; any other path (and an unknown user) is returned unchanged.
std::string expandTilde(const std::string& path);

// Whether `path` is a folder (or a link to one). Reads the disk: never on the UI thread.
bool pathIsFolder(const std::string& path);

// Whether the name `path` is taken, by anything (a dangling link too): only a plain "no
// such file" says it is free. Reads the disk: never on the UI thread.
bool pathTaken(const std::string& path);

// Whether the item `path` (a link itself, not what it points to) lies on the device of
// the folder `folder`. False when either cannot be read. Reads the disk.
bool pathsShareDevice(const std::string& folder, const std::string& path);

class QString;

// The bytes of a path a dialog gives as text. A name that is not UTF-8 does not survive
// the trip through QString, so a component that does not exist as encoded is looked up
// in its folder by the text it decodes to. Reads the disk (through the seam): never on
// the UI thread.
std::string pathBytesFromText(const QString& text);
