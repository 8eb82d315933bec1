#pragma once
// Brondel on the session bus: the desktop's file-manager service
// (org.freedesktop.FileManager1, which other programs call to show a folder or reveal
// a file) and a small interface of our own through which a second `brondel DIR` hands
// its folders to the process already running and exits.
//
// Nothing here waits on the bus from the calling thread beyond a bound it is given:
// connecting happens on a thread of its own (sessionBusConnectThen), and name requests
// are asynchronous. Without a bus address nothing is registered and nothing is handed
// over.

#include "app/view_mode.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QObject;

extern const char* const desktopFileManagerService;   // "org.freedesktop.FileManager1"
extern const char* const desktopFileManagerPath;      // "/org/freedesktop/FileManager1"
extern const char* const desktopApplicationService;   // "com.larkspine.brondel"
extern const char* const desktopApplicationPath;      // "/com/larkspine/brondel/Application"
extern const char* const desktopApplicationInterface; // "com.larkspine.brondel.Application"

// A local path from what a caller of the file-manager service sends: a file:// URI
// (percent escapes decoded to bytes, so names that are not UTF-8 survive; a host other
// than empty or "localhost" is refused) or an absolute path. Trailing slashes are
// dropped. Nothing for anything else (other schemes, relative paths).
std::optional<std::string> desktopUriToPath(const QString& uri);

// Items grouped by the folder that holds them, folders in the order they first appear
// and items in theirs; each item once.
std::vector<std::pair<std::string, std::vector<std::string>>> desktopItemsByFolder(
    const std::vector<std::string>& items);

// The view mode as it travels between processes: the number `--view` takes (1 icons,
// 2 list, 3 columns, 4 Peek); unknown numbers give list.
int desktopViewNumber(ViewMode mode);
ViewMode desktopViewFromNumber(int number);

// What the bus asks of the running application. Called on the thread of the `owner`
// given to desktopServe (the GUI's main thread). Paths are local paths.
struct DesktopRequests {
    std::function<void(std::vector<std::string> folders)> showFolders;
    std::function<void(std::vector<std::string> items)> showItems;
    std::function<void(std::vector<std::string> items)> showProperties;
    // A second launch's folders (empty: one window on the Computer root).
    std::function<void(std::vector<std::string> folders, ViewMode mode)> open;
};

// How registering went, reported once.
enum class DesktopServed {
    NoBus,      // no address, the bus refused, or it did not answer the name requests
    Ours,       // this process now answers for Brondel (and for the file manager when free)
    Elsewhere,  // another Brondel already holds the name
};

// Registers the two services on the bus named by `address` and returns at once; `done`
// is then called on `owner`'s thread. The requests live as long as `owner`. False when
// `address` is empty.
bool desktopServe(const QString& address, DesktopRequests requests, QObject* owner,
                  std::function<void(DesktopServed)> done = {});

// The hand-over wait of a second launch.
inline constexpr std::chrono::milliseconds kDesktopHandOverWait{1000};

// Asks the Brondel already running on the bus at `address` to open `folders` in `mode`;
// true once it has accepted, false when there is no bus, nobody answers for Brondel, or
// no answer came within `wait`. Needs the process's application object.
bool desktopHandOver(const QString& address, const std::vector<std::string>& folders, ViewMode mode,
                     std::chrono::milliseconds wait = kDesktopHandOverWait);
