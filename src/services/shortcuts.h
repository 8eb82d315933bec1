#pragma once
// Every keyboard shortcut of a browser window, in one table, so that the menus that
// carry the keys and the tool tips that mention them always agree. Keys are written
// with Ctrl; Qt shows them as ⌘ on a Mac.

#include <QKeySequence>
#include <QString>

enum class Shortcut {
    Settings,
    Quit,
    NewWindow,
    NewFolder,
    Open,
    Reveal,
    CopyPath,
    Properties,
    Trash,
    AddToFavorites,
    CloseWindow,
    Copy,
    Cut,
    Paste,
    Undo,
    Redo,
    Rename,
    TrashKey,     // the Delete key, beside Trash's own keys
    DeleteNow,    // deletes for good, after asking
    SelectAll,
    Find,
    AsIcons,
    AsList,
    AsColumns,
    AsPeek,
    SplitRight,
    SplitDown,
    CloseSplit,
    LinkPanes,
    ToggleHidden,
    Refresh,
    Back,
    Forward,
    EnclosingFolder,
    Computer,
    Minimize,
    Preview,
    ClosePreview,
};

QKeySequence shortcutKeys(Shortcut shortcut);

// The keys of the Peek Style menu's items: Ctrl+Alt+1 ... 9, 0, then "-"; none beyond.
QKeySequence shortcutPeekStyle(int index);

// "Label (Ctrl+Shift+W)": a tool tip that names the keys as this platform writes them.
QString shortcutTip(const QString& label, Shortcut shortcut);
