// The icon view: the stack of cards a folder shows, each layout's geometry, the card
// header controls and menu (written to the card file, every view rebuilt), keyboard
// moves across sections, what assistive technology sees, and rebuilds that keep the
// place.

#include "../window/gui_test_main.h"
#include "cards/card_config.h"
#include "cards/card_menu.h"
#include "cards/card_show_all.h"
#include "support/temp_tree.h"
#include "views/icon_card_view.h"

#include <QAccessible>
#include <QMenu>
#include <QScrollBar>
#include <QStandardPaths>

namespace {

DirNodePtr fileNode(const std::string& dir, const std::string& name, bool isDir = false)
{
    auto node = DirNode::make();
    node->name = name;
    node->path = dir + "/" + name;
    node->isDir = isDir;
    node->dateModified = 1700000000;
    return node;
}

std::vector<std::string> groups(const IconCardData& data)
{
    std::vector<std::string> out;
    for (const IconCardSection& s : data.sections)
        if (!s.sec.group.empty())
            out.push_back(s.sec.group);
    return out;
}

// The Computer root as the tests' context builds it, with two drives.
DirNodePtr computerRoot()
{
    auto root = DirNode::make();
    root->name = "TestComputer";
    root->path = "/";
    root->isDir = true;
    root->childrenLoaded = true;
    root->children = {fileNode("/media", "Backup", true), fileNode("/media", "Photos", true)};
    return root;
}

struct Shown {
    TestContext t;
    std::vector<std::string> opened;
    ContentHooks hooks;
    std::unique_ptr<IconCardView> view;

    Shown(DirNodePtr root, std::vector<DirNodePtr> headers, QSize size = {640, 480},
        std::shared_ptr<IconViewMemory> memory = nullptr)
    {
        hooks.iconMemory = std::move(memory);
        hooks.openFolder = [this](const std::string& path) { opened.push_back(path); };
        hooks.openFile = [this](const std::string& path) { opened.push_back(path); };
        view = std::make_unique<IconCardView>(root, std::move(headers), t.context, hooks);
        view->resize(size);
        view->show();
        (void)QTest::qWaitForWindowExposed(view.get());
    }
    bool ready() { return QTest::qWaitFor([this] { return view->ready(); }, 15000); }
};

int sectionWithGroup(const IconCardData& data, const std::string& group)
{
    for (size_t s = 0; s < data.sections.size(); ++s)
        if (data.sections[s].sec.group == group)
            return int(s);
    return -1;
}

QAction* findAction(QMenu* menu, const QStringList& titles)
{
    QAction* found = nullptr;
    for (const QString& title : titles) {
        found = nullptr;
        for (QAction* action : menu->actions())
            if (action->text() == title)
                found = action;
        if (!found)
            return nullptr;
        if (found->menu())
            menu = found->menu();
    }
    return found;
}

} // namespace

class IconCardViewTest : public QObject {
    Q_OBJECT
private slots:
    void init() { cardShowAllClear(); }

    void cardStackAtTheRootAndInAFolder()
    {
        TempTree tree;
        IconViewInput in;
        in.path = "/";
        in.name = "TestComputer";
        in.hostName = "TestComputer";
        in.items = computerRoot()->children;
        in.settings.showDownloads = true;
        in.downloads = {{tree.path("dl"), "Downloads", {fileNode(tree.path("dl"), "a.png")}},
            {"/media/Backup/Downloads", "Downloads · Backup", {fileNode("/media/Backup/Downloads", "b.zip")}}};
        in.favorites = {testHeader("Work", "pinned:/Work", {"/w1", "/w2"}, 0.58),
            testHeader("Recent", "pinned://Recent", {"/r1"}, 0.1)};
        IconCardDataPtr data = iconCardDataFrom(in, computerRoot());
        QCOMPARE(groups(*data), (std::vector<std::string>{"Downloads", "Downloads · Backup", "Drives", "Favorites"}));
        const IconCardSection& work = data->sections[data->sections.size() - 2];
        const IconCardSection& recent = data->sections.back();
        QCOMPARE(work.sec.title, std::string("Work"));
        QCOMPARE(work.sec.hue.value_or(-1), 0.58);
        QCOMPARE(recent.sec.title, std::string("Recent"));
        QCOMPARE(recent.sec.hue.value_or(-1), 0.1);
        QCOMPARE(data->name(int(data->sections.size()) - 2, 1), QStringLiteral("w2"));
        QCOMPARE(data->sections.front().sec.cardKey.value_or(""), std::string("downloads"));
        QCOMPARE(data->sections[1].sec.cardKey.value_or(""), std::string("downloads-backup"));
        QCOMPARE(data->sections.front().sec.topPad, 12.0);

        // Downloads switched off: the Drives card comes first.
        in.settings.showDownloads = false;
        QCOMPARE(groups(*iconCardDataFrom(in, computerRoot())), (std::vector<std::string>{"Drives", "Favorites"}));

        // A folder: its own items (read from the pane's store, in the pane's order), then Favorites.
        for (const char* name : {"b.txt", "a", "c.png"})
            std::string(name) == "a" ? tree.dir(std::string("f/") + name) : tree.file(std::string("f/") + name);
        DirNodePtr folder = ScanService::scanListing(tree.path("f"), BrondelSettings{});
        IconViewInput here;
        here.path = folder->path;
        here.name = "f";
        here.hostName = "TestComputer";
        here.favorites = in.favorites;
        IconCardDataPtr items = iconCardDataFrom(here, folder);
        QCOMPARE(groups(*items), (std::vector<std::string>{"f", "Favorites"}));
        QVERIFY(items->sections.front().records != nullptr); // no node per item
        QCOMPARE(items->count(0), size_t(3));
        QCOMPARE(items->name(0, 0), QStringLiteral("a"));
        QCOMPARE(items->path(0, 2), tree.path("f/c.png"));
        QVERIFY(items->isDir(0, 0));
        QCOMPARE(items->node(0, 1)->name, std::string("b.txt"));
    }

    void collapseShowAllAndCardMenuReachEveryView()
    {
        // The test home's Downloads folder becomes the root's first card.
        TempTree tree;
        const std::string downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
        QVERIFY(QDir().mkpath(QString::fromStdString(downloads)));
        for (const char* name : {"a.png", "b.zip", "c.txt"})
            QFile(QString::fromStdString(downloads + "/" + name)).open(QIODevice::WriteOnly);
        Shown one(computerRoot(), {});
        Shown two(computerRoot(), {});
        QVERIFY(one.ready() && two.ready());
        const int dl = sectionWithGroup(*one.view->data(), "Downloads");
        QVERIFY(dl >= 0);
        QVERIFY(one.view->data()->sections[size_t(dl)].sec.collapsed); // the default
        QVERIFY(one.view->data()->sections[size_t(dl)].sec.strip);

        // The chevron expands the card in its file, and the other view follows.
        QSignalSpy reloaded(two.view.get(), &IconCardView::loaded);
        one.view->pressControl(dl, IconControl::Chevron);
        QTRY_VERIFY_WITH_TIMEOUT(reloaded.count() >= 1 && !two.view->data()->sections[size_t(dl)].sec.collapsed, 15000);
        QVERIFY(!cardConfigLoad("downloads", "files").collapsed);

        // Grouped by kind, each group is a strip with "Show all"; it toggles the process set.
        cardUpdate("downloads", "files", [](CardConfig& c) { c.group = "kind"; });
        one.view->reload();
        QTRY_VERIFY_WITH_TIMEOUT(one.view->data()->sections.size() > 3, 15000);
        int strip = -1;
        for (size_t s = 0; s < one.view->data()->sections.size(); ++s)
            if (one.view->data()->sections[s].sec.showAll && strip < 0)
                strip = int(s);
        QVERIFY(strip >= 0);
        QVERIFY(one.view->data()->sections[size_t(strip)].sec.strip);
        QVERIFY(!one.view->controlRect(strip, IconControl::ShowAll).isEmpty());
        const std::string key = *one.view->data()->sections[size_t(strip)].sec.showAll;
        one.view->pressControl(strip, IconControl::ShowAll);
        QVERIFY(cardShowAllHas(key));
        QTRY_VERIFY_WITH_TIMEOUT(!one.view->data()->sections[size_t(strip)].sec.strip, 15000);

        // The "⋯" menu of the Drives card: the same items as the card's own menu; a
        // choice is saved and every view shows it.
        const int drives = sectionWithGroup(*one.view->data(), "Drives");
        QVERIFY(!one.view->controlRect(drives, IconControl::Tune).isEmpty());
        QVERIFY(one.view->controlRect(drives, IconControl::Chevron).isEmpty()); // never collapsible
        QPointer<QMenu> menu;
        connect(one.view.get(), &IconCardView::cardMenuShown, this, [&menu](QMenu* shown) { menu = shown; });
        one.view->pressControl(drives, IconControl::Tune);
        QTRY_VERIFY_WITH_TIMEOUT(menu, 15000);
        QAction* icons = findAction(menu, {"Layout", "Icons"});
        QVERIFY(icons && icons->isChecked());
        QAction* breakdown = findAction(menu, {"Layout", "Breakdown"});
        QVERIFY(breakdown && !breakdown->isChecked());
        breakdown->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(two.view->data()->sections[size_t(sectionWithGroup(*two.view->data(), "Drives"))].sec.breakdown, 15000);
        QCOMPARE(cardConfigLoad("drives", "drives").layout, std::string("breakdown"));
        const IconCardSection& tiles = two.view->data()->sections[size_t(sectionWithGroup(*two.view->data(), "Drives"))];
        QCOMPARE(tiles.tiles.size(), tiles.count()); // one tile's figures per drive
        menu->close();
    }

    void aCollapsedCardIsOneStripThatFollowsTheKeys()
    {
        const std::string downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
        QVERIFY(QDir().mkpath(QString::fromStdString(downloads)));
        for (int i = 0; i < 40; ++i)
            QFile(QString::fromStdString(downloads + "/s" + std::to_string(100 + i) + ".txt")).open(QIODevice::WriteOnly);
        cardUpdate("downloads", "files", [](CardConfig& c) { c = CardConfig::defaults("files"); }); // collapsed
        Shown s(computerRoot(), {}, {500, 400});
        QVERIFY(s.ready());
        const int dl = sectionWithGroup(*s.view->data(), "Downloads");
        QVERIFY(s.view->data()->sections[size_t(dl)].sec.strip);
        QCOMPARE(s.view->layout().sections[size_t(dl)].rows, 1);
        QVERIFY(s.view->data()->count(dl) >= 40); // with what earlier cases left there
        s.view->setFocus();
        s.view->setCurrent({dl, 0});
        for (int i = 0; i < 30; ++i)
            QTest::keyClick(s.view.get(), Qt::Key_Right);
        QCOMPARE(s.view->current(), (IconSpot{dl, 30}));
        QVERIFY(s.view->stripOffset(dl) > 0); // the strip scrolled sideways to show it
        QVERIFY(s.view->viewport()->rect().contains(s.view->itemRect({dl, 30})));
        QVERIFY(s.view->itemAt(s.view->itemRect({dl, 30}).center()) == (IconSpot{dl, 30}));
        // Down leaves the strip for the Drives card below.
        QTest::keyClick(s.view.get(), Qt::Key_Down);
        QCOMPARE(s.view->current().section, sectionWithGroup(*s.view->data(), "Drives"));
    }

    void keyboardAcrossSections()
    {
        TempTree tree;
        for (const char* name : {"alpha", "bravo", "charlie", "delta.txt", "echo.txt"})
            std::string(name).find('.') == std::string::npos ? tree.dir(std::string("k/") + name)
                                                             : tree.file(std::string("k/") + name);
        DirNodePtr folder = ScanService::scanListing(tree.path("k"), BrondelSettings{});
        // 3 items a row (376 px of 96 px cells), then Work's two entries and Recent's one.
        Shown s(folder, {testHeader("Work", "pinned:/Work", {"/w/one", "/w/two"}, 0.58),
                            testHeader("Recent", "pinned://Recent", {"/r/three"})}, {400, 600});
        QVERIFY(s.ready());
        IconCardView& v = *s.view;
        v.setFocus();
        v.setCurrent({0, 0});
        struct Step {
            Qt::Key key;
            IconSpot to;
        };
        const Step steps[] = {
            {Qt::Key_Right, {0, 1}}, {Qt::Key_Down, {0, 4}},  // the second row, same column
            {Qt::Key_Down, {1, 1}},                           // into Work, the nearest column
            {Qt::Key_Down, {2, 0}},                           // Recent has one item
            {Qt::Key_Up, {1, 0}}, {Qt::Key_Left, {0, 4}},     // left off a section's start: the one before
            {Qt::Key_Right, {1, 0}}, {Qt::Key_End, {2, 0}}, {Qt::Key_Home, {0, 0}},
        };
        for (const Step& step : steps) {
            QTest::keyClick(&v, step.key);
            QCOMPARE(v.current(), step.to);
            QVERIFY(v.isSelected(step.to));
        }
        QTest::keyClick(&v, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(&v, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(v.selectedPaths().size(), size_t(3));
        // Type-ahead by name, then Enter opens through the pane's hooks.
        QTest::keyClicks(&v, "ec");
        QCOMPARE(v.current(), (IconSpot{0, 4}));
        QTest::keyClick(&v, Qt::Key_Return);
        QCOMPARE(s.opened, (std::vector<std::string>{tree.path("k/echo.txt")}));
        // Double-click on a favourite folder opens it as well.
        QTest::mouseDClick(v.viewport(), Qt::LeftButton, {}, v.itemRect({1, 1}).center());
        QCOMPARE(s.opened.back(), std::string("/w/two"));
        // A click selects one, Ctrl adds, and a rubber band over the first row takes it.
        QTest::mouseClick(v.viewport(), Qt::LeftButton, {}, v.itemRect({0, 2}).center());
        QTest::mouseClick(v.viewport(), Qt::LeftButton, Qt::ControlModifier, v.itemRect({2, 0}).center());
        QCOMPARE(v.selectedPaths(), (std::vector<std::string>{tree.path("k/charlie"), "/r/three"}));
        const QPoint from = v.itemRect({0, 0}).topLeft() - QPoint(4, 2);
        QTest::mousePress(v.viewport(), Qt::LeftButton, {}, from);
        QTest::mouseMove(v.viewport(), from + QPoint(60, 10));
        QTest::mouseMove(v.viewport(), v.itemRect({0, 2}).center());
        QTest::mouseRelease(v.viewport(), Qt::LeftButton, {}, v.itemRect({0, 2}).center());
        QCOMPARE(v.selectedPaths().size(), size_t(3));
    }

    void accessibleItems()
    {
        TempTree tree;
        tree.file("acc/one.txt");
        tree.dir("acc/two");
        DirNodePtr folder = ScanService::scanListing(tree.path("acc"), BrondelSettings{});
        Shown s(folder, {testHeader("Work", "pinned:/Work", {"/w/three"})});
        QVERIFY(s.ready());
        QAccessibleInterface* view = QAccessible::queryAccessibleInterface(s.view.get());
        QVERIFY(view);
        QCOMPARE(view->role(), QAccessible::List);
        QCOMPARE(view->childCount(), 3);
        QStringList names;
        for (int i = 0; i < view->childCount(); ++i) {
            QAccessibleInterface* item = view->child(i);
            QCOMPARE(item->role(), QAccessible::ListItem);
            QCOMPARE(view->indexOfChild(item), i);
            names << item->text(QAccessible::Name);
        }
        QCOMPARE(names, (QStringList{"two", "one.txt", "three"}));
        s.view->setCurrent({0, 1});
        QVERIFY(view->child(1)->state().selected);
        QVERIFY(!view->child(0)->state().selected);
        QAccessibleActionInterface* action = view->child(2)->actionInterface();
        QVERIFY(action && action->actionNames().contains(QAccessibleActionInterface::pressAction()));
        action->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(s.opened, (std::vector<std::string>{"/w/three"}));
        QCOMPARE(view->childAt(s.view->viewport()->mapToGlobal(s.view->itemRect({0, 0}).center()).x(),
                     s.view->viewport()->mapToGlobal(s.view->itemRect({0, 0}).center()).y()),
            view->child(0));
    }

    void rebuildsKeepThePlace()
    {
        TempTree tree;
        for (int i = 0; i < 400; ++i)
            tree.file("many/f" + std::to_string(1000 + i) + ".txt");
        DirNodePtr folder = ScanService::scanListing(tree.path("many"), BrondelSettings{});
        auto memory = std::make_shared<IconViewMemory>();
        std::vector<std::string> selected;
        int scroll = 0;
        {
            Shown s(folder, {}, {500, 300}, memory);
            QVERIFY(s.ready());
            s.view->selectPath(tree.path("many/f1300.txt"));
            scroll = s.view->verticalScrollBar()->value();
            QVERIFY(scroll > 0);
            selected = s.view->selectedPaths();
            QSignalSpy loaded(s.view.get(), &IconCardView::loaded);
            s.view->reload(); // sizes arrived, a card changed: the same place afterwards
            QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, 15000);
            QCOMPARE(s.view->verticalScrollBar()->value(), scroll);
            QCOMPARE(s.view->selectedPaths(), selected);
        }
        // The pane's next icon view (a favourites edit rebuilt it) starts there too.
        Shown again(folder, {}, {500, 300}, memory);
        QVERIFY(again.ready());
        QCOMPARE(again.view->verticalScrollBar()->value(), scroll);
        QCOMPARE(again.view->selectedPaths(), selected);
        QCOMPARE(again.view->current(), (IconSpot{0, 300}));

        // A pane that reveals an item right after navigating asks before the sections exist.
        TestContext t;
        IconCardView fresh(folder, {}, t.context, {});
        QVERIFY(!fresh.ready());
        QVERIFY(fresh.selectPath(tree.path("many/f1007.txt")));
        QTRY_VERIFY_WITH_TIMEOUT(fresh.ready(), 15000);
        QCOMPARE(fresh.selectedPaths(), (std::vector<std::string>{tree.path("many/f1007.txt")}));
    }
};

BRONDEL_GUI_TEST_MAIN(IconCardViewTest)
#include "icon_card_view_test.moc"
