// The settings items of the View menu and of the toolbar's Info menu: each changes the
// process's settings, saves them to the settings file and reloads every window; the
// check marks follow the settings.

#include "../window/gui_test_main.h"
#include "actions/menu_setup.h"
#include "actions/settings_actions.h"
#include "config/settings_file.h"
#include "sizes/info_module.h"
#include "window/browser_frame.h"
#include "window/browser_toolbar.h"
#include "views/list_view.h"

#include <QHeaderView>

#include <QMenu>
#include <QMenuBar>

#include <memory>

namespace {

QAction* action(QMenu* menu, const QString& text)
{
    for (QAction* a : menu->actions())
        if (a->text() == text)
            return a;
    return nullptr;
}

QMenu* submenu(QMenu* menu, const QString& text)
{
    QAction* a = action(menu, text);
    return a ? a->menu() : nullptr;
}

QMenu* topMenu(QMenuBar* bar, const QString& title)
{
    for (QAction* a : bar->actions())
        if (a->text().remove(QLatin1Char('&')) == title) // titles carry their mnemonics
            return a->menu();
    return nullptr;
}

// A window on /tmp with the application menus.
std::unique_ptr<BrowserFrame> frameWithMenus(TestContext& t)
{
    auto root = DirNode::make();
    root->path = "/tmp";
    root->isDir = true;
    auto frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, t.context);
    frame->setAttribute(Qt::WA_DeleteOnClose, false);
    MenuSetup::install(frame.get());
    return frame;
}

} // namespace

class SettingsActionsTest : public QObject {
    Q_OBJECT
private slots:
    void togglesAreSavedAndReloadEveryWindow()
    {
        TestContext t;
        auto frame = frameWithMenus(t);
        QMenu* view = topMenu(frame->menuBar(), QStringLiteral("View"));
        QVERIFY(view);
        QMenu* sort = submenu(view, QStringLiteral("Sort By"));
        QVERIFY(sort);
        QStringList items;
        for (QAction* a : sort->actions())
            items << (a->isSeparator() ? QStringLiteral("-") : a->text());
        QCOMPARE(items.join('|'), QStringLiteral("Name|Date Modified|Size|Kind|-|Ascending|Folders First"));
        QCOMPARE(action(view, QStringLiteral("Show Hidden Files"))->shortcut(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Period));

        const BrondelSettings before = Settings::current();
        const std::string module = InfoModules::all().front()->key();
        const QString moduleTitle = QString::fromStdString(InfoModules::all().front()->title());
        auto step = [&](QMenu* menu, const QString& text) {
            const size_t scans = t.scans.count();
            emit menu->aboutToShow();
            action(menu, text)->trigger();
            QTRY_VERIFY(t.scans.count() > scans); // every window reloads
            QTRY_COMPARE(settingsLoad(), Settings::current()); // and the file has it
        };
        step(view, QStringLiteral("Show Hidden Files"));
        step(sort, QStringLiteral("Size"));
        step(sort, QStringLiteral("Ascending"));
        step(sort, QStringLiteral("Folders First"));
        QMenu* info = frame->toolbar()->item("info")->menu();
        QVERIFY(info);
        QCOMPARE(info->actions().size(), int(InfoModules::all().size()));
        step(info, moduleTitle);

        const BrondelSettings& now = Settings::current();
        QCOMPARE(now.showHidden, !before.showHidden);
        QCOMPARE(now.sortBy, std::string("size"));
        QCOMPARE(now.ascending, !before.ascending);
        QCOMPARE(now.foldersFirst, !before.foldersFirst);
        QCOMPARE(now.infoOn.at(module), false);

        // The check marks show the settings when the menus open again.
        emit sort->aboutToShow();
        QVERIFY(action(sort, QStringLiteral("Size"))->isChecked());
        QVERIFY(!action(sort, QStringLiteral("Name"))->isChecked());
        QCOMPARE(action(sort, QStringLiteral("Ascending"))->isChecked(), now.ascending);
        emit view->aboutToShow();
        QVERIFY(action(view, QStringLiteral("Show Hidden Files"))->isChecked());
        emit info->aboutToShow();
        QVERIFY(!action(info, moduleTitle)->isChecked());
        step(info, moduleTitle); // and back on
        QCOMPARE(Settings::current().infoOn.at(module), true);
    }

    void aChangeKeepsWhatAnotherWriterSaved()
    {
        TestContext t;
        auto frame = frameWithMenus(t);
        QMenu* view = topMenu(frame->menuBar(), QStringLiteral("View"));
        QVERIFY(view);

        // Meanwhile `brondel infos off file-size` and a hand edit change the file.
        BrondelSettings theirs = settingsLoad();
        theirs.infoOn["file-size"] = false;
        theirs.recentTitle = "Lately";
        QVERIFY(settingsSave(theirs));
        const bool hidden = Settings::current().showHidden;
        emit view->aboutToShow();
        action(view, QStringLiteral("Show Hidden Files"))->trigger();
        theirs.showHidden = !hidden;
        QTRY_COMPARE(settingsLoad(), theirs);
    }

    void headerClicksSortAndFlipLikeTheMenu()
    {
        TestContext t;
        t.context.sortByColumn = [&t](const std::string& key) { SettingsActions::sortByColumn(t.context, key); };
        t.context.settings = &Settings::current(); // the windows show the process's settings, as in the application
        auto frame = frameWithMenus(t);
        frame->resize(900, 500);
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));
        t.scans.finishAll();
        BrondelWindow* pane = frame->activePane();
        auto click = [&](ListSource::Column column) {
            auto* view = qobject_cast<BrondelOutlineView*>(pane->contentView());
            QVERIFY(view);
            QHeaderView* header = view->header();
            QTRY_VERIFY(header->isVisible() && header->height() > 0); // laid out
            const size_t scans = t.scans.count();
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                QPoint(header->sectionViewportPosition(column) + 10, header->height() / 2));
            QTRY_VERIFY(t.scans.count() > scans); // the windows reload in the new order
            QTRY_COMPARE(settingsLoad().sortBy, Settings::current().sortBy);
            QCOMPARE(settingsLoad().ascending, Settings::current().ascending);
            t.scans.finishAll();
        };
        // A hand edit of another key made meanwhile stays.
        BrondelSettings theirs = settingsLoad();
        theirs.recentTitle = "Lately";
        QVERIFY(settingsSave(theirs));

        click(ListSource::Date);
        QCOMPARE(Settings::current().sortBy, std::string("date"));
        QCOMPARE(Settings::current().ascending, true);
        QCOMPARE(settingsLoad().recentTitle, std::string("Lately"));
        click(ListSource::Date); // the same header again: the other way round
        QCOMPARE(settingsLoad().sortBy, std::string("date"));
        QCOMPARE(settingsLoad().ascending, false);
        click(ListSource::Kind);
        QCOMPARE(settingsLoad().sortBy, std::string("kind"));
        QCOMPARE(settingsLoad().ascending, true);
        QCOMPARE(settingsLoad().recentTitle, std::string("Lately"));

        // The rebuilt view shows the sort, also after a change from the menu.
        QMenu* sort = submenu(topMenu(frame->menuBar(), QStringLiteral("View")), QStringLiteral("Sort By"));
        emit sort->aboutToShow();
        action(sort, QStringLiteral("Size"))->trigger();
        QTRY_COMPARE(Settings::current().sortBy, std::string("size"));
        QTRY_VERIFY(t.scans.count() > 0);
        t.scans.finishAll();
        auto* view = qobject_cast<BrondelOutlineView*>(pane->contentView());
        QVERIFY(view);
        QCOMPARE(view->header()->sortIndicatorSection(), int(ListSource::Size));
        QCOMPARE(view->header()->sortIndicatorOrder(), Qt::AscendingOrder);
    }
};

BRONDEL_GUI_TEST_MAIN(SettingsActionsTest)
#include "settings_actions_test.moc"
