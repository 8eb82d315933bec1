#pragma once
// The menu bar of a browser window, which also carries every keyboard shortcut of the
// window: the application items, files, editing, navigation, view modes, splits,
// cables, Peek styles and the view settings; and the menus of the toolbar and sidebar.
// Every item acts on the window's routed (active) pane.

class BrowserFrame;

struct MenuSetup {
    // Builds the frame's menu bar and the toolbar's and sidebar's menus.
    static void install(BrowserFrame* frame);
    // Rebuilds the Peek Style menu of every window from the style order, which is read
    // in the background (also when the order or the current style changed).
    static void refreshPeekStyle();
};
