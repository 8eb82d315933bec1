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

// Opens the in-place rename editor on the current row (on `path`'s row when given);
// false when there is no row to rename.
bool contentViewRename(QWidget* view, const std::string& path = {});

// The shown folder was read again: the view takes the difference in place, keeping its
// selection, current row, opened folders and scroll position. False when it cannot (the
// caller builds the view again).
struct FolderDiff;
bool contentViewApplyFresh(QWidget* view, const DirNodePtr& fresh, const FolderDiff& diff);

// Selects the top-level rows of `paths` (and nothing else), the first found current and
// scrolled to; paths without a row are passed over. How many were selected.
int contentViewSelectAll(QWidget* view, const std::vector<std::string>& paths);
