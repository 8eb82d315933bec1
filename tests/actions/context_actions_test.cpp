// The context menus of the list and column views (file rows, section headers, empty
// space) and what their items do: configuration edits written and every window
// refreshed, new folders, the clipboard, and moving to the Trash from the menu and the
// toolbar, with the alert of a failure.

#include "../window/gui_test_main.h"
#include "actions/action_dialogs.h"
#include "actions/context_actions.h"
#include "actions/context_menu.h"
#include "actions/menu_setup.h"
#include "config/config_file.h"
#include "config/palette.h"
#include "config/pinned_file.h"
#include "config/sidebar_file.h"
#include "fs/new_folder.h"
#include "fs/file_io.h"
#include "config/recents.h"
#include "fs/paths.h"
#include "support/temp_tree.h"
#include "views/column_view.h"
#include "views/content_view.h"
#include "views/list_view.h"
#include "window/browser_frame.h"
#include "window/browser_toolbar.h"
#include "window/sidebar_view.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QMenu>

#include <memory>

namespace {

QString menuText(const QMenu* menu)
{
    QStringList items;
    for (QAction* action : menu->actions())
        items << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return items.join(QLatin1Char('|'));
}

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

MenuPayload payloadOf(QAction* a)
{
    return a->data().value<MenuPayload>();
}

DirNode nodeAt(const std::string& path, bool isDir)
{
    DirNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.isDir = isDir;
    return node;
}

// Replaces the modal dialogs for one test.
struct DialogStandIns {
    ActionDialogs real = ActionDialogs::current();
    std::vector<QString> alerts;
    DialogStandIns(std::optional<QString> answer, QStringList chosen = {})
    {
        auto& dialogs = ActionDialogs::current();
        dialogs.alert = [this](QWidget*, const QString& text, const QString&) { alerts.push_back(text); };
        dialogs.prompt = [answer](QWidget*, const QString&, const QString&, const QString&) { return answer; };
        dialogs.chooseFolders = [chosen](QWidget*, const QString&) { return chosen; };
    }
    ~DialogStandIns() { ActionDialogs::current() = real; }
};

QModelIndex rowNamed(const NodeTreeModel& model, const QString& name)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        QModelIndex index = model.index(row, 0);
        if (model.nodeAt(index)->name == name.toStdString())
            return index;
    }
    return {};
}

const QString kFileMenu =
    QStringLiteral("Open|Open With|-|Reveal in File Manager|Copy Path|-|Rename\u2026|Move to Trash|-|Properties\u2026");
const QString kFolderMenu = QStringLiteral(
    "Open|Open in New Window|-|Reveal in File Manager|Copy Path|-|Add to Sidebar|Add to Favorites|-|Rename\u2026|"
    "Move to Trash|-|Properties\u2026");
const QString kSectionMenu = QStringLiteral(
    "Add Folders\u2026|Rename Section\u2026|Move Section Up|Move Section Down|Color|-|New Section\u2026|Remove Section");
const QString kBackgroundMenu = QStringLiteral(
    "New Folder|New Favorites Section\u2026|Add This Folder to Favorites|Manage Favorites\u2026|Refresh");

// A folder with a subfolder and a file, shown in a window with a favourites section and
// the Recent section above them.
struct Fixture {
    TempTree tree;
    TestContext t;
    std::unique_ptr<BrowserFrame> frame;

    explicit Fixture(ViewMode mode = ViewMode::List)
    {
        tree.dir("root/a");
        tree.file("root/d.txt", "12345");
        t.headers = {testHeader("Work", "pinned:/Work", {"/w1"}), testHeader("Recent", "pinned://Recent", {"/r1"})};
        auto root = DirNode::make();
        root->path = tree.path("root");
        root->name = "root";
        root->isDir = true;
        frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, t.context);
        frame->setAttribute(Qt::WA_DeleteOnClose, false);
        frame->resize(900, 600);
        frame->show();
        pane()->reload();
        t.scans.finishAll();
        // The favourites are read in the background and arrive on their own.
        QTest::qWaitFor([this] { return !pane()->headers().empty(); });
        pane()->rebuildMode(mode);
    }

    BrondelWindow* pane() const { return frame->activePane(); }
    BrondelOutlineView* list() const { return qobject_cast<BrondelOutlineView*>(pane()->contentView()); }
    BrondelBrowser* columns() const { return qobject_cast<BrondelBrowser*>(pane()->contentView()); }

    // The list's menu at the row of `name`, or of empty space for an empty name.
    std::unique_ptr<QMenu> listMenu(const QString& name) const
    {
        BrondelOutlineView* view = list();
        if (name.isEmpty())
            return view->menuAt(QPoint(5, view->viewport()->height() - 3));
        return view->menuAt(view->visualRect(rowNamed(*view->source(), name)).center());
    }
    std::unique_ptr<QMenu> columnMenu(const QString& name) const
    {
        BrondelBrowser* browser = columns();
        if (name.isEmpty())
            return browser->menuAt(nullptr, QPoint(browser->viewport()->width() - 3, 5));
        QAbstractItemView* first = browser->columns().first();
        return browser->menuAt(first, first->visualRect(rowNamed(*browser->source(), name)).center());
    }
};

} // namespace

class ContextActionsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        // Every test starts without favourites or sidebar file.
        QFile::remove(QString::fromStdString(pinnedFilePath()));
        QFile::remove(QString::fromStdString(sidebarFilePath()));
    }

    void menusOfRowsHeadersAndEmptySpace_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("menu");
        for (auto [mode, name] : {std::pair{ViewMode::List, "list"}, {ViewMode::Column, "column"}}) {
            QByteArray tag(name);
            QTest::newRow(tag + " file") << int(mode) << "d.txt" << kFileMenu;
            QTest::newRow(tag + " folder") << int(mode) << "a" << kFolderMenu;
            QTest::newRow(tag + " section") << int(mode) << "Work" << kSectionMenu;
            QTest::newRow(tag + " recent") << int(mode) << "Recent" << QStringLiteral("Clear Recents");
            QTest::newRow(tag + " empty") << int(mode) << "" << kBackgroundMenu;
        }
    }

    void menusOfRowsHeadersAndEmptySpace()
    {
        QFETCH(int, mode);
        QFETCH(QString, row);
        QFETCH(QString, menu);
        QGuiApplication::clipboard()->clear(); // no Paste items
        Fixture f{ViewMode(mode)};
        auto built = ViewMode(mode) == ViewMode::List ? f.listMenu(row) : f.columnMenu(row);
        QVERIFY(built);
        QCOMPARE(menuText(built.get()), menu);
        // A row's menu acts on that row alone: it is selected first; headers never are.
        std::vector<std::string> selected = f.pane()->selectedPaths();
        if (menu == kFileMenu || menu == kFolderMenu)
            QCOMPARE(selected.size(), size_t(1));
        else if (!row.isEmpty())
            QVERIFY(selected.empty());
    }

    void emptySpaceOfTheComputerRoot()
    {
        Fixture f;
        f.pane()->showLocation("/");
        f.t.scans.finishAll();
        QTRY_VERIFY(f.pane()->rootNode()->path == "/");
        auto menu = f.listMenu(QString());
        QVERIFY(!action(menu.get(), QStringLiteral("New Folder"))->isEnabled());
        QVERIFY(!action(menu.get(), QStringLiteral("Add This Folder to Favorites"))->isEnabled());
        QVERIFY(action(menu.get(), QStringLiteral("Refresh"))->isEnabled());
    }

    void sectionEditsAreWrittenAndRefreshEveryWindow()
    {
        Fixture f;
        Fixture other;
        pinnedAddSection("Work");
        pinnedAddSection("Play");
        recentsNote(f.tree.path("root/a"), BrondelSettings{});
        auto& prompt = ActionDialogs::current().prompt;
        auto realPrompt = prompt;
        prompt = [](QWidget*, const QString& title, const QString&, const QString& value) -> std::optional<QString> {
            return title == QStringLiteral("Rename Section") ? value + QStringLiteral(" Later") : QStringLiteral("New");
        };

        auto run = [&](const QString& row, const QString& item) {
            const size_t before = other.t.scans.count();
            auto menu = f.listMenu(row);
            action(menu.get(), item)->trigger();
            QTRY_VERIFY(other.t.scans.count() > before); // the other window reloads too
            other.t.scans.finishAll();
            f.t.scans.finishAll();
        };
        run(QStringLiteral("Work"), QStringLiteral("Move Section Down"));
        QCOMPARE(pinnedSectionTitles(), (std::vector<std::string>{"Favorites", "Play", "Work"}));
        run(QStringLiteral("Work"), QStringLiteral("Rename Section\u2026"));
        QCOMPARE(pinnedSectionTitles(), (std::vector<std::string>{"Favorites", "Play", "Work Later"}));
        run(QStringLiteral("Work"), QStringLiteral("New Section\u2026"));
        QCOMPARE(pinnedSectionTitles().back(), std::string("New"));
        run(QString(), QStringLiteral("Add This Folder to Favorites"));
        QCOMPARE(pinnedSectionOf(f.tree.path("root")), std::optional<std::string>("Favorites"));
        run(QStringLiteral("Recent"), QStringLiteral("Clear Recents"));
        QVERIFY(recentsLoad().empty());
        prompt = realPrompt;
    }

    void editsKeepBytesAndReportWhatTheFilesSaid()
    {
        Fixture f;
        std::vector<QString> alerts;
        auto& dialogs = ActionDialogs::current();
        const ActionDialogs real = dialogs;
        dialogs.alert = [&](QWidget*, const QString& text, const QString& detail) {
            alerts.push_back(detail.isEmpty() ? text : text + "/" + detail);
        };
        // A folder whose name is not UTF-8 reaches the favourites with its own bytes.
        const std::string odd = f.tree.dir("caf\xe9");
        dialogs.chooseFolders = [&](QWidget*, const QString&) {
            return QStringList{QFile::decodeName(QByteArray::fromStdString(odd))};
        };
        const std::string mistyped = "# mine\n\n[[section]]\ntitle = \"Work\npaths = [\n]\n";
        QVERIFY(fileWriteAtomic(pinnedFilePath(), mistyped));
        auto menu = f.listMenu(QStringLiteral("Work"));
        action(menu.get(), QStringLiteral("Add Folders\u2026"))->trigger();
        QTRY_COMPARE(alerts.size(), size_t(1));
        QCOMPARE(pinnedSectionOf(odd), std::optional<std::string>("Work"));
        QVERIFY2(alerts[0].startsWith(QStringLiteral("pinned.toml could not be read cleanly; its old content was kept as "
                                                     "pinned.toml.orig-")),
            qPrintable(alerts[0]));
        const QString backup = alerts[0].section(QLatin1Char(' '), -1);
        QCOMPARE(fileReadAll(pathParent(pinnedFilePath()) + "/" + backup.toStdString()), std::optional(mistyped));

        // A folder whose path the file cannot store is refused, and the user is told.
        const std::string quoted = f.tree.dir("say \"cheese\"");
        dialogs.chooseFolders = [&](QWidget*, const QString&) {
            return QStringList{QString::fromStdString(quoted)};
        };
        menu = f.listMenu(QStringLiteral("Work"));
        action(menu.get(), QStringLiteral("Add Folders\u2026"))->trigger();
        QTRY_COMPARE(alerts.size(), size_t(2));
        QCOMPARE(alerts[1], QStringLiteral("\u201c") + QString::fromStdString(quoted)
                + QStringLiteral("\u201d was not added to the favorites: its path holds a double quote, which "
                                 "pinned.toml cannot store."));
        QVERIFY(!pinnedSectionOf(quoted));
        dialogs = real;
    }

    void newFolderTakesTheFirstFreeName()
    {
        Fixture f;
        f.tree.dir("root/untitled folder");
        f.tree.dir("root/untitled folder 2");
        auto menu = f.listMenu(QString());
        action(menu.get(), QStringLiteral("New Folder"))->trigger();
        QTRY_VERIFY(QFileInfo(QString::fromStdString(f.tree.path("root/untitled folder 3"))).isDir());
        QTRY_VERIFY(f.t.scans.count() > 0); // then the window reloads
        QCOMPARE(newFolderName(1), std::string("untitled folder"));
        QCOMPARE(newFolderName(12), std::string("untitled folder 12"));
    }

    void copyPathPutsThePathOnTheClipboard()
    {
        Fixture f;
        auto menu = f.listMenu(QStringLiteral("d.txt"));
        action(menu.get(), QStringLiteral("Copy Path"))->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromStdString(f.tree.path("root/d.txt")));
    }

    void trashFromTheToolbarAndTheMenu()
    {
        Fixture f;
        const std::string doomed = f.tree.dir("root/doomed");
        f.tree.file("root/doomed/inside.txt");
        pinnedAdd(doomed, "Favorites");
        f.pane()->reload();
        f.t.scans.finishAll();
        QVERIFY(f.list()->source()->indexOfPath(doomed).isValid());

        QVERIFY(contentViewSelect(f.pane()->contentView(), doomed));
        f.frame->toolbar()->item("trash")->trigger();
        const std::string trashed = testHome() + "/.local/share/Trash/files/doomed";
        QTRY_VERIFY(QFileInfo(QString::fromStdString(trashed + "/inside.txt")).exists());
        QVERIFY(!QFileInfo::exists(QString::fromStdString(doomed)));
        QTRY_VERIFY(f.t.scans.count() > 0); // the favourites lose it, then the windows reload
        QVERIFY(!pinnedSectionOf(doomed));
        f.t.scans.finishAll();
        QVERIFY(!f.list()->source()->indexOfPath(doomed).isValid());

        // An item gone behind the window's back stays gone and is reported.
        std::vector<QString> alerts;
        auto& alert = ActionDialogs::current().alert;
        auto realAlert = alert;
        alert = [&](QWidget*, const QString& text, const QString& detail) { alerts.push_back(text + "/" + detail); };
        auto menu = f.listMenu(QStringLiteral("d.txt"));
        ::rename(f.tree.path("root/d.txt").c_str(), f.tree.path("moved.txt").c_str());
        action(menu.get(), QStringLiteral("Move to Trash"))->trigger();
        QTRY_COMPARE(alerts.size(), size_t(1));
        QCOMPARE(alerts[0], QStringLiteral("No such file or directory/") + QString::fromStdString(f.tree.path("root/d.txt")));
        f.list()->clearSelection();
        f.frame->toolbar()->item("trash")->trigger(); // nothing selected: nothing happens
        QTest::qWait(20);
        QCOMPARE(alerts.size(), size_t(1));
        alert = realAlert;
    }

    void fullAndCompactMenusOfFilesAndFolders_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<bool>("compact");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("sections");
        const QString head = QStringLiteral("Open|Open in New Window|-|Reveal in File Manager|Copy Path");
        QTest::newRow("file") << "/w/d.txt" << false << false << kFileMenu << "";
        QTest::newRow("file, compact") << "/w/d.txt" << false << true
                                       << "Open|-|Reveal in File Manager|Copy Path" << "";
        QTest::newRow("folder in no section")
            << "/elsewhere" << true << false << head + "|-|Add to Sidebar|Add to Favorites|-|Rename\u2026|Move to Trash|-|Properties\u2026"
            << "Favorites|Work|-|New Section\u2026";
        QTest::newRow("folder in no section, compact") << "/elsewhere" << true << true << head << "";
        QTest::newRow("folder in Work")
            << "/w1" << true << false
            << head + "|-|Add to Sidebar|Move to Section|Move Up in Favorites|Move Down in Favorites|"
                      "Remove from Favorites|-|Rename\u2026|Move to Trash|-|Properties\u2026"
            << "Favorites|-|New Section\u2026";
        QTest::newRow("folder in Work, compact") << "/w1" << true << true << head << "";
    }

    void fullAndCompactMenusOfFilesAndFolders()
    {
        QFETCH(QString, path);
        QFETCH(bool, isDir);
        QFETCH(bool, compact);
        QFETCH(QString, menu);
        QFETCH(QString, sections);
        QGuiApplication::clipboard()->clear(); // no Paste items
        Fixture f;
        QMenu built;
        built.addAction(QStringLiteral("stale"));
        contextFill(built, *f.pane(), nodeAt(path.toStdString(), isDir), compact ? MenuForm::Compact : MenuForm::Full);
        QCOMPARE(menuText(&built), menu);
        for (QAction* a : built.actions())
            if (!a->isSeparator() && !a->menu())
                QCOMPARE(payloadOf(a).path, path.toStdString());
        QMenu* block = submenu(&built, QStringLiteral("Add to Favorites"));
        if (!block)
            block = submenu(&built, QStringLiteral("Move to Section"));
        QCOMPARE(block ? menuText(block) : QString(), sections);
        if (QAction* up = action(&built, QStringLiteral("Move Up in Favorites"))) {
            QCOMPARE(payloadOf(up).delta, int64_t(-1));
            QCOMPARE(payloadOf(action(&built, QStringLiteral("Move Down in Favorites"))).delta, int64_t(1));
            QCOMPARE(payloadOf(up).section, std::optional<std::string>("Work"));
        }
        if (QAction* work = block ? action(block, QStringLiteral("Work")) : nullptr)
            QCOMPARE(payloadOf(work).section, std::optional<std::string>("Work"));
    }

    void favoritesBlockEditsTheFavoritesFile()
    {
        Fixture f;
        DialogStandIns dialogs(QStringLiteral("Fresh"));
        pinnedAddSection("Work");
        const std::string a = f.tree.path("root/a");
        auto fill = [&] {
            auto menu = std::make_unique<QMenu>();
            contextFill(*menu, *f.pane(), nodeAt(a, true));
            return menu;
        };
        auto settle = [&] {
            const size_t before = f.t.scans.count();
            QTRY_VERIFY(f.t.scans.count() > before); // each edit reloads the window
            f.t.scans.finishAll();
        };
        auto menu = fill();
        action(submenu(menu.get(), QStringLiteral("Add to Favorites")), QStringLiteral("Work"))->trigger();
        settle();
        QCOMPARE(pinnedSectionOf(a), std::optional<std::string>("Work"));
        // The menu is made from the headers the pane read, which the stand-in gives.
        f.t.headers = {testHeader("Work", "pinned:/Work", {f.tree.path("root/z"), a})};
        f.pane()->reload();
        QTRY_COMPARE(f.pane()->headers().size(), size_t(1));
        menu = fill();
        action(submenu(menu.get(), QStringLiteral("Move to Section")), QStringLiteral("Favorites"))->trigger();
        settle();
        QCOMPARE(pinnedSectionOf(a), std::optional<std::string>("Favorites"));
        menu = fill();
        action(submenu(menu.get(), QStringLiteral("Move to Section")), QStringLiteral("New Section\u2026"))->trigger();
        settle();
        QCOMPARE(pinnedSectionOf(a), std::optional<std::string>("Fresh"));
        const std::string b = f.tree.dir("root/b");
        pinnedAdd(b, "Fresh");
        menu = fill();
        action(menu.get(), QStringLiteral("Move Down in Favorites"))->trigger();
        settle();
        QCOMPARE(expandTilde(pinnedRead().secs.back().paths.front()), b);
        menu = fill();
        action(menu.get(), QStringLiteral("Remove from Favorites"))->trigger();
        settle();
        QVERIFY(!pinnedSectionOf(a));
        menu = fill();
        action(menu.get(), QStringLiteral("Add to Sidebar"))->trigger();
        settle();
        QCOMPARE(expandTilde(sidebarRead().paths.back()), a);
    }

    void sectionDeleteAndColors()
    {
        Fixture f;
        pinnedAddSection("Work");
        pinnedAddSection("Play");
        auto menu = f.listMenu(QStringLiteral("Work"));
        QMenu* colors = submenu(menu.get(), QStringLiteral("Color"));
        QVERIFY(colors);
        // The palette arrives from a background read, in front of the fixed items.
        QTRY_COMPARE(colors->actions().size(), 8 + 4);
        QCOMPARE(menuText(colors).section(QLatin1Char('|'), 7),
            QStringLiteral("Red|-|Custom\u2026|Edit Palette\u2026|Automatic"));
        action(colors, QStringLiteral("Orange"))->trigger();
        QTRY_COMPARE(pinnedRead().secs[0].color, std::optional(0.08));
        action(colors, QStringLiteral("Automatic"))->trigger();
        QTRY_VERIFY(!pinnedRead().secs[0].color);

        action(menu.get(), QStringLiteral("Remove Section"))->trigger();
        QTRY_COMPARE(pinnedSectionTitles(), (std::vector<std::string>{"Favorites", "Play"}));
    }

    void colourPanelPicksWriteAtOnceAndRefreshOnce()
    {
        Fixture f;
        pinnedAddSection("Work");
        f.t.scans.finishAll();
        f.t.fireDeferred();
        const size_t before = f.t.scans.count();
        const std::vector<QColor> picks = {Qt::red, Qt::green, Qt::blue, Qt::yellow, Qt::magenta};
        for (const QColor& color : picks) {
            ContextActions::colorPicked(*f.pane(), "Work", color);
            const double hue = color.hsvHueF();
            QTRY_VERIFY(pinnedRead().secs[0].color && std::abs(*pinnedRead().secs[0].color - hue) < 1e-6);
        }
        QCOMPARE(f.t.scans.count(), before); // nothing refreshed yet
        QCOMPARE(f.t.deferred.size(), picks.size());
        f.t.fireDeferred(); // 0.15 s later: only the last pick's refresh goes ahead
        QCOMPARE(f.t.scans.count(), before + 1);
    }

    void sidebarMenuAndDragEditTheSidebarFile()
    {
        Fixture f;
        for (const char* name : {"Desktop", "Documents"})
            QDir(QString::fromStdString(testHome())).mkpath(QString::fromLatin1(name));
        sidebarWrite("Favorites", {"~", "~/Desktop", "~/Documents", "~/Downloads"});
        MenuSetup::install(f.frame.get());
        SidebarView* sidebar = f.frame->sidebar();
        sidebar->reload();
        QTRY_COMPARE(sidebar->topLevelItem(0)->childCount(), 3);
        const std::string extra = f.tree.dir("extra");
        DialogStandIns dialogs(QStringLiteral("Places"), {QString::fromStdString(extra)});
        auto menuOf = [&](QTreeWidgetItem* row) { return sidebar->menuAt(sidebar->visualItemRect(row).center()); };

        auto menu = menuOf(sidebar->topLevelItem(0)->child(0));
        QCOMPARE(menuText(menu.get()), QStringLiteral("Open in New Window|-|Remove from Sidebar|Move Up|Move Down|-|"
                                                      "Rename Section\u2026|Add Folder\u2026"));
        QCOMPARE(menuText(menuOf(sidebar->topLevelItem(0)).get()),
            QStringLiteral("Rename Section\u2026|Add Folder\u2026"));
        action(menu.get(), QStringLiteral("Move Down"))->trigger();
        QTRY_COMPARE(sidebarRead().paths,
            (std::vector<std::string>{"~/Desktop", "~", "~/Documents", "~/Downloads"}));
        action(menu.get(), QStringLiteral("Rename Section\u2026"))->trigger();
        QTRY_COMPARE(sidebarRead().title, std::string("Places"));
        action(menu.get(), QStringLiteral("Add Folder\u2026"))->trigger();
        QTRY_COMPARE(sidebarRead().paths.size(), size_t(5));
        action(menu.get(), QStringLiteral("Remove from Sidebar"))->trigger();
        QTRY_COMPARE(sidebarRead().paths.size(), size_t(4));
        QCOMPARE(expandTilde(sidebarRead().paths.back()), extra);

        // A drag of the first row onto the third moves it there, the rows between move up.
        sidebarWrite("Favorites", {"~", "~/Desktop", "~/Documents", "~/Downloads"});
        sidebar->reload();
        QTRY_COMPARE(SidebarView::pathOf(sidebar->topLevelItem(0)->child(0)), testHome());
        sidebar->moveRow(0, 2);
        QTRY_COMPARE(sidebarRead().paths,
            (std::vector<std::string>{"~/Desktop", "~/Documents", "~", "~/Downloads"}));
    }
};

BRONDEL_GUI_TEST_MAIN(ContextActionsTest)
#include "context_actions_test.moc"
