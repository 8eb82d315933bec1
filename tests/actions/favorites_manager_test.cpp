// The favourites manager: each operation reaches the favourites and palette files (in a
// temporary home), the window shows the files afterwards, and a drop becomes the move
// it shows.

#include "../window/gui_test_main.h"
#include "actions/favorites_manager.h"
#include "actions/management_windows.h"
#include "config/config_file.h"
#include "config/palette.h"
#include "config/pinned_file.h"
#include "fs/file_io.h"
#include "fs/paths.h"
#include "support/temp_tree.h"

#include <QTableWidget>

namespace {

std::vector<std::string> titles()
{
    std::vector<std::string> out;
    for (const PinnedSec& sec : pinnedRead().secs)
        out.push_back(sec.title);
    return out;
}

std::vector<std::string> pathsOf(const std::string& title)
{
    for (const PinnedSec& sec : pinnedRead().secs)
        if (sec.title == title)
            return sec.paths;
    return {};
}

// Waits until the manager has shown the files as they are after its last edit.
bool settled(FavoritesManager& manager)
{
    QSignalSpy shown(&manager, &FavoritesManager::reloaded);
    return shown.wait(5000) && manager.shown() == pinnedRead();
}

} // namespace

class FavoritesManagerTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        fileWriteAtomic(pinnedFilePath(), std::string(kPinnedDefaultHeader));
    }

    void operationsReachTheFiles()
    {
        TestContext t;
        TempTree tree;
        const std::string a = tree.dir("a"), b = tree.dir("b"), c = tree.dir("c");
        FavoritesManager manager(t.context);
        QVERIFY(settled(manager));

        manager.addSection("Work");
        QVERIFY(settled(manager));
        manager.addSection("Play");
        QVERIFY(settled(manager));
        manager.addFolders("Work", {QString::fromStdString(a), QString::fromStdString(b)});
        QVERIFY(settled(manager));
        manager.addFolders("Play", {QString::fromStdString(c)});
        QVERIFY(settled(manager));
        QCOMPARE(pathsOf("Work").size(), size_t(2));
        QCOMPARE(manager.tree()->topLevelItem(0)->childCount(), 2);

        struct Step {
            const char* what;
            std::function<void()> act;
            std::function<bool()> holds;
        };
        const Step steps[] = {
            {"rename", [&] { manager.renameSection("Play", "Games"); },
                [] { return titles() == std::vector<std::string>{"Work", "Games"}; }},
            {"reorder sections", [&] { manager.shiftSection("Games", -1); },
                [] { return titles() == std::vector<std::string>{"Games", "Work"}; }},
            {"reorder folders", [&] { manager.moveFolder(b, "Work", 0); },
                [&] { return pathsOf("Work").size() == 2 && expandTilde(pathsOf("Work")[0]) == b; }},
            {"move to another section", [&] { manager.moveFolder(a, "Games", 0); },
                [&] { return pathsOf("Games").size() == 2 && expandTilde(pathsOf("Games")[0]) == a; }},
            {"colour", [&] { manager.setColor("Work", 0.25); },
                [] { return pinnedRead().secs[1].color == std::optional<double>(0.25); }},
            {"automatic colour", [&] { manager.setColor("Work", std::nullopt); },
                [] { return !pinnedRead().secs[1].color; }},
            {"remove folder", [&] { manager.removeFolder(c); },
                [&] { return pathsOf("Games").size() == 1; }},
            {"remove section", [&] { manager.removeSection("Games"); },
                [] { return titles() == std::vector<std::string>{"Work"}; }},
            {"palette", [&] { manager.savePalette({{"Sky", 0.55}, {"Sun", 0.15}}); },
                [] { return pinnedPalette() == Palette{{"Sky", 0.55}, {"Sun", 0.15}}; }},
        };
        for (const Step& step : steps) {
            step.act();
            QVERIFY2(settled(manager), step.what);
            QVERIFY2(step.holds(), step.what);
        }
        QCOMPARE(manager.paletteTable()->rowCount(), 2);
        QCOMPARE(manager.paletteTable()->item(0, 0)->text(), QStringLiteral("Sky"));
    }

    void refusedNamesSayWhyAndWriteNothing()
    {
        TestContext t;
        FavoritesManager manager(t.context);
        QVERIFY(settled(manager));
        const std::string before = fileReadAll(pinnedFilePath()).value_or("");
        manager.addSection("Say \"hi\"");
        QVERIFY(!manager.errorText().isEmpty());
        manager.savePalette({{"A = B", 0.5}});
        QVERIFY(manager.errorText().contains(QStringLiteral("A = B")));
        manager.reload();
        QVERIFY(settled(manager));
        QCOMPARE(fileReadAll(pinnedFilePath()).value_or(""), before);
        QVERIFY(pinnedPalette() != (Palette{{"A = B", 0.5}}));
    }

    void dropsBecomeMoves()
    {
        TestContext t;
        TempTree tree;
        const std::string a = tree.dir("a"), b = tree.dir("b");
        pinnedAdd(a, "Work");
        pinnedAdd(b, "Work");
        pinnedAddSection("Play");
        FavoritesManager manager(t.context);
        QVERIFY(settled(manager));
        emit manager.tree()->sectionDropped(1, 0);
        QVERIFY(settled(manager));
        QCOMPARE(titles(), (std::vector<std::string>{"Play", "Work"}));
        emit manager.tree()->folderDropped(1, 1, 1, 0); // b above a
        QVERIFY(settled(manager));
        QCOMPARE(expandTilde(pathsOf("Work").front()), b);
        emit manager.tree()->folderDropped(1, 0, 0, 0); // b into Play
        QVERIFY(settled(manager));
        QCOMPARE(pathsOf("Play").size(), size_t(1));
        QCOMPARE(manager.tree()->topLevelItem(0)->child(0)->data(0, Qt::UserRole + 1).toByteArray().toStdString(), b);
    }

    void dropsLandWhereTheyAreShown()
    {
        // Moving down past the items below takes one place less than the insertion row.
        QCOMPARE(favoritesLandingIndex(0, 2), 1);
        QCOMPARE(favoritesLandingIndex(2, 0), 0);
        QCOMPARE(favoritesLandingIndex(1, 1), 1);
        QCOMPARE(favoritesLandingIndex(1, 3), 2);
    }

    void oneManagerAtATime()
    {
        TestContext t;
        favoritesManagerShow(nullptr, t.context);
        favoritesManagerShow(nullptr, t.context);
        int open = 0;
        for (QWidget* w : QApplication::topLevelWidgets())
            open += qobject_cast<FavoritesManager*>(w) && w->isVisible();
        QCOMPARE(open, 1);
        for (QWidget* w : QApplication::topLevelWidgets())
            if (qobject_cast<FavoritesManager*>(w))
                w->close();
    }
};

BRONDEL_GUI_TEST_MAIN(FavoritesManagerTest)
#include "favorites_manager_test.moc"
