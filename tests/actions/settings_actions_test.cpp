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

#include <tuple>

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
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));
        BrondelSettings theirs = settingsLoad(); // a hand edit of another key meanwhile stays
        theirs.recentTitle = "Lately";
        QVERIFY(settingsSave(theirs));
        auto header = [&] {
            t.scans.finishAll();
            auto* view = qobject_cast<BrondelOutlineView*>(frame->activePane()->contentView());
            return view ? view->header() : nullptr;
        };
        // The column clicked, then the key and direction in the file and on the header.
        const std::tuple<int, const char*, bool> clicks[] = {{ListSource::Date, "date", true},
            {ListSource::Date, "date", false}, {ListSource::Kind, "kind", true}};
        for (const auto& [column, key, ascending] : clicks) {
            QTRY_VERIFY(header() && header()->height() > 0); // laid out
            QTest::mouseClick(header()->viewport(), Qt::LeftButton, {},
                QPoint(header()->sectionViewportPosition(column) + 10, header()->height() / 2));
            QTRY_VERIFY(settingsLoad().sortBy == key && settingsLoad().ascending == ascending);
            QCOMPARE(settingsLoad().recentTitle, std::string("Lately"));
            QTRY_VERIFY(t.scans.count() > 0); // the windows reload in the new order
            QCOMPARE(header()->sortIndicatorSection(), column);
            QCOMPARE(header()->sortIndicatorOrder(), ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        }
        // A change from the menu shows on the header too.
        QMenu* sort = submenu(topMenu(frame->menuBar(), QStringLiteral("View")), QStringLiteral("Sort By"));
        emit sort->aboutToShow();
        action(sort, QStringLiteral("Size"))->trigger();
        QTRY_VERIFY(t.scans.count() > 0);
        QCOMPARE(header()->sortIndicatorSection(), int(ListSource::Size));
    }
};

BRONDEL_GUI_TEST_MAIN(SettingsActionsTest)
#include "settings_actions_test.moc"
