#include "actions/file_actions.h"

#include "actions/action_dialogs.h"
#include "actions/workspace.h"
#include "fs/paths.h"
#include "services/drop_action.h"
#include "fs/file_io.h"
#include "fs/mime_apps_edit.h"
#include "ops/op_queue.h"
#include "services/scan_service.h"
#include "window/brondel_window.h"
#include "window/browser_frame.h"

#include <QAction>
#include <QCheckBox>
#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QListWidget>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

QString decode(const std::string& bytes)
{
    return QFile::decodeName(QByteArray::fromStdString(bytes));
}

QString nameOf(const std::string& path)
{
    return decode(pathLastComponent(path));
}

// What to do when a job of ours ends: the queue's signal names the job only.
class JobEnds : public QObject {
public:
    static JobEnds& of(OpQueue& queue)
    {
        static std::unordered_map<OpQueue*, JobEnds*> watchers; // UI thread only
        JobEnds*& watcher = watchers[&queue];
        if (!watcher) {
            watcher = new JobEnds(queue);
            connect(&queue, &QObject::destroyed, [&queue] { watchers.erase(&queue); });
        }
        return *watcher;
    }
    void add(OpJobId job, std::function<void(const OpResult&)> then) { m_then[job] = std::move(then); }

private:
    explicit JobEnds(OpQueue& queue)
        : QObject(&queue)
    {
        connect(&queue, &OpQueue::jobFinished, this, [this](OpJobId job, const OpResult& result) {
            const auto found = m_then.find(job);
            if (found == m_then.end())
                return;
            auto then = std::move(found->second);
            m_then.erase(found);
            then(result);
        });
        connect(&queue, &OpQueue::undoFinished, this, [](UndoOutcome outcome, const QString& text) {
            if (outcome == UndoOutcome::CannotApply)
                ActionDialogs::current().alert(QApplication::activeWindow(), QObject::tr("“%1” is no longer possible.").arg(text),
                    QObject::tr("The items have changed since. Nothing was changed."));
            else if (outcome == UndoOutcome::Failed)
                ActionDialogs::current().alert(QApplication::activeWindow(), QObject::tr("“%1” did not finish.").arg(text),
                    QObject::tr("Some items could not be put back."));
        });
    }
    std::unordered_map<OpJobId, std::function<void(const OpResult&)>> m_then;
};

QString failureTitle(const OpRequest& request)
{
    switch (request.kind) {
    case OpKind::Rename:
        return QObject::tr("“%1” could not be renamed.").arg(nameOf(request.sources.front()));
    case OpKind::Copy: return QObject::tr("The items could not be copied.");
    case OpKind::Move: return QObject::tr("The items could not be moved.");
    case OpKind::NewFolder: return QObject::tr("The new folder could not be created.");
    case OpKind::Trash: return QObject::tr("The items could not be moved to the Trash.");
    case OpKind::Restore: return QObject::tr("The items could not be put back.");
    case OpKind::Delete: return QObject::tr("The items could not be deleted.");
    }
    return {};
}

// The applications, read once in the background; the types of a name are looked up there
// too (the MIME database reads its files on first use).
// Read on the scan pool, which may still run at exit: allocated once, never destroyed.
std::mutex& g_appsMutex = *new std::mutex;
std::shared_ptr<const DesktopAppIndex>& g_apps = *new std::shared_ptr<const DesktopAppIndex>; // under g_appsMutex

// The index when it has been read, without reading it.
std::shared_ptr<const DesktopAppIndex> appsIndexIfRead()
{
    std::lock_guard lock(g_appsMutex);
    return g_apps;
}

std::shared_ptr<const DesktopAppIndex> appsIndex()
{
    std::lock_guard lock(g_appsMutex);
    if (!g_apps)
        g_apps = std::make_shared<const DesktopAppIndex>(
            desktopAppsLoad(desktopAppDirsFromEnvironment(), QLocale::system().name()));
    return g_apps;
}

QStringList typesOf(const std::string& path)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(nameOf(path), QMimeDatabase::MatchExtension);
    QStringList types{type.name()};
    types << type.allAncestors();
    return types;
}

// Makes `id` the default application of `type` in the user's mimeapps.list, in the
// background; the applications are read again afterwards, so the next Open uses it.
void setDefaultApp(ScanService* work, QPointer<QWidget> window, const QString& type, const QString& id)
{
    if (!work || type.isEmpty())
        return;
    work->submit(nullptr, [window, type, id]() -> std::function<void()> {
        const DesktopAppDirs dirs = desktopAppDirsFromEnvironment();
        const std::string list = QFile::encodeName(dirs.configDirs.value(0)).toStdString() + "/mimeapps.list";
        const int error = mimeAppsSetDefault(list, type.toStdString(), id.toStdString());
        {
            std::lock_guard lock(g_appsMutex);
            g_apps.reset(); // read again on next use
        }
        appsIndex();
        return [window, error] {
            if (error)
                ActionDialogs::current().alert(window, QObject::tr("The default application could not be set."),
                    QString::fromLocal8Bit(std::strerror(error)));
        };
    });
}

void chooseOther(QWidget* parent, ScanService* work, std::shared_ptr<const DesktopAppIndex> apps, const QString& type,
    const std::string& path)
{
    auto* dialog = new QDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QObject::tr("Open “%1” With").arg(nameOf(path)));
    auto* layout = new QVBoxLayout(dialog);
    auto* list = new QListWidget(dialog);
    list->setObjectName(QStringLiteral("applications"));
    std::vector<const DesktopApp*> shown;
    // Pointers into the index itself (a const QHash's [] gives a copy, gone at once).
    for (const QString& id : apps->appOrder)
        if (const auto app = apps->apps.constFind(id); app != apps->apps.constEnd() && !app->noDisplay)
            shown.push_back(&*app);
    std::sort(shown.begin(), shown.end(),
        [](const DesktopApp* a, const DesktopApp* b) { return a->name.localeAwareCompare(b->name) < 0; });
    for (const DesktopApp* app : shown) {
        auto* row = new QListWidgetItem(QIcon::fromTheme(app->icon), app->name, list);
        row->setData(Qt::UserRole, app->id);
    }
    layout->addWidget(list);
    const QMimeType mime = QMimeDatabase().mimeTypeForName(type);
    auto* always = new QCheckBox(QObject::tr("Always open %1 files with it")
                                     .arg(mime.comment().isEmpty() ? type : mime.comment()), dialog);
    always->setObjectName(QStringLiteral("setDefault"));
    layout->addWidget(always);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, dialog);
    layout->addWidget(buttons);
    auto open = [dialog, list, always, work, apps, type, path] {
        if (QListWidgetItem* row = list->currentItem()) {
            const DesktopApp& app = apps->apps[row->data(Qt::UserRole).toString()];
            if (always->isChecked())
                setDefaultApp(work, dialog->parentWidget(), type, app.id);
            if (!FileActions::launch(app, {path}))
                ActionDialogs::current().alert(dialog->parentWidget(), QObject::tr("“%1” could not be started.").arg(app.name), {});
        }
        dialog->accept();
    };
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, open);
    QObject::connect(list, &QListWidget::itemActivated, dialog, open);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    dialog->open();
}

void fillApps(QMenu& menu, QWidget* parent, ScanService* work, std::shared_ptr<const DesktopAppIndex> apps,
    const QStringList& types, const std::string& path)
{
    menu.clear();
    const QStringList ids = desktopAppsFor(*apps, types);
    for (const QString& id : ids) {
        const DesktopApp& app = apps->apps[id];
        QAction* action = menu.addAction(QIcon::fromTheme(app.icon), app.name);
        QPointer<QWidget> window(parent);
        QObject::connect(action, &QAction::triggered, &menu, [app, path, window] {
            if (!FileActions::launch(app, {path}))
                ActionDialogs::current().alert(window, QObject::tr("“%1” could not be started.").arg(app.name), {});
        });
    }
    if (!ids.isEmpty())
        menu.addSeparator();
    QPointer<QWidget> window(parent);
    QObject::connect(menu.addAction(QObject::tr("Other Application…")), &QAction::triggered, &menu,
        [window, work, apps, type = types.value(0), path] { chooseOther(window, work, apps, type, path); });
}

} // namespace

void FileActions::run(const BrowserContext& context, QWidget* parent, const OpRequest& request,
    std::function<void(const OpResult&)> done)
{
    if (!context.ops)
        return;
    const OpJobId job = context.ops->submit(request);
    QPointer<QWidget> window(parent);
    JobEnds::of(*context.ops).add(job, [window, request, done = std::move(done)](const OpResult& result) {
        if (result.status == OpStatus::Failed)
            ActionDialogs::current().alert(window, failureTitle(request),
                result.error ? QString::fromLocal8Bit(std::strerror(result.error)) : QString());
        if (done)
            done(result);
    });
}

void FileActions::deleteForGood(BrondelWindow& pane, std::vector<std::string> paths)
{
    if (paths.empty())
        return;
    const QString question = paths.size() == 1
        ? QObject::tr("Delete “%1” permanently?").arg(nameOf(paths.front()))
        : QObject::tr("Delete %n items permanently?", nullptr, int(paths.size()));
    auto* box = new QMessageBox(QMessageBox::Warning, QObject::tr("Delete Permanently"), question,
        QMessageBox::NoButton, pane.window());
    box->setObjectName(QStringLiteral("deleteForGood"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(QObject::tr("This cannot be undone."));
    QPushButton* remove = box->addButton(QObject::tr("Delete"), QMessageBox::DestructiveRole);
    QPushButton* cancel = box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(cancel); // Return keeps the files
    box->setEscapeButton(cancel);
    const BrowserContext* context = &pane.context();
    QPointer<QWidget> window(pane.window());
    QObject::connect(box, &QMessageBox::buttonClicked, box, [context, window, remove, paths](QAbstractButton* button) {
        if (button != remove)
            return;
        OpRequest request;
        request.kind = OpKind::Delete;
        request.sources = paths;
        run(*context, window, request);
    });
    box->open();
}

void FileActions::cut(const std::vector<std::string>& paths)
{
    if (!paths.empty())
        workspaceCopyItems(paths, ClipboardIntent::Cut);
}

void FileActions::paste(BrondelWindow& pane, const std::string& folder)
{
    const std::optional<ClipboardFiles> files = workspaceClipboardFiles();
    if (!files || folder.empty() || pane.isComputerRoot())
        return;
    OpRequest request;
    request.kind = files->intent == ClipboardIntent::Cut ? OpKind::Move : OpKind::Copy;
    request.sources = files->paths;
    request.targetDir = folder;
    run(pane.context(), pane.window(), request);
    if (files->intent == ClipboardIntent::Cut)
        QGuiApplication::clipboard()->clear(); // what was cut moves once
}

void FileActions::drop(BrondelWindow& pane, std::vector<std::string> paths, const std::string& folder)
{
    if (paths.empty() || folder.empty())
        return;
    const Qt::KeyboardModifiers keys = dropKeys();
    const QPoint at = QCursor::pos();
    QPointer<BrondelWindow> owner(&pane);
    // The devices are asked in the background (a drive may not answer).
    pane.context().scans->submit(&pane, [owner, paths, folder, keys, at]() -> std::function<void()> {
        DropFacts facts = dropFactsOfPaths(paths, folder);
        facts.sameDevice = pathsShareDevice(folder, paths.front());
        return [owner, paths, folder, keys, at, facts] {
            if (!owner)
                return;
            OpRequest request;
            request.sources = paths;
            request.targetDir = folder;
            switch (dropChoose(keys, facts)) {
            case DropChoice::None:
                return;
            case DropChoice::Copy:
                request.kind = OpKind::Copy;
                break;
            case DropChoice::Move:
                request.kind = OpKind::Move;
                break;
            case DropChoice::Ask: {
                auto* menu = new QMenu(owner);
                menu->setAttribute(Qt::WA_DeleteOnClose);
                const BrowserContext* context = &owner->context();
                QPointer<QWidget> window(owner->window());
                for (auto [title, kind] : {std::pair{QObject::tr("Copy Here"), OpKind::Copy},
                         std::pair{QObject::tr("Move Here"), OpKind::Move}}) {
                    QObject::connect(menu->addAction(title), &QAction::triggered, menu, [context, window, request, kind] {
                        OpRequest chosen = request;
                        chosen.kind = kind;
                        run(*context, window, chosen);
                    });
                }
                menu->addSeparator();
                menu->addAction(QObject::tr("Cancel"));
                menu->popup(at);
                return;
            }
            }
            run(owner->context(), owner->window(), request);
        };
    });
}

void FileActions::rename(BrondelWindow& pane, const std::string& path, const std::string& newName)
{
    OpRequest request;
    request.kind = OpKind::Rename;
    request.sources = {path};
    request.name = newName;
    run(pane.context(), pane.window(), request);
}

void FileActions::undo(const BrowserContext& context, QWidget*)
{
    if (context.ops && context.ops->canUndo()) {
        JobEnds::of(*context.ops); // its alerts follow the outcome
        context.ops->undo();
    }
}

void FileActions::redo(const BrowserContext& context, QWidget*)
{
    if (context.ops && context.ops->canRedo()) {
        JobEnds::of(*context.ops);
        context.ops->redo();
    }
}

void FileActions::followUndo(const BrowserContext& context, QAction* undo, QAction* redo)
{
    OpQueue* queue = context.ops;
    auto update = [queue, undo, redo] {
        undo->setEnabled(queue && queue->canUndo());
        redo->setEnabled(queue && queue->canRedo());
        undo->setText(queue && queue->canUndo() ? queue->undoText() : QObject::tr("Undo"));
        redo->setText(queue && queue->canRedo() ? queue->redoText() : QObject::tr("Redo"));
    };
    if (queue)
        QObject::connect(queue, &OpQueue::undoChanged, undo, update);
    update();
}

void FileActions::openWithFill(QMenu& menu, BrondelWindow& pane, const std::string& path)
{
    menu.addAction(QObject::tr("Looking for applications…"))->setEnabled(false);
    QPointer<QMenu> target(&menu);
    QPointer<QWidget> window(pane.window());
    ScanService* work = pane.context().scans;
    work->submit(&menu, [target, window, work, path]() -> std::function<void()> {
        auto apps = appsIndex();
        const QStringList types = typesOf(path);
        return [target, window, work, apps, types, path] {
            if (target)
                fillApps(*target, window, work, apps, types, path);
        };
    });
}

void FileActions::warmUp(const BrowserContext& context)
{
    if (context.scans && !appsIndexIfRead())
        context.scans->submit(nullptr, []() -> std::function<void()> {
            appsIndex();
            return {};
        });
}

bool FileActions::openDefault(QWidget* parent, const std::string& path)
{
    const std::shared_ptr<const DesktopAppIndex> apps = appsIndexIfRead();
    if (!apps)
        return false;
    const QStringList types = typesOf(path);
    if (types.value(0) == QLatin1String("application/octet-stream"))
        return false; // the name tells nothing: the desktop may look inside
    const QStringList ids = desktopAppsFor(*apps, types);
    const QMimeType type = QMimeDatabase().mimeTypeForName(types.value(0));
    if (ids.isEmpty()) {
        ActionDialogs::current().alert(parent, QObject::tr("\u201c%1\u201d could not be opened.").arg(nameOf(path)),
            QObject::tr("No application is set up to open this kind of file (%1).")
                .arg(type.comment().isEmpty() ? type.name() : type.comment()));
        return true;
    }
    const DesktopApp& app = apps->apps[ids.front()];
    if (!launch(app, {path}))
        ActionDialogs::current().alert(parent, QObject::tr("\u201c%1\u201d could not be opened.").arg(nameOf(path)),
            QObject::tr("%1 could not be started.").arg(app.name));
    return true;
}

bool FileActions::launch(const DesktopApp& app, const std::vector<std::string>& paths)
{
    QStringList texts;
    for (const std::string& path : paths)
        texts << decode(path);
    bool started = false;
    for (QStringList command : desktopExecCommands(app, texts)) {
        if (app.terminal)
            command = QStringList{QStringLiteral("x-terminal-emulator"), QStringLiteral("-e")} + command;
        const QString program = command.takeFirst();
        started = QProcess::startDetached(program, command) || started;
    }
    return started;
}
