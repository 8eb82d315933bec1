#pragma once
// The menu bar of a browser window, which also carries every keyboard shortcut of the
// window: navigation, view modes, splits and cables.

class BrowserFrame;

struct MenuSetup {
    // Builds the frame's menu bar.
    static void install(BrowserFrame* frame);
};
