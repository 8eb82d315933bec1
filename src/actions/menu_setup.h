#pragma once
// The menu bar of a browser window, which also carries every keyboard shortcut of the
// window: navigation, view modes, splits, cables and the view settings; and the menu of
// the toolbar's Info item.

class BrowserFrame;

struct MenuSetup {
    // Builds the frame's menu bar and the toolbar's menus.
    static void install(BrowserFrame* frame);
};
