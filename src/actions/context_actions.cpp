#include "actions/context_actions.h"

#include "actions/action_dialogs.h"
#include "actions/file_actions.h"
#include "actions/workspace.h"
#include "config/config_file.h"
#include "config/pinned_file.h"
#include "config/recents.h"
#include "fs/file_io.h"
#include "fs/paths.h"
#include "fs/trash_op.h"
#include "ops/op_types.h"
#include "window/brondel_window.h"
#include "window/browser_frame.h"
#include "services/scan_service.h"

#include <QApplication>
#include <QFile>
#include <QMimeDatabase>
#include <QPointer>


namespace {

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

// One alert for all the items that stayed where they were.
void trashAlert(QWidget* parent, const std::vector<OpItemError>& failed)
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

BrowserFrame* ContextActions::window()
{
    if (auto* active = qobject_cast<BrowserFrame*>(QApplication::activeWindow()))
        return active;
    const std::vector<BrowserFrame*> frames = browserFrames();
    return frames.empty() ? nullptr : frames.front();
}

std::vector<std::string> ContextActions::selectedPaths(const BrowserFrame& frame)
{
    return frame.routed() ? frame.routed()->selectedPaths() : std::vector<std::string>();
}

void ContextActions::open(BrondelWindow& pane, const DirNode& node)
{
    openPath(pane, node.path, node.isDir ? PathKind::Folder : PathKind::File);
}

void ContextActions::openPath(BrondelWindow& pane, const std::string& path, PathKind kind)
{
    if (kind == PathKind::Folder) {
        pane.openFolder(path);
        return;
    }
    if (kind == PathKind::File) {
        openFile(pane.window(), path);
        return;
    }
    pane.context().scans->submit(&pane, [&pane, path]() -> std::function<void()> {
        const bool isDir = pathIsFolder(path);
        return [&pane, path, isDir] { openPath(pane, path, isDir ? PathKind::Folder : PathKind::File); };
    });
}

void ContextActions::openFile(QWidget* parent, const std::string& path)
{
    // Our own look-up first: it can tell that nothing opens the file, which the desktop's
    // opener only finds out after it has been started.
    if (FileActions::openDefault(parent, path))
        return;
    if (workspaceOpen(path))
        return;
    // The type is told by the name alone: no disk on this thread.
    const QString name = decode(pathLastComponent(path));
    const QMimeType type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    ActionDialogs::current().alert(parent, QObject::tr("\u201c%1\u201d could not be opened.").arg(name),
        QObject::tr("No application is set up to open this kind of file (%1).")
            .arg(type.comment().isEmpty() ? type.name() : type.comment()));
}

void ContextActions::openNewWindow(BrondelWindow& pane, const std::string& path)
{
    if (pane.context().openWindow)
        pane.context().openWindow(path, {});
}

QString ContextActions::revealTitle()
{
    return workspaceRevealTitle();
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
    // A job of the file operations, so that Undo puts the items back; what stays where it
    // was is listed in one alert at the end instead of a question per item.
    OpRequest request;
    request.kind = OpKind::Trash;
    request.sources = std::move(paths);
    request.onError = OpOnError::Skip;
    const BrowserContext* context = &pane.context();
    QPointer<QWidget> window(pane.window());
    FileActions::run(*context, window, request, [context, window, sources = request.sources](const OpResult& result) {
        // The refresh goes first, so the windows are up to date behind the alert. What
        // left its place (a cancelled job may have left some) leaves the favourites.
        edit(*context, [sources] {
            for (const auto& path : sources)
                if (!pathTaken(path))
                    pinnedRemove(path);
            return true;
        });
        if (!result.failed.empty())
            trashAlert(window, result.failed);
    });
}

void ContextActions::newFolder(BrondelWindow& pane)
{
    if (pane.isComputerRoot())
        return;
    OpRequest request;
    request.kind = OpKind::NewFolder;
    request.targetDir = pane.rootPath(); // no name: the first free "untitled folder"
    QPointer<BrondelWindow> owner(&pane);
    // A failure is told by the job's own alert.
    FileActions::run(pane.context(), pane.window(), request, [owner](const OpResult& result) {
        if (!owner || result.created.empty())
            return;
        owner->renameAfterLoad(result.created.front()); // named at once, in place
        refreshView(*owner);
    });
}

void ContextActions::refreshView(BrondelWindow& pane)
{
    if (auto* frame = qobject_cast<BrowserFrame*>(pane.window()))
        frame->refresh();
    else
        pane.refresh();
}

