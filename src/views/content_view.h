#pragma once
// The content view of a pane for a mode, and what it reports back to the pane.

#include "app/view_mode.h"
#include "fs/dir_node.h"
#include "services/browser_context.h"
#include "views/content_hooks.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// Builds the view of `mode` for `root`, with the favourites `headers` above its rows.
// The Peek mode shows a grid of the root's items until its own view exists.
// A root whose folder could not be read shows why instead of rows.
QWidget* contentViewBuild(ViewMode mode, const DirNodePtr& root, std::vector<DirNodePtr> headers,
    const BrowserContext& context, const ContentHooks& hooks);

// What a folder that could not be read shows: "Permission denied", "No such folder", or
// the C library's text for the errno.
QString contentReadErrorText(int error);

// The widget that should take the keyboard focus inside a content view.
QWidget* contentViewFocus(QWidget* view);

// The paths of the selected rows of a content view (section headers are never
// selected), each once.
std::vector<std::string> contentViewSelection(QWidget* view);

// Selects the top-level row of `path` in a content view and scrolls to it; false when
// the view has no such row.
bool contentViewSelect(QWidget* view, const std::string& path);
