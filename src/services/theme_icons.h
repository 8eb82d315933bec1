#pragma once
// Icons by the symbol names the interface is described with ("chevron.left",
// "trash", ...), looked up in the freedesktop icon theme. Outside a desktop session Qt
// finds no theme at all, so start-up points it at the installed themes; an icon that
// is still missing is drawn, so no button is ever blank.

#include "fs/dir_node.h"

#include <QIcon>

// Adds the XDG data folders' icon directories to the search path and selects an
// installed theme when the platform gives none. Call once after QApplication exists.
void iconsInstallTheme();

// The icon for a symbol name; never null.
QIcon iconSymbol(const char* symbol);

// The icon beside a row: drive, home, folder or file.
QIcon iconForNode(const DirNode& node);
