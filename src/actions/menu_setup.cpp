#include "actions/menu_setup.h"
#include "actions/file_actions.h"

#include "services/view_modes.h"
#include "actions/context_actions.h"
#include "actions/context_menu.h"
#include "actions/management_windows.h"
#include "actions/properties_window.h"
#include "actions/settings_actions.h"
#include "actions/workspace.h"
#include "config/peek_order.h"
#include "config/settings_file.h"
#include "views/content_view.h"
#include "window/browser_frame.h"
#include "window/browser_toolbar.h"
#include "services/scan_service.h"
#include "services/shortcuts.h"
#include "window/sidebar_view.h"
#include "services/theme_icons.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QActionGroup>
#include <QApplication>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QToolButton>

#include <optional>

namespace {

constexpr const char* kPeekMenuName = "peekStyleMenu";

// Keys a text field uses for editing go to the field, not to the window's shortcuts
// that share them: Ctrl+Backspace deletes a word in a search field and must not move
// the selected files to the Trash, Ctrl+C and Ctrl+A copy and select its text.
class TextFieldKeys : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::ShortcutOverride || !isTextField(watched))
            return false;
        auto* key = static_cast<QKeyEvent*>(event);
        for (QKeySequence::StandardKey editing : {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste,
                 QKeySequence::SelectAll, QKeySequence::Undo, QKeySequence::Redo, QKeySequence::DeleteStartOfWord,
                 QKeySequence::DeleteEndOfWord, QKeySequence::MoveToNextWord, QKeySequence::MoveToPreviousWord,
                 QKeySequence::SelectNextWord, QKeySequence::SelectPreviousWord, QKeySequence::Backspace,
                 QKeySequence::Delete})
            if (key->matches(editing)) {
                event->accept();
                return true;
            }
        return false;
    }

private:
    static bool isTextField(QObject* object)
    {
        if (auto* line = qobject_cast<QLineEdit*>(object))
            return !line->isReadOnly();
        return qobject_cast<QTextEdit*>(object) || qobject_cast<QPlainTextEdit*>(object)
            || qobject_cast<QAbstractSpinBox*>(object);
    }
};

void textFieldKeysInstall()
{
    static TextFieldKeys* filter = nullptr;
    if (filter)
        return;
    filter = new TextFieldKeys(qApp);
    qApp->installEventFilter(filter);
}

template <typename Slot>
QAction* item(QMenu* menu, const QString& title, std::optional<Shortcut> keys, const char* symbol,
    BrowserFrame* frame, Slot slot)
{
    QAction* action = menu->addAction(title);
    if (keys) {
        action->setShortcut(shortcutKeys(*keys));
        action->setShortcutContext(Qt::WindowShortcut);
    }
    if (symbol)
        action->setIcon(iconSymbol(symbol));
    QObject::connect(action, &QAction::triggered, frame, slot);
    return action;
}

// A submenu refilled from the settings each time it opens, so its check marks are
// current whichever window changed them.
QMenu* settingsMenu(QMenu* parent, const QString& title, const char* symbol, BrowserFrame* frame,
    void (*fill)(QMenu&, const BrowserContext&))
{
    QMenu* menu = parent ? parent->addMenu(iconSymbol(symbol), title) : new QMenu(title, frame);
    QObject::connect(menu, &QMenu::aboutToShow, menu, [menu, frame, fill] { fill(*menu, frame->context()); });
    fill(*menu, frame->context());
    return menu;
}

// What an item of the File menu acts on: the selection of the routed pane, or else the
// pane's own folder (none on the Computer root).
std::vector<std::string> targets(const BrowserFrame* frame)
{
    std::vector<std::string> paths = ContextActions::selectedPaths(*frame);
    if (paths.empty() && frame->routed() && !frame->routed()->isComputerRoot())
        paths.push_back(frame->routed()->rootPath());
    return paths;
}

void selectAll(BrowserFrame* frame)
{
    if (auto* view = qobject_cast<QAbstractItemView*>(contentViewFocus(frame->routed()->contentView())))
        view->selectAll();
}

void copySelection(BrowserFrame* frame)
{
    const std::vector<std::string> paths = ContextActions::selectedPaths(*frame);
    if (!paths.empty())
        workspaceCopyItems(paths);
}

void pickPeekStyle(BrowserFrame* frame, const std::string& title)
{
    frame->switchMode(ViewMode::Peek);
    frame->context().editQueue().submit(qApp, [title]() -> std::function<void()> {
        peekStyleSetCurrent(title);
        return [] {
            MenuSetup::refreshPeekStyle();
            brondelRefreshAll();
        };
    });
}

void peekStyleFill(QMenu* menu, BrowserFrame* frame, const std::vector<const LabVariant*>& styles,
    const std::optional<std::string>& current)
{
    qDeleteAll(menu->findChildren<QActionGroup*>(Qt::FindDirectChildrenOnly));
    menu->clear();
    auto* group = new QActionGroup(menu);
    group->setExclusive(true);
    for (size_t i = 0; i < styles.size(); ++i) {
        const LabVariant* style = styles[i];
        QAction* action = item(menu, menuTitleEscape(QString::fromStdString(style->title())), std::nullopt, nullptr,
            frame, [frame, title = style->title()] { pickPeekStyle(frame, title); });
        action->setShortcut(shortcutPeekStyle(int(i)));
        action->setShortcutContext(Qt::WindowShortcut);
        action->setToolTip(QString::fromStdString(style->blurb()));
        action->setCheckable(true);
        action->setChecked(current && *current == style->title());
        group->addAction(action);
    }
}

void fileMenu(QMenuBar* bar, BrowserFrame* frame)
{
    QMenu* file = bar->addMenu(QObject::tr("&File"));
    item(file, QObject::tr("New Window"), Shortcut::NewWindow, "macwindow.badge.plus", frame,
        &BrowserFrame::newWindowRequested);
    file->addSeparator();
    item(file, QObject::tr("New Folder"), Shortcut::NewFolder, "folder.badge.plus", frame,
        [frame] { ContextActions::newFolder(*frame->routed()); });
    item(file, QObject::tr("Open"), Shortcut::Open, "arrow.up.forward.app", frame, [frame] {
        for (const std::string& path : ContextActions::selectedPaths(*frame))
            ContextActions::openPath(*frame->routed(), path, PathKind::Unknown);
    });
    // Reveal shows the same keys as Refresh, which owns them: two window shortcuts on
    // one key would both be dead (Qt calls that ambiguous).
    QAction* reveal = item(file, ContextActions::revealTitle(), Shortcut::Reveal, "folder", frame, [frame] {
        const std::vector<std::string> paths = targets(frame);
        if (!paths.empty())
            ContextActions::reveal(*frame->routed(), paths.front());
    });
    reveal->setShortcutContext(Qt::WidgetShortcut);
    item(file, QObject::tr("Copy Path"), Shortcut::CopyPath, "doc.on.doc", frame, [frame] {
        std::string joined;
        for (const std::string& path : targets(frame))
            joined += (joined.empty() ? "" : "\n") + path;
        if (!joined.empty())
            ContextActions::copyPath(joined);
    });
    file->addAction(frame->previewAction()); // the window's own action: Space stays one shortcut
    item(file, QObject::tr("Properties\u2026"), Shortcut::Properties, "info.circle", frame, [frame] {
        propertiesShow(targets(frame), frame->context(), frame);
    });
    QAction* trash = item(file, QObject::tr("Move to Trash"), Shortcut::Trash, "trash", frame, &BrowserFrame::trashSelected);
    trash->setShortcuts({shortcutKeys(Shortcut::Trash), shortcutKeys(Shortcut::TrashKey)});
    item(file, QObject::tr("Delete Permanently\u2026"), Shortcut::DeleteNow, "trash.slash", frame, [frame] {
        if (frame->routed())
            FileActions::deleteForGood(*frame->routed(), ContextActions::selectedPaths(*frame));
    });
    file->addSeparator();
    item(file, QObject::tr("Add to Favorites"), Shortcut::AddToFavorites, "star", frame,
        [frame] { ContextActions::favAddPaths(*frame->routed(), targets(frame)); });
    item(file, QObject::tr("Remove from Favorites"), std::nullopt, "star.slash", frame,
        [frame] { ContextActions::favRemovePaths(*frame->routed(), targets(frame)); });
    file->addSeparator();
    item(file, QObject::tr("Close Window"), Shortcut::CloseWindow, "xmark.circle.fill", frame,
        [frame] { frame->close(); });
}

void viewMenu(QMenuBar* bar, BrowserFrame* frame)
{
    QMenu* view = bar->addMenu(QObject::tr("&View"));
    auto* modeGroup = new QActionGroup(view);
    for (const ViewModeItem& entry : viewModeItems()) {
        const ViewMode chosen = entry.mode;
        QAction* mode = item(view, viewModeMenuTitle(entry), entry.key, entry.symbol, frame,
            [frame, chosen] { frame->switchMode(chosen); });
        mode->setCheckable(true);
        mode->setData(int(chosen));
        modeGroup->addAction(mode);
    }
    QObject::connect(view, &QMenu::aboutToShow, modeGroup, [modeGroup, frame] {
        for (QAction* mode : modeGroup->actions())
            mode->setChecked(mode->data().toInt() == int(frame->routed()->currentMode()));
    });
    item(view, QObject::tr("Split View Right"), Shortcut::SplitRight, "rectangle.split.2x1", frame,
        &BrowserFrame::addPane);
    item(view, QObject::tr("Split View Down"), Shortcut::SplitDown, "rectangle.split.1x2", frame,
        &BrowserFrame::splitPaneDown);
    item(view, QObject::tr("Close Split"), Shortcut::CloseSplit, "xmark.circle.fill", frame,
        &BrowserFrame::closeActivePane);
    item(view, QObject::tr("Link Panes (Cable)"), Shortcut::LinkPanes, "cable.connector", frame,
        &BrowserFrame::linkToggleActive);
    QMenu* peek = view->addMenu(iconSymbol("square.stack"), QObject::tr("Peek Style"));
    peek->setObjectName(QLatin1String(kPeekMenuName));
    peek->setToolTipsVisible(true);
    view->addSeparator();
    QAction* hidden = item(view, QObject::tr("Show Hidden Files"), Shortcut::ToggleHidden, "eye", frame,
        [frame] { SettingsActions::toggleHidden(frame->context()); });
    hidden->setCheckable(true);
    QObject::connect(view, &QMenu::aboutToShow, hidden, [hidden] { hidden->setChecked(Settings::current().showHidden); });
    hidden->setChecked(Settings::current().showHidden);
    settingsMenu(view, QObject::tr("Sort By"), "arrow.up.arrow.down", frame, SettingsActions::sortMenuFill);
    settingsMenu(view, QObject::tr("Show Info"), "info.circle", frame, SettingsActions::infoMenuFill);
    view->addSeparator();
    item(view, QObject::tr("Refresh"), Shortcut::Refresh, "arrow.clockwise", frame, &BrowserFrame::refresh);
}

void goMenu(QMenuBar* bar, BrowserFrame* frame)
{
    QMenu* go = bar->addMenu(QObject::tr("&Go"));
    QAction* back = item(go, QObject::tr("Back"), Shortcut::Back, "chevron.left", frame, &BrowserFrame::goBack);
    QAction* forward =
        item(go, QObject::tr("Forward"), Shortcut::Forward, "chevron.right", frame, &BrowserFrame::goForward);
    auto sync = [back, forward](bool canGoBack, bool canGoForward) {
        back->setEnabled(canGoBack);
        forward->setEnabled(canGoForward);
    };
    QObject::connect(frame, &BrowserFrame::historyChanged, back, sync);
    sync(!frame->routed()->navHistory().empty(), !frame->routed()->forwardHistory().empty());
    item(go, QObject::tr("Enclosing Folder"), Shortcut::EnclosingFolder, "arrow.up", frame, &BrowserFrame::goUp);
    item(go, QObject::tr("Computer"), Shortcut::Computer, "desktopcomputer", frame, &BrowserFrame::goComputer);
}

void sidebarMenus(BrowserFrame* frame)
{
    SidebarView* sidebar = frame->sidebar();
    sidebar->setMenuFill([frame](QMenu& menu, const std::string& path, SidebarRowKind kind) {
        sidebarMenuFill(menu, *frame->routed(), path, kind);
    });
    QObject::connect(sidebar, &SidebarView::rowMoved, frame, [frame](const std::string& path, const std::string& target) {
        ContextActions::sidebarMoveAction(*frame->routed(), path, target);
    });
}

} // namespace

void MenuSetup::install(BrowserFrame* frame)
{
    QMenuBar* bar = frame->menuBar();
    bar->clear();
    bar->setAccessibleName(QObject::tr("Menu bar"));
    // Qt's own button for the menus that do not fit.
    if (auto* more = bar->findChild<QToolButton*>(QStringLiteral("qt_menubar_ext_button"))) {
        more->setAccessibleName(QObject::tr("More menus"));
        more->setAccessibleDescription(QObject::tr("Shows the menus that do not fit"));
    }

    QMenu* app = bar->addMenu(QObject::tr("&Brondel"));
    item(app, QObject::tr("About Brondel"), std::nullopt, "info.circle", frame, [frame] {
        QMessageBox::about(frame, QObject::tr("About Brondel"), QObject::tr("Brondel \u2014 native file manager"));
    })->setMenuRole(QAction::AboutRole);
    app->addSeparator();
    item(app, QObject::tr("Settings\u2026"), Shortcut::Settings, "gearshape", frame,
        [frame] { settingsWindowShow(frame, frame->context()); })
        ->setMenuRole(QAction::PreferencesRole);
    item(app, QObject::tr("Manage Favorites\u2026"), std::nullopt, "star", frame,
        [frame] { favoritesManagerShow(frame, frame->context()); });
    app->addSeparator();
    item(app, QObject::tr("Quit Brondel"), Shortcut::Quit, "power", frame, [] { QApplication::closeAllWindows(); })
        ->setMenuRole(QAction::QuitRole);

    fileMenu(bar, frame);

    QMenu* edit = bar->addMenu(QObject::tr("&Edit"));
    QAction* undo = item(edit, QObject::tr("Undo"), Shortcut::Undo, "arrow.uturn.backward", frame,
        [frame] { FileActions::undo(frame->context(), frame); });
    QAction* redo = item(edit, QObject::tr("Redo"), Shortcut::Redo, "arrow.uturn.forward", frame,
        [frame] { FileActions::redo(frame->context(), frame); });
    FileActions::followUndo(frame->context(), undo, redo);
    edit->addSeparator();
    item(edit, QObject::tr("Cut"), Shortcut::Cut, "scissors", frame, [frame] { FileActions::cut(ContextActions::selectedPaths(*frame)); });
    item(edit, QObject::tr("Copy"), Shortcut::Copy, "doc.on.doc", frame, [frame] { copySelection(frame); });
    item(edit, QObject::tr("Paste"), Shortcut::Paste, "doc.on.clipboard", frame, [frame] {
        if (frame->routed() && !frame->routed()->isComputerRoot())
            FileActions::paste(*frame->routed(), frame->routed()->rootPath());
    });
    item(edit, QObject::tr("Rename…"), Shortcut::Rename, "pencil", frame,
        [frame] { contentViewRename(frame->routed()->contentView()); });
    item(edit, QObject::tr("Select All"), Shortcut::SelectAll, "checkmark.square", frame, [frame] { selectAll(frame); });
    edit->addSeparator();
    frame->findAction()->setIcon(iconSymbol("magnifyingglass"));
    edit->addAction(frame->findAction()); // the window's own action: one shortcut for Ctrl+F

    viewMenu(bar, frame);
    frame->toolbar()->setItemMenu(
        "info", settingsMenu(nullptr, QObject::tr("Show Info"), "info.circle", frame, SettingsActions::infoMenuFill));
    goMenu(bar, frame);

    QMenu* window = bar->addMenu(QObject::tr("&Window"));
    item(window, QObject::tr("Minimize"), Shortcut::Minimize, "minus.square", frame,
        [frame] { frame->showMinimized(); });
    item(window, QObject::tr("Zoom"), std::nullopt, "plus.square", frame,
        [frame] { frame->isMaximized() ? frame->showNormal() : frame->showMaximized(); });

    sidebarMenus(frame);
    FileActions::warmUp();
    textFieldKeysInstall();
    refreshPeekStyle();
}

void MenuSetup::refreshPeekStyle()
{
    BrowserFrame* any = ContextActions::window();
    if (!any)
        return;
    // The order file and the remembered style are read off the UI thread.
    any->context().editQueue().submit(qApp, []() -> std::function<void()> {
        std::vector<const LabVariant*> styles = peekOrderedTypes();
        std::optional<std::string> current = peekStyleCurrent();
        return [styles, current] {
            for (BrowserFrame* frame : browserFrames())
                if (auto* menu = frame->menuBar()->findChild<QMenu*>(QLatin1String(kPeekMenuName)))
                    peekStyleFill(menu, frame, styles, current);
        };
    });
}
