#include "actions/file_actions.h"

#include "actions/action_dialogs.h"
#include "actions/workspace.h"
#include "fs/paths.h"
#include "services/app_infos.h"
#include "services/background_work.h"
#include "services/drop_action.h"
#include "fs/file_io.h"
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
#include <QMenu>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <atomic>
#include <cstring>
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

QIcon appIcon(const AppInfo& app)
{
    return app.icon.startsWith(u'/') ? QIcon(app.icon) : QIcon::fromTheme(app.icon);
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

// The applications are looked up and started on a pool of their own: GIO reads its index
// from the disk on first use and after a change. Made on first use, never destroyed.
BackgroundWork& appsWork()
{
    static BackgroundWork* work = new BackgroundWork(1, WorkClass::UserInitiated);
    return *work;
}

// Set once GIO's index has been read: until then, opening a file goes to the desktop.
std::atomic<bool> g_appsRead{false};

QString typeOf(const std::string& path)
{
    return QMimeDatabase().mimeTypeForFile(nameOf(path), QMimeDatabase::MatchExtension).name();
}

QString couldNotStart(const QString& app)
{
    return QObject::tr("“%1” could not be started.").arg(app);
}

// Starts `app` with `path` in the background; an alert on `window` says why it did not.
void launchApp(QPointer<QWidget> window, const AppInfo& app, const std::string& path)
{
    appsWork().submit(nullptr, [window, app, path]() -> std::function<void()> {
        const QString error = AppInfos::launch(app.id, {path});
        if (error.isEmpty())
            return {};
        return [window, app, error] { ActionDialogs::current().alert(window, couldNotStart(app.name), error); };
    });
}

void chooseOther(QWidget* parent, const std::vector<AppInfo>& apps, const QString& type, const std::string& path)
{
    auto* dialog = new QDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QObject::tr("Open “%1” With").arg(nameOf(path)));
    auto* layout = new QVBoxLayout(dialog);
    auto* list = new QListWidget(dialog);
    list->setObjectName(QStringLiteral("applications"));
    for (const AppInfo& app : apps) {
        auto* row = new QListWidgetItem(appIcon(app), app.name, list);
        row->setData(Qt::UserRole, app.id);
    }
    layout->addWidget(list);
    const QMimeType mime = QMimeDatabase().mimeTypeForName(type);
    auto* always = new QCheckBox(QObject::tr("Always open %1 files with it")
                                     .arg(mime.comment().isEmpty() ? type : mime.comment()), dialog);
    always->setObjectName(QStringLiteral("setDefault"));
    layout->addWidget(always);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, dialog);
    layout->addWidget(buttons);
    auto open = [dialog, list, always, type, path] {
        if (QListWidgetItem* row = list->currentItem()) {
            const AppInfo app{row->data(Qt::UserRole).toString(), row->text(), {}, false};
            QPointer<QWidget> window(dialog->parentWidget());
            if (always->isChecked()) {
                // The default first, so that the next Open uses it; then the file.
                appsWork().submit(nullptr, [window, type, id = app.id]() -> std::function<void()> {
                    const QString error = AppInfos::setDefault(type, id);
                    if (error.isEmpty())
                        return {};
                    return [window, error] {
                        ActionDialogs::current().alert(window, QObject::tr("The default application could not be set."), error);
                    };
                });
            }
            launchApp(window, app, path);
        }
        dialog->accept();
    };
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, open);
    QObject::connect(list, &QListWidget::itemActivated, dialog, open);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    dialog->open();
}

void fillApps(QMenu& menu, QWidget* parent, const std::vector<AppInfo>& forType, std::vector<AppInfo> all,
    const QString& type, const std::string& path)
{
    menu.clear();
    QPointer<QWidget> window(parent);
    for (const AppInfo& app : forType)
        QObject::connect(menu.addAction(appIcon(app), app.name), &QAction::triggered, &menu,
            [window, app, path] { launchApp(window, app, path); });
    if (!forType.empty())
        menu.addSeparator();
    QObject::connect(menu.addAction(QObject::tr("Other Application…")), &QAction::triggered, &menu,
        [window, all = std::move(all), type, path] { chooseOther(window, all, type, path); });
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
    appsWork().submit(&menu, [target, window, path]() -> std::function<void()> {
        const QString type = typeOf(path);
        std::vector<AppInfo> forType = AppInfos::forType(type);
        std::vector<AppInfo> all = AppInfos::all();
        g_appsRead = true;
        return [target, window, forType = std::move(forType), all = std::move(all), type, path]() mutable {
            if (target)
                fillApps(*target, window, forType, std::move(all), type, path);
        };
    });
}

void FileActions::warmUp()
{
    if (!g_appsRead)
        appsWork().submit(nullptr, []() -> std::function<void()> {
            AppInfos::forType(QStringLiteral("text/plain")); // reads the whole index
            g_appsRead = true;
            return {};
        });
}

void FileActions::waitForApps()
{
    appsWork().waitForDone();
}

bool FileActions::openDefault(QWidget* parent, const std::string& path)
{
    if (!g_appsRead)
        return false;
    const QString type = typeOf(path);
    if (type == QLatin1String("application/octet-stream"))
        return false; // the name tells nothing: the desktop may look inside
    QPointer<QWidget> window(parent);
    appsWork().submit(nullptr, [window, type, path]() -> std::function<void()> {
        const std::vector<AppInfo> apps = AppInfos::forType(type);
        const QString error = apps.empty() ? QString() : AppInfos::launch(apps.front().id, {path});
        if (!apps.empty() && error.isEmpty())
            return {};
        return [window, type, path, error, app = apps.empty() ? QString() : apps.front().name] {
            const QString title = QObject::tr("\u201c%1\u201d could not be opened.").arg(nameOf(path));
            if (app.isEmpty()) {
                const QMimeType mime = QMimeDatabase().mimeTypeForName(type);
                ActionDialogs::current().alert(window, title,
                    QObject::tr("No application is set up to open this kind of file (%1).")
                        .arg(mime.comment().isEmpty() ? type : mime.comment()));
            } else {
                ActionDialogs::current().alert(window, title, QObject::tr("%1 could not be started.").arg(app) + u' ' + error);
            }
        };
    });
    return true;
}
