#include "actions/context_actions.h"

#include "actions/action_dialogs.h"
#include "actions/workspace.h"
#include "config/config_file.h"
#include "config/pinned_file.h"
#include "config/recents.h"
#include "fs/file_io.h"
#include "fs/sys_calls.h"
#include "fs/trash_op.h"
#include "window/brondel_window.h"
#include "window/browser_frame.h"
#include "window/scan_service.h"

#include <QApplication>
#include <QFile>
#include <QPointer>

#include <cerrno>
#include <dirent.h>

namespace {

constexpr int64_t kNewFolderTries = 10000;

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

struct TrashFailure {
    std::string path;
    int error = 0;
};

// One alert for all the items that stayed where they were.
void trashAlert(QWidget* parent, const std::vector<TrashFailure>& failed)
{
    QStringList lines;
    for (const auto& failure : failed)
        lines << (failed.size() == 1
                ? decode(failure.path)
                : decode(failure.path) + QStringLiteral(": ") + QString::fromStdString(TrashOp::describe(failure.error)));
    ActionDialogs::current().alert(parent, QString::fromStdString(TrashOp::describe(failed.front().error)),
        lines.join(QLatin1Char('\n')));
}

} // namespace

// The bytes of a path the folder chooser gives as text. A name that is not UTF-8 does not
// survive the trip through QString, so a component that does not exist as encoded is
// looked up in its folder by the text it decodes to. Touches the disk: edit queue only.
std::string actionChosenPathBytes(const QString& chosen)
{
    const std::string encoded = QFile::encodeName(chosen).toStdString();
    struct stat st;
    if (sysCalls().stat(encoded.c_str(), &st) == 0 || !chosen.startsWith(QLatin1Char('/')))
        return encoded;
    std::string path;
    for (const QString& part : chosen.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        std::string next = path + "/" + QFile::encodeName(part).toStdString();
        if (sysCalls().stat(next.c_str(), &st) != 0) {
            DIR* dir = ::opendir(path.empty() ? "/" : path.c_str());
            if (!dir)
                return encoded;
            next.clear();
            while (const dirent* entry = ::readdir(dir))
                if (QFile::decodeName(entry->d_name) == part) {
                    next = path + "/" + entry->d_name;
                    break;
                }
            ::closedir(dir);
            if (next.empty())
                return encoded;
        }
        path = std::move(next);
    }
    return path.empty() ? encoded : path;
}

void actionNoticesShow(QWidget* parent, const std::vector<std::string>& notices)
{
    QStringList lines;
    for (const std::string& notice : notices)
        lines << decode(notice);
    const QString first = lines.takeFirst();
    ActionDialogs::current().alert(parent, first, lines.join(QLatin1Char('\n')));
}

void ContextActions::edit(const BrowserContext& context, std::function<bool()> change)
{
    context.editQueue().submit(qApp, [change = std::move(change)]() -> std::function<void()> {
        const bool changed = change();
        // What the configuration files had to say about this edit: a backup kept, a file
        // left alone, a folder refused.
        std::vector<std::string> notices = configNoticesTake();
        return [changed, notices] {
            if (changed)
                brondelRefreshAll();
            if (!notices.empty())
                actionNoticesShow(QApplication::activeWindow(), notices);
        };
    });
}

void ContextActions::open(BrondelWindow& pane, const DirNode& node)
{
    if (node.isDir)
        pane.openFolder(node.path);
    else
        workspaceOpen(node.path);
}

void ContextActions::reveal(BrondelWindow& pane, const std::string& path)
{
    auto openWindow = pane.context().openWindow;
    workspaceReveal(path, [openWindow, path] {
        if (openWindow)
            openWindow(pathParent(path), path);
    });
}

void ContextActions::copyPath(const std::string& path)
{
    workspaceCopyPath(path);
}

void ContextActions::trash(BrondelWindow& pane, std::vector<std::string> paths)
{
    if (paths.empty())
        return;
    const BrowserContext* context = &pane.context();
    QPointer<QWidget> window(pane.window());
    context->scans->submit(qApp, [context, window, paths = std::move(paths)]() -> std::function<void()> {
        std::vector<std::string> trashed;
        std::vector<TrashFailure> failed;
        for (const auto& path : paths) {
            TrashOp::Outcome outcome = TrashOp::trash(path);
            if (outcome)
                trashed.push_back(path);
            else
                failed.push_back({path, outcome.error});
        }
        return [context, window, trashed, failed] {
            // The refresh goes first, so the windows are up to date behind the alert.
            if (!trashed.empty())
                edit(*context, [trashed] {
                    for (const auto& path : trashed)
                        pinnedRemove(path);
                    return true;
                });
            if (!failed.empty())
                trashAlert(window, failed);
        };
    });
}

std::string newFolderName(int64_t number)
{
    std::string name = "untitled folder";
    return number <= 1 ? name : name + " " + std::to_string(number);
}

std::optional<std::string> newFolderCreate(const std::string& folder)
{
    // mkdir itself decides which name is free, so two quick requests never collide.
    for (int64_t number = 1; number <= kNewFolderTries; ++number) {
        std::string path = folder + (folder.ends_with('/') ? "" : "/") + newFolderName(number);
        int result;
        do
            result = sysCalls().mkdir(path.c_str(), 0777);
        while (result != 0 && errno == EINTR);
        if (result == 0)
            return path;
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

void ContextActions::newFolder(BrondelWindow& pane)
{
    if (pane.isComputerRoot())
        return;
    const std::string folder = pane.rootPath();
    pane.context().scans->submit(&pane, [&pane, folder]() -> std::function<void()> {
        const bool made = newFolderCreate(folder).has_value();
        return [&pane, made] {
            if (made)
                refreshView(pane);
        };
    });
}

void ContextActions::refreshView(BrondelWindow& pane)
{
    if (auto* frame = qobject_cast<BrowserFrame*>(pane.window()))
        frame->refresh();
    else
        pane.refresh();
}

void ContextActions::favAddCurrent(BrondelWindow& pane)
{
    if (pane.isComputerRoot())
        return;
    edit(pane.context(), [path = pane.rootPath()] { return pinnedAdd(path, "Favorites"); });
}

void ContextActions::sectionAddFolders(BrondelWindow& pane, const std::string& section)
{
    QStringList chosen =
        ActionDialogs::current().chooseFolders(pane.window(), QStringLiteral("Add to ") + QString::fromStdString(section));
    if (chosen.isEmpty())
        return;
    edit(pane.context(), [chosen, section] {
        bool changed = false;
        for (const QString& folder : chosen)
            changed |= pinnedAdd(actionChosenPathBytes(folder), section);
        return changed;
    });
}

void ContextActions::sectionRename(BrondelWindow& pane, const std::string& section)
{
    const QString shown = decode(section);
    auto answer = ActionDialogs::current().prompt(pane.window(), QStringLiteral("Rename Section"),
        QStringLiteral("New name:"), shown);
    if (!answer)
        return;
    // A title left as shown keeps its bytes, which need not be UTF-8; typed text is encoded.
    const std::string to = *answer == shown.trimmed() ? section : QFile::encodeName(*answer).toStdString();
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
    auto answer = ActionDialogs::current().prompt(pane.window(), QStringLiteral("New Section"),
        QStringLiteral("Name for the new favorites section:"), QString());
    if (!answer)
        return;
    edit(pane.context(), [title = QFile::encodeName(*answer).toStdString()] { return pinnedAddSection(title); });
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
