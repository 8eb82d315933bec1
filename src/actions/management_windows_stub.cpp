// Stand-ins until the settings and favourites windows are part of the build: the menu
// items exist and do nothing.

#include "actions/management_windows.h"

void settingsWindowShow(QWidget*, const BrowserContext&) {}

void favoritesManagerShow(QWidget*, const BrowserContext&) {}
