#pragma once
// Everyday file work from the menus, the keys and the views: cut, copy and paste through
// the clipboard, rename in place, undo and redo, and Open With. Each change runs as a
// job of the file operations (context.ops), off the UI thread, and joins the undo stack;
// a failure is shown in an alert once the job ends.

#include <functional>
#include <memory>
#include <string>
#include <vector>

class BrondelWindow;
class BrowserFrame;
class QAction;
class QMenu;
class QWidget;
struct BrowserContext;
struct OpRequest;
struct OpResult;

struct FileActions {
    // Puts the items on the clipboard, to be moved by the next paste.
    static void cut(const std::vector<std::string>& paths);
    // Copies or moves (after a cut) the clipboard's files into `folder`.
    static void paste(BrondelWindow& pane, const std::string& folder);
    // Files dropped into `folder`: the keys held now and whether the files share the
    // folder's device decide (dropChoose); Alt asks with a small menu at the pointer.
    static void drop(BrondelWindow& pane, std::vector<std::string> paths, const std::string& folder);
    static void rename(BrondelWindow& pane, const std::string& path, const std::string& newName);
    static void undo(const BrowserContext& context, QWidget* parent);
    static void redo(const BrowserContext& context, QWidget* parent);
    // Keeps the items' texts ("Undo Rename") and enabled state current.
    static void followUndo(const BrowserContext& context, QAction* undo, QAction* redo);
    // Submits `request`; an alert on `parent` says why when it fails. `done`, when given,
    // receives the result once the job has ended (after that alert).
    static void run(const BrowserContext& context, QWidget* parent, const OpRequest& request,
        std::function<void(const OpResult&)> done = {});
    // Deletes the items for good once the user has agreed in a box that says it cannot
    // be undone (Shift+Delete); the box does not block the event loop.
    static void deleteForGood(BrondelWindow& pane, std::vector<std::string> paths);

    // Fills the Open With submenu of `path`: the applications for its type, the default
    // first, then "Other Application…". The applications are looked up in the background;
    // the menu is filled when they are in.
    static void openWithFill(QMenu& menu, BrondelWindow& pane, const std::string& path);
    // Reads the applications in the background now, so that the first Open needs no wait.
    static void warmUp();
    // Waits until the applications' background work is done (tests).
    static void waitForApps();
    // Opens a file with the default application of its type, in the background: an alert
    // says so when no application takes the type, or when it does not start. False when
    // the caller should hand the file to the desktop instead (the applications are not
    // read yet, or the name tells no type).
    static bool openDefault(QWidget* parent, const std::string& path);
};
