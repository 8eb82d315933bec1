#pragma once
// The content view of a pane for a mode, and what it reports back to the pane.

#include "app/view_mode.h"
#include "fs/dir_node.h"
#include "window/browser_context.h"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

struct ContentHooks {
    std::function<void(const std::string&)> openFolder; // a folder activated
    std::function<void(const std::string&)> openFile;   // a file activated
};

// Builds the view of `mode` for `root`, with the favourites `headers` above its rows.
// The icon and Peek modes show a grid of the root's items until their own views exist.
QWidget* contentViewBuild(ViewMode mode, const DirNodePtr& root, std::vector<DirNodePtr> headers,
    const BrowserContext& context, const ContentHooks& hooks);

// The widget that should take the keyboard focus inside a content view.
QWidget* contentViewFocus(QWidget* view);

// What a double-click or Return on a row does: folders go to openFolder, files to
// openFile, section headers do nothing.
void contentActivate(const DirNodePtr& node, const ContentHooks& hooks);
