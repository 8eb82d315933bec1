#pragma once
// Qt's own diagnostics on a graphical run (for instance "QStandardPaths:
// XDG_RUNTIME_DIR not set") are not the user's business: they are dropped unless the
// environment variable BRONDEL_DEBUG is set (to anything), in which case they go to
// standard error. Critical and fatal messages always go to standard error.

// Installs the filter; call once, early in the graphical start-up. Reads BRONDEL_DEBUG
// at that moment.
void guiInstallMessageHandler();
