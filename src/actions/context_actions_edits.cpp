// The favourites, section, colour, recent-folder and sidebar edits of ContextActions.
// Each reads, changes and writes its file on the edit queue through the configuration
// store's own operations, and refreshes the windows when something changed.

#include "actions/action_dialogs.h"
#include "actions/context_actions.h"
#include "actions/workspace.h"
#include "config/config_file.h"
#include "config/palette.h"
#include "config/pinned_file.h"
#include "config/recents.h"
#include "config/sidebar_file.h"
#include "fs/paths.h"
#include "window/brondel_window.h"
#include "window/browser_frame.h"
#include "services/scan_service.h"

#include <QApplication>
#include <QColorDialog>
#include <QFile>
#include <QPointer>


namespace {

constexpr int kColorDebounceMs = 150;

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}


// Typed text as the bytes stored in a file.
std::string typed(const QString& text)
{
    return QFile::encodeName(text).toStdString();
}

std::optional<std::string> askNewSection(QWidget* parent)
{
    auto answer = ctxPrompt(parent, QObject::tr("New Section"),
        QObject::tr("Name for the new favorites section:"), QString());
    if (!answer)
        return std::nullopt;
    return typed(*answer);
}

// The section being coloured from the colour panel, and the generation of the last pick:
// only the refresh scheduled by the last pick of a run goes ahead.
struct ColorDebounce {
    std::optional<std::string> pendingColorSection;
    int64_t generation = 0;
    QPointer<QColorDialog> panel;
};

ColorDebounce& colorDebounce()
{
    static ColorDebounce state;
    return state;
}

// The index of the sidebar file's first entry for `path`, compared after "~" expansion.
std::optional<size_t> sidebarIndexOf(const std::vector<std::string>& paths, const std::string& path)
{
    for (size_t i = 0; i < paths.size(); ++i)
        if (expandTilde(paths[i]) == path)
            return i;
    return std::nullopt;
}

} // namespace


void ContextActions::favAddCurrent(BrondelWindow& pane)
{
    if (pane.isComputerRoot())
        return;
    edit(pane.context(), [path = pane.rootPath()] { return pinnedAdd(path, "Favorites"); });
}

void ContextActions::sectionAddFolders(BrondelWindow& pane, const std::string& section)
{
    QStringList chosen =
        ActionDialogs::current().chooseFolders(pane.window(), QObject::tr("Add to ") + QString::fromStdString(section));
    if (chosen.isEmpty())
        return;
    edit(pane.context(), [chosen, section] {
        bool changed = false;
        for (const QString& folder : chosen)
            changed |= pinnedAdd(pathBytesFromText(folder), section);
        return changed;
    });
}

void ContextActions::sectionRename(BrondelWindow& pane, const std::string& section)
{
    const QString shown = decode(section);
    auto answer = ctxPrompt(pane.window(), QObject::tr("Rename Section"),
        QObject::tr("New name:"), shown);
    if (!answer)
        return;
    // A title left as shown keeps its bytes, which need not be UTF-8; typed text is encoded.
    const std::string to = *answer == shown.trimmed() ? section : typed(*answer);
    edit(pane.context(), [section, to] {
        pinnedRenameSection(section, to);
        return true;
    });
}

void ContextActions::sectionShift(BrondelWindow& pane, const std::string& section, int64_t delta)
{
    edit(pane.context(), [section, delta] {
        pinnedShiftSection(section, delta);
        return true;
    });
}

void ContextActions::sectionNew(BrondelWindow& pane)
{
    auto title = askNewSection(pane.window());
    if (!title)
        return;
    edit(pane.context(), [title = *title] { return pinnedAddSection(title); });
}

void ContextActions::sectionDelete(BrondelWindow& pane, const std::string& section)
{
    edit(pane.context(), [section] { return pinnedRemoveSection(section); });
}

void ContextActions::recentsClearAction(BrondelWindow& pane)
{
    edit(pane.context(), [] {
        recentsClear();
        return true;
    });
}

void ContextActions::favAdd(BrondelWindow& pane, const std::string& path, const std::optional<std::string>& section)
{
    edit(pane.context(), [path, section = section.value_or("Favorites")] { return pinnedAdd(path, section); });
}

void ContextActions::favMove(BrondelWindow& pane, const std::string& path, const std::string& section)
{
    edit(pane.context(), [path, section] {
        pinnedRemove(path);
        pinnedAdd(path, section);
        return true;
    });
}

void ContextActions::favNewSection(BrondelWindow& pane, const std::string& path)
{
    if (auto title = askNewSection(pane.window()))
        favMove(pane, path, *title);
}

void ContextActions::favShift(BrondelWindow& pane, const std::string& path, int64_t delta)
{
    edit(pane.context(), [path, delta] {
        pinnedShift(path, delta);
        return true;
    });
}

void ContextActions::favRemove(BrondelWindow& pane, const std::string& path)
{
    edit(pane.context(), [path] { return pinnedRemove(path); });
}

void ContextActions::favAddPaths(BrondelWindow& pane, std::vector<std::string> paths)
{
    edit(pane.context(), [paths = std::move(paths)] {
        bool changed = false;
        for (const std::string& path : paths)
            if (pathIsFolder(path))
                changed |= pinnedAdd(path, "Favorites");
        return changed;
    });
}

void ContextActions::favRemovePaths(BrondelWindow& pane, std::vector<std::string> paths)
{
    edit(pane.context(), [paths = std::move(paths)] {
        bool changed = false;
        for (const std::string& path : paths)
            changed |= pinnedRemove(path);
        return changed;
    });
}

void ContextActions::sectionColor(BrondelWindow& pane, const std::string& section, std::optional<double> hue)
{
    edit(pane.context(), [section, hue] {
        pinnedSetColor(section, hue);
        return true;
    });
}

void ContextActions::sectionColorCustom(BrondelWindow& pane, const std::string& section)
{
    ColorDebounce& state = colorDebounce();
    state.pendingColorSection = section;
    // One panel for the application, as the desktop's colour panel would be; it stays
    // open while the user tries colours, each of which lands on the section at once.
    if (!state.panel) {
        state.panel = new QColorDialog();
        state.panel->setAttribute(Qt::WA_DeleteOnClose);
        state.panel->setOption(QColorDialog::NoButtons);
        state.panel->setWindowTitle(QObject::tr("Colors"));
    }
    QObject::disconnect(state.panel, &QColorDialog::currentColorChanged, nullptr, nullptr);
    QPointer<BrondelWindow> where(&pane);
    QObject::connect(state.panel, &QColorDialog::currentColorChanged, state.panel, [where](const QColor& color) {
        const auto& section = colorDebounce().pendingColorSection;
        if (where && section)
            colorPicked(*where, *section, color);
    });
    state.panel->show();
    state.panel->raise();
    state.panel->activateWindow();
}

void ContextActions::colorPicked(BrondelWindow& pane, const std::string& section, const QColor& color)
{
    const float hue = color.toRgb().hsvHueF(); // -1 for greys: red, as the wheel starts
    edit(pane.context(), [section, hue = hue < 0 ? 0.0 : double(hue)] {
        pinnedSetColor(section, hue);
        return false; // the refresh below waits for the end of the run
    });
    const int64_t generation = ++colorDebounce().generation;
    QPointer<BrondelWindow> where(&pane);
    pane.context().later(kColorDebounceMs, &pane, [where, generation] {
        if (where && generation == colorDebounce().generation)
            refreshView(*where);
    });
}

void ContextActions::editPalette(BrondelWindow& pane)
{
    QPointer<QWidget> parent(pane.window());
    pane.context().editQueue().submit(qApp, [parent]() -> std::function<void()> {
        pinnedPalette(); // writes the default palette when there is none
        return [parent] { openFile(parent, palettePath()); };
    });
}

void ContextActions::sidebarAddAction(BrondelWindow& pane, const std::string& path)
{
    edit(pane.context(), [path] { return sidebarAdd(path); });
}

void ContextActions::sidebarRemoveAction(BrondelWindow& pane, const std::string& path)
{
    edit(pane.context(), [path] { return sidebarRemove(path); });
}

void ContextActions::sidebarShiftAction(BrondelWindow& pane, const std::string& path, int64_t delta)
{
    edit(pane.context(), [path, delta] {
        sidebarShift(path, delta);
        return true;
    });
}

void ContextActions::sidebarMoveAction(BrondelWindow& pane, const std::string& path, const std::string& target)
{
    edit(pane.context(), [path, target] {
        const std::vector<std::string> paths = sidebarRead().paths;
        auto from = sidebarIndexOf(paths, path);
        auto to = sidebarIndexOf(paths, target);
        if (!from || !to || *from == *to)
            return false;
        // One step at a time, so the rows between keep their order.
        const int64_t step = *to > *from ? 1 : -1;
        for (size_t i = *from; i != *to; i += step)
            sidebarShift(path, step);
        return true;
    });
}

void ContextActions::sidebarRenameAction(BrondelWindow& pane)
{
    // The current title comes from the file, read off this thread; the prompt follows.
    QPointer<BrondelWindow> where(&pane);
    pane.context().editQueue().submit(&pane, [where]() -> std::function<void()> {
        const std::string title = sidebarRead().title;
        return [where, title] {
            if (!where)
                return;
            const QString shown = decode(title);
            auto answer = ctxPrompt(where->window(), QObject::tr("Rename Section"),
                QObject::tr("New name:"), shown);
            if (!answer)
                return;
            const std::string to = *answer == shown.trimmed() ? title : typed(*answer);
            edit(where->context(), [to] {
                sidebarRename(to);
                return true;
            });
        };
    });
}

void ContextActions::sidebarAddFolderAction(BrondelWindow& pane)
{
    QStringList chosen = ActionDialogs::current().chooseFolders(pane.window(), QObject::tr("Add to Sidebar"));
    if (chosen.isEmpty())
        return;
    edit(pane.context(), [chosen] {
        bool changed = false;
        for (const QString& folder : chosen)
            changed |= sidebarAdd(pathBytesFromText(folder));
        return changed;
    });
}
