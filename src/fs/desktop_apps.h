#pragma once
// The applications installed for the desktop (freedesktop desktop entries) and which of
// them open a given file type. The readers are pure functions over text, so every rule
// is tested with canned files; desktopAppsLoad reads the real folders (through the
// system-call seam) and belongs on a background thread.

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct DesktopApp {
    QString id;   // "org.example.Editor.desktop"; a file in a subfolder joins with '-'
    QString name; // in the user's language when the entry has it
    QString exec; // the Exec value, string escapes already undone
    QString icon;
    QString path; // the file it was read from (for %k)
    QStringList mimeTypes;
    bool terminal = false;
    bool noDisplay = false; // still opens files, but is not offered in the chooser
    int dirRank = 0;        // which data folder it came from (0: the most important)
};

// One entry file. Nothing for a file that is not an application, is Hidden, has no Exec
// or no Name. `locale` is the user's language ("de_DE.UTF-8@euro" or "de_DE"): Name[de_DE]
// is preferred to Name[de], which is preferred to Name.
std::optional<DesktopApp> desktopEntryParse(std::string_view text, const QString& id, const QString& locale);

// One mimeapps.list.
struct MimeAppsList {
    QHash<QString, QStringList> defaults;
    QHash<QString, QStringList> added;
    QHash<QString, QStringList> removed;
};
MimeAppsList mimeAppsParse(std::string_view text);

// One mimeinfo.cache: type -> ids.
QHash<QString, QStringList> mimeInfoCacheParse(std::string_view text);

// Everything the association rules need, most important source first.
struct DesktopAppIndex {
    QHash<QString, DesktopApp> apps;                 // by id; the first folder holding an id wins
    QStringList appOrder;                            // ids in the order they were found
    std::vector<MimeAppsList> lists;                 // mimeapps.list files by precedence
    // mimeinfo.cache of each data folder, by the same rank as DesktopApp::dirRank.
    std::vector<QHash<QString, QStringList>> caches;
};

// The applications for a file whose type is types[0] (its ancestors follow, nearest
// first): the default first, then the added associations, then the installed ones
// folder by folder (a folder's cache, then its entries' own types), the more important
// folder first.
// A removed association hides an application that a less important source offers.
// Only installed applications are listed, each once.
QStringList desktopAppsFor(const DesktopAppIndex& index, const QStringList& types);

// The command lines that open `paths` (absolute, as text) with `app`: one when the Exec
// takes a list (%F %U) or no file at all, one per file for %f or %u. Quoting follows the
// entry format: double quotes group, and \" \` \$ \\ inside them stand for the character.
// %i gives "--icon <icon>", %c the name, %k the entry's file, %% a percent sign; the
// deprecated codes are dropped. Empty when the Exec cannot be split (an open quote).
std::vector<QStringList> desktopExecCommands(const DesktopApp& app, const QStringList& paths);

// Where entries and association files live: data folders (their "applications"
// subfolder holds entries, mimeapps.list and mimeinfo.cache) and config folders (their
// mimeapps.list), most important first, from the XDG variables' values.
struct DesktopAppDirs {
    QStringList configDirs;
    QStringList dataDirs;
};
DesktopAppDirs desktopAppDirsFrom(const QString& home, const QString& configHome, const QString& configDirs,
                                  const QString& dataHome, const QString& dataDirs);
DesktopAppDirs desktopAppDirsFromEnvironment();

// Reads every entry and association file below `dirs`.
DesktopAppIndex desktopAppsLoad(const DesktopAppDirs& dirs, const QString& locale);
