// The menu bar: every menu, item, separator and key in order; the items act on the
// focused pane (view modes, Edit's Copy and Select All, New Folder, Back and Forward);
// the Peek Style menu follows the style order and the current style; every button of a
// window has a name for screen readers.

#include "../window/gui_test_main.h"
#include "actions/action_dialogs.h"
#include "actions/context_actions.h"
#include "actions/menu_setup.h"
#include "config/lab_variant.h"
#include "config/peek_order.h"
#include "config/pinned_file.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"
#include "window/browser_frame.h"
#include "window/browser_toolbar.h"
#include "window/pane_header.h"
#include "window/pane_view.h"
#include "views/content_view.h"
#include "views/peek/peek_mode_view.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTabBar>

#include <memory>

namespace {

// "Title=Keys" per item ("-" for a separator, "Title>" for a submenu).
QStringList itemsOf(const QMenu* menu)
{
    QStringList items;
    for (QAction* action : menu->actions()) {
        if (action->isSeparator())
            items << QStringLiteral("-");
        else if (action->menu())
            items << action->text() + QStringLiteral(">");
        else
            items << action->text() + QLatin1Char('=') + action->shortcut().toString(QKeySequence::PortableText);
    }
    return items;
}

QAction* find(QMenu* menu, const QString& text)
{
    for (QAction* action : menu->actions())
        if (action->text() == text)
            return action;
    return nullptr;
}

QMenu* topMenu(QMenuBar* bar, const QString& title)
{
    for (QAction* action : bar->actions())
        if (action->text() == title)
            return action->menu();
    return nullptr;
}

// A folder with a subfolder and two files, in a window with the application menus.
struct Fixture {
    TempTree tree;
    TestContext t;
    std::unique_ptr<BrowserFrame> frame;

    Fixture()
    {
        tree.dir("root/a");
        tree.file("root/b.txt", "1");
        tree.file("root/c.txt", "2");
        auto root = DirNode::make();
        root->path = tree.path("root");
        root->isDir = true;
        frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, t.context);
        frame->setAttribute(Qt::WA_DeleteOnClose, false);
        MenuSetup::install(frame.get());
        frame->show();
        pane()->reload();
        t.scans.finishAll();
    }
    BrondelWindow* pane() const { return frame->activePane(); }
    QMenu* menu(const char* title) const { return topMenu(frame->menuBar(), QString::fromUtf8(title)); }
};

} // namespace

class MenuSetupTest : public QObject {
    Q_OBJECT
private slots:
    void everyMenuItemSeparatorAndKeyInOrder_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("items");
        const QString reveal = ContextActions::revealTitle();
        QTest::newRow("application") << "&Brondel"
                                     << QStringList{"About Brondel=", "-", "Settings\u2026=Ctrl+,",
                                            "Manage Favorites\u2026=", "-", "Quit Brondel=Ctrl+Q"};
        QTest::newRow("file") << "&File"
                              << QStringList{"New Window=Ctrl+N", "-", "New Folder=Ctrl+Shift+N", "Open=Ctrl+O",
                                     reveal + "=Ctrl+R", "Copy Path=Ctrl+Alt+C", "Preview=Space", "Properties\u2026=Alt+Return", "Move to Trash=Ctrl+Backspace",
                                     "Delete Permanently\u2026=Shift+Del",
                                     "-", "Add to Favorites=Meta+Ctrl+T", "Remove from Favorites=", "-",
                                     "Close Window=Ctrl+W"};
        QTest::newRow("edit") << "&Edit" << QStringList{"Undo=Ctrl+Z", "Redo=Ctrl+Shift+Z", "-", "Cut=Ctrl+X",
                                             "Copy=Ctrl+C", "Paste=Ctrl+V", "Rename\u2026=F2", "Select All=Ctrl+A", "-",
                                             "Find\u2026=Ctrl+F"};
        QTest::newRow("view") << "&View"
                              << QStringList{"as Icons=Ctrl+1", "as List=Ctrl+2", "as Columns=Ctrl+3",
                                     "as Peek=Ctrl+4", "Split View Right=Ctrl+D", "Split View Down=Ctrl+Shift+D",
                                     "Close Split=Ctrl+Shift+W", "Link Panes (Cable)=Ctrl+Alt+L", "Peek Style>", "-",
                                     "Show Hidden Files=Ctrl+Shift+.", "Sort By>", "Show Info>", "-",
                                     "Refresh=Ctrl+R"};
        QTest::newRow("go") << "&Go"
                            << QStringList{"Back=Ctrl+[", "Forward=Ctrl+]", "Enclosing Folder=Ctrl+Up",
                                   "Computer=Ctrl+Shift+C"};
        QTest::newRow("window") << "&Window" << QStringList{"Minimize=Ctrl+M", "Zoom="};
    }

    void everyMenuItemSeparatorAndKeyInOrder()
    {
        QFETCH(QString, title);
        QFETCH(QStringList, items);
        Fixture f;
        QStringList titles;
        for (QAction* action : f.frame->menuBar()->actions())
            titles << action->text();
        QCOMPARE(titles, (QStringList{"&Brondel", "&File", "&Edit", "&View", "&Go", "&Window"}));
        QMenu* menu = topMenu(f.frame->menuBar(), title);
        QVERIFY(menu);
        QCOMPARE(itemsOf(menu), items);
    }

    void keysActOnTheFocusedPane()
    {
        Fixture f;
        f.frame->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.frame.get()));
        BrondelWindow* first = f.pane();
        f.frame->addPane();
        BrondelWindow* second = f.pane();
        QVERIFY(second != first);
        f.t.scans.finishAll();
        QTest::keyClick(f.frame.get(), Qt::Key_3, Qt::ControlModifier);
        QCOMPARE(second->currentMode(), ViewMode::Column);
        QCOMPARE(first->currentMode(), ViewMode::List);
        contentViewFocus(first->contentView())->setFocus();
        QTRY_COMPARE(f.frame->activePane(), first);
        QTest::keyClick(f.frame.get(), Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(first->currentMode(), ViewMode::Icon);
        QCOMPARE(second->currentMode(), ViewMode::Column);
        // Refresh owns Ctrl+R (Reveal only shows it): the key is not ambiguous, and reloads.
        const size_t before = f.t.scans.count();
        QTest::keyClick(f.frame.get(), Qt::Key_R, Qt::ControlModifier);
        QVERIFY(f.t.scans.count() > before);
    }

    void keysTypedInATextFieldStayThere()
    {
        // Ctrl+Backspace deletes a word in a text field; it must not trash the selection.
        Fixture f;
        auto* field = new QLineEdit(QStringLiteral("two words"), f.frame->toolbar());
        f.frame->toolbar()->addWidget(field);
        f.frame->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.frame.get()));
        QVERIFY(contentViewSelect(f.pane()->contentView(), f.tree.path("root/b.txt")));
        field->setFocus();
        field->end(false);
        QTRY_COMPARE(QApplication::focusWidget(), field);
        QTest::keyClick(field, Qt::Key_Backspace, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(field->text(), QStringLiteral("two "));
        QCOMPARE(field->selectedText(), QStringLiteral("two "));
        QTest::qWait(50);
        QVERIFY(QFileInfo::exists(QString::fromStdString(f.tree.path("root/b.txt"))));
        QCOMPARE(f.pane()->selectedPaths().size(), size_t(1));
    }

    void editCopyAndSelectAll()
    {
        Fixture f;
        QVERIFY(contentViewSelect(f.pane()->contentView(), f.tree.path("root/b.txt")));
        find(f.menu("&Edit"), "Copy")->trigger();
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        const QString path = QString::fromStdString(f.tree.path("root/b.txt"));
        QCOMPARE(data->data("text/uri-list"), QUrl::fromLocalFile(path).toEncoded() + "\r\n");
        QCOMPARE(data->text(), path);
        QCOMPARE(data->data("x-special/gnome-copied-files"), "copy\n" + QUrl::fromLocalFile(path).toEncoded());

        find(f.menu("&Edit"), "Select All")->trigger();
        QCOMPARE(f.pane()->selectedPaths().size(), size_t(3));
        find(f.menu("&Edit"), "Copy")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text().split('\n').size(), 3);
    }

    void fileItemsActOnTheSelectionOrTheFolder()
    {
        Fixture f;
        f.tree.dir("root/untitled folder");
        find(f.menu("&File"), "New Folder")->trigger();
        QTRY_VERIFY(QFileInfo(QString::fromStdString(f.tree.path("root/untitled folder 2"))).isDir());

        // Nothing selected: Copy Path copies the folder's own path.
        find(f.menu("&File"), "Copy Path")->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromStdString(f.tree.path("root")));

        // A file with nothing to open it says so (the offscreen platform opens nothing).
        std::vector<QString> alerts;
        auto& dialogs = ActionDialogs::current();
        const ActionDialogs real = dialogs;
        dialogs.alert = [&](QWidget*, const QString& text, const QString&) { alerts.push_back(text); };
        QVERIFY(contentViewSelect(f.pane()->contentView(), f.tree.path("root/b.txt")));
        find(f.menu("&File"), "Open")->trigger();
        QTRY_COMPARE(alerts.size(), size_t(1));
        QCOMPARE(alerts[0], QStringLiteral("\u201cb.txt\u201d could not be opened."));

        // The favourites take the selected folders, never files.
        const std::string a = f.tree.path("root/a");
        f.pane()->reload();
        f.t.scans.finishAll();
        QVERIFY(contentViewSelect(f.pane()->contentView(), f.tree.path("root/c.txt")));
        find(f.menu("&File"), "Add to Favorites")->trigger();
        QVERIFY(contentViewSelect(f.pane()->contentView(), a));
        find(f.menu("&File"), "Add to Favorites")->trigger();
        QTRY_COMPARE(pinnedSectionOf(a), std::optional<std::string>("Favorites"));
        QVERIFY(!pinnedSectionOf(f.tree.path("root/c.txt")));
        find(f.menu("&File"), "Remove from Favorites")->trigger();
        QTRY_VERIFY(!pinnedSectionOf(a));

        // Open on a selected folder goes into it.
        find(f.menu("&File"), "Open")->trigger();
        QTRY_COMPARE(f.pane()->currentLocation(), a);
        f.t.scans.finishAll();

        // A folder that cannot be written to: no new folder, and the user is told.
        {
            SysCalls refusing = sysCallsReal();
            refusing.mkdir = [](const char*, mode_t) {
                errno = EACCES;
                return -1;
            };
            SysCallsOverride override(refusing);
            find(f.menu("&File"), "New Folder")->trigger();
            QTRY_COMPARE(alerts.size(), size_t(2));
        }
        QCOMPARE(alerts[1], QStringLiteral("The new folder could not be created."));
        QVERIFY(!QFileInfo::exists(QString::fromStdString(f.tree.path("root/a/untitled folder"))));
        dialogs = real;
    }

    void backAndForwardFollowTheActivePaneHistory()
    {
        Fixture f;
        QAction* back = find(f.menu("&Go"), "Back");
        QAction* forward = find(f.menu("&Go"), "Forward");
        auto state = [&] { return std::pair{back->isEnabled(), forward->isEnabled()}; };
        QCOMPARE(state(), std::pair(false, false));
        f.frame->navigateTo(f.tree.path("root/a"));
        QCOMPARE(state(), std::pair(true, false));
        back->trigger();
        QCOMPARE(state(), std::pair(false, true));
        f.frame->addPane(); // a new pane has no history
        QCOMPARE(state(), std::pair(false, false));
    }

    void peekStyleMenuFollowsTheOrderAndTheCurrentStyle()
    {
        Fixture f;
        const std::vector<const LabVariant*> styles = labVariantTypes();
        QVERIFY(styles.size() >= 2);
        QVERIFY(peekOrderSave({styles[1]->title()}));
        MenuSetup::refreshPeekStyle();
        QMenu* peek = find(f.menu("&View"), "Peek Style")->menu();
        QTRY_COMPARE(size_t(peek->actions().size()), styles.size());
        QTRY_COMPARE(peek->actions().at(0)->text(), QString::fromStdString(styles[1]->title()));
        QCOMPARE(peek->actions().at(0)->shortcut(), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1));
        QCOMPARE(peek->actions().at(0)->toolTip(), QString::fromStdString(styles[1]->blurb()));
        if (styles.size() >= 11) {
            QCOMPARE(peek->actions().at(9)->shortcut(), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_0));
            QCOMPARE(peek->actions().at(10)->shortcut(), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Minus));
        }
        peek->actions().at(1)->trigger();
        QCOMPARE(f.pane()->currentMode(), ViewMode::Peek);
        QTRY_COMPARE(peekStyleCurrent(), std::optional(styles[0]->title()));
        QTRY_VERIFY(peek->actions().at(1)->isChecked());
        QVERIFY(!peek->actions().at(0)->isChecked());
        // The keys pick by place in the menu.
        f.frame->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(f.frame.get()));
        QTest::keyClick(f.frame.get(), Qt::Key_1, Qt::ControlModifier | Qt::AltModifier);
        QTRY_COMPARE(peekStyleCurrent(), std::optional(styles[1]->title()));
    }

    void peekRearrangeDoneRebuildsTheMenu()
    {
        Fixture f;
        QVERIFY(peekOrderSave({}));
        f.frame->switchMode(ViewMode::Peek);
        auto* peekView = f.pane()->findChild<PeekModeView*>();
        QVERIFY(peekView);
        QTRY_VERIFY(peekView->bar());
        QMenu* menu = find(f.menu("&View"), "Peek Style")->menu();
        QTRY_COMPARE(menu->actions().size(), peekView->bar()->count());
        const QString moved = peekView->bar()->tabText(6);
        QVERIFY(menu->actions().at(0)->text() != moved);
        peekView->rearrangeEnter();
        peekView->reorderBar()->moveTab(6, 0);
        peekView->rearrangeDone();
        QTRY_COMPARE(menu->actions().at(0)->text(), moved);
        QCOMPARE(menu->actions().at(0)->shortcut(), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1));
        QVERIFY(peekOrderSave({}));
    }

    void everyButtonHasAName()
    {
        Fixture f;
        f.frame->addPane();
        QStringList unnamed;
        const auto buttons = f.frame->findChildren<QAbstractButton*>();
        QVERIFY(buttons.size() > 15);
        for (QAbstractButton* button : buttons)
            if (button->accessibleName().isEmpty() || button->accessibleDescription().isEmpty())
                unnamed << button->metaObject()->className() + QStringLiteral(" ") + button->objectName() + button->toolTip();
        QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(", ")));
        // Tips name the keys as the menus do.
        PaneView* view = f.frame->paneViewOf(f.pane());
        QStringList tips;
        for (QAbstractButton* button : view->header()->findChildren<QAbstractButton*>())
            tips << button->toolTip();
        QVERIFY2(tips.contains(QStringLiteral("Close pane (Ctrl+Shift+W)")), qPrintable(tips.join(", ")));
        QCOMPARE(f.frame->toolbar()->item("back")->toolTip(), QStringLiteral("Back (Ctrl+[)"));
    }
};

BRONDEL_GUI_TEST_MAIN(MenuSetupTest)
#include "menu_setup_test.moc"
