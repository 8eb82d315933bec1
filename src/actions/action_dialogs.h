#pragma once
// The modal dialogs of the actions: the alert of a failed move to the Trash, the
// one-line name prompt and the open panel for folders. Tests replace them with
// stand-ins, since a modal dialog would wait for a user.

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QDialog;
class QLabel;
class QVBoxLayout;
class QWidget;

// The dialogs in force (the real ones unless a test replaced them).
struct ActionDialogs {
    // A warning alert: `text` as its message, `detail` below it.
    std::function<void(QWidget* parent, const QString& text, const QString& detail)> alert;
    // A one-line prompt with OK and Cancel: the answer trimmed of white space, or nothing
    // when cancelled or empty.
    std::function<std::optional<QString>(QWidget* parent, const QString& title, const QString& message,
        const QString& value)>
        prompt;
    // Folders chosen in an open panel, several at once; `accept` titles its button.
    std::function<QStringList(QWidget* parent, const QString& accept)> chooseFolders;

    static ActionDialogs& current(); // main thread only
};

// The one-line name prompt of the actions ("New Section", "Rename Section"): `title` in
// bold, `message` below, a field holding `value`, then OK and Cancel. The answer trimmed
// of white space, or nothing when cancelled or empty.
std::optional<QString> ctxPrompt(QWidget* parent, const QString& title, const QString& message, const QString& value);

// The foot of a management window: a hidden error line (returned, for the window to
// fill) above a Close button.
QLabel* dialogFooterAdd(QDialog& dialog, QVBoxLayout& layout);
