#pragma once
// The four view modes, defined once: their order, names, symbols and keys. The toolbar's
// segments, each pane header's segments and the View menu are all built from this list,
// and carry the mode itself (never a position in some other list).

#include "app/view_mode.h"
#include "services/shortcuts.h"

#include <QString>

#include <array>

struct ViewModeItem {
    ViewMode mode;
    const char* name;      // "Icons", untranslated (viewModeName)
    const char* menuTitle; // "as Icons", untranslated (viewModeMenuTitle)
    const char* symbol;    // the icon symbol (iconSymbol)
    Shortcut key;
};

const std::array<ViewModeItem, 4>& viewModeItems();
QString viewModeName(const ViewModeItem& item);
QString viewModeMenuTitle(const ViewModeItem& item);
