// The Trash window: the items of the home trash and a volume's trash with where they
// came from, Restore asking before it would replace anything, Delete Permanently and
// Empty Trash only after a confirmation; and the sidebar's Trash row with its state.

#include "fs/file_io.h"
#include "fs/trash_list.h"
#include "fs/trash_op.h"
#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/browser_toolbar.h"
#include "window/sidebar_view.h"
#include "window/trash_window.h"

#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>

#include <unistd.h>

namespace {

void emptyHomeTrash() { trashEraseAll(trashListAll({}), {}); }

void trashed(const std::string& path) { QVERIFY(TrashOp::trash(path)); }

QTreeWidgetItem* rowNamed(QTreeWidget* list, const QString& name)
{
    const auto found = list->findItems(name, Qt::MatchExactly, 0);
    return found.isEmpty() ? nullptr : found.front();
}

// Answers the open question with its confirming button, or with Cancel.
bool answer(TrashWindow& window, bool confirm)
{
    if (!QTest::qWaitFor([&] { return window.question() && window.question()->isVisible(); }, 5000))
        return false;
    QAbstractButton* button = confirm ? window.question()->findChild<QPushButton*>(QStringLiteral("confirm"))
                                      : window.question()->button(QMessageBox::Cancel);
    if (!button)
        return false;
    button->click();
    return true;
}

} // namespace

class TrashWindowTest : public QObject {
    Q_OBJECT
private slots:
    void listsRestoresDeletesAndEmpties()
    {
        emptyHomeTrash();
        TempTree tree;
        const std::string report = tree.file("docs/report.txt", "old report");
        trashed(report);
        trashed(tree.file("docs/notes.txt", "notes"));
        trashed(tree.file("docs/third.txt", "3"));
        const std::string uid = std::to_string(::getuid());
        const std::string volume = tree.dir("stick");
        tree.file("stick/.Trash-" + uid + "/files/song.ogg", "ogg");
        tree.file("stick/.Trash-" + uid + "/info/song.ogg.trashinfo",
            "[Trash Info]\nPath=music/song.ogg\nDeletionDate=2024-01-02T03:04:05\n");

        TrashWindow window([volume] { return std::vector<std::string>{volume}; });
        QSignalSpy changed(&window, &TrashWindow::trashChanged);
        window.show();
        window.reload();
        QTRY_VERIFY(window.isLoaded());
        QTreeWidget* list = window.list();
        QCOMPARE(list->topLevelItemCount(), 4);
        QTreeWidgetItem* song = rowNamed(list, "song.ogg");
        QVERIFY(song);
        QCOMPARE(song->text(1), QString::fromStdString(volume + "/music"));
        QVERIFY(!song->text(2).isEmpty());
        QCOMPARE(rowNamed(list, "report.txt")->text(1), QString::fromStdString(tree.path("docs")));

        // Restore onto a name taken meanwhile: asked, then kept beside it.
        tree.file("docs/report.txt", "new report");
        list->clearSelection();
        rowNamed(list, "report.txt")->setSelected(true);
        window.restoreSelected();
        QVERIFY(answer(window, true));
        QTRY_COMPARE(list->topLevelItemCount(), 3);
        QCOMPARE(fileReadAll(report).value_or(""), "new report");
        QCOMPARE(fileReadAll(tree.path("docs/report 2.txt")).value_or(""), "old report");

        // Delete Permanently: nothing happens on Cancel.
        list->clearSelection();
        rowNamed(list, "notes.txt")->setSelected(true);
        window.deleteSelected();
        QVERIFY(answer(window, false));
        QTest::qWait(200);
        QCOMPARE(list->topLevelItemCount(), 3);
        window.deleteSelected();
        QVERIFY(answer(window, true));
        QTRY_COMPARE(list->topLevelItemCount(), 2);
        QVERIFY(!rowNamed(list, "notes.txt"));

        window.emptyTrash();
        QVERIFY(answer(window, true));
        QTRY_COMPARE(list->topLevelItemCount(), 0);
        QVERIFY(!trashHasItems({volume}));
        QVERIFY(changed.count() >= 3);
    }

    void cancellingAConflictLeavesTheRestInTheTrash()
    {
        emptyHomeTrash();
        TempTree tree;
        const std::string a = tree.file("c/a.txt", "trashed a");
        trashed(a);
        trashed(tree.file("c/b.txt", "trashed b"));
        tree.file("c/a.txt", "newer a");
        TrashWindow window([] { return std::vector<std::string>{}; });
        window.show();
        window.reload();
        QTRY_VERIFY(window.isLoaded());
        window.list()->selectAll();
        window.restoreSelected();
        QVERIFY(window.isBusy());
        QVERIFY(answer(window, false));
        QTRY_VERIFY(!window.isBusy());
        QCOMPARE(fileReadAll(a).value_or(""), "newer a");
        // Nothing replaced, nothing restored under another name; the list is read again.
        QVERIFY(!fileReadAll(tree.path("c/a 2.txt")));
        QTRY_VERIFY(window.isLoaded() && !window.items().empty());
        QVERIFY(!trashListAll({}).empty());
        emptyHomeTrash();
    }

    void sidebarShowsTheTrashAndItsState()
    {
        emptyHomeTrash();
        TempTree tree;
        TestContext t;
        auto frame = testFrame(t, tree.root());
        SidebarView* sidebar = frame->sidebar();
        QSignalSpy state(sidebar, &SidebarView::trashStateChanged);
        // The sidebar reads through the test's scan service only for folders; its own
        // reads go through submit, which runs on the pool.
        QTRY_VERIFY(state.count() >= 1);
        QCOMPARE(state.last().at(0).toBool(), false);
        QVERIFY(sidebar->trashRow());
        QVERIFY(!frame->toolbar()->trashFull());

        trashed(tree.file("x.txt", "x"));
        sidebar->reload();
        QTRY_VERIFY(sidebar->trashFull());
        QTRY_VERIFY(frame->toolbar()->trashFull());

        QSignalSpy chosen(sidebar, &SidebarView::trashChosen);
        emit sidebar->itemClicked(sidebar->trashRow(), 0);
        QCOMPARE(chosen.count(), 1);
        sidebar->scrollToItem(sidebar->trashRow());
        std::unique_ptr<QMenu> menu = sidebar->menuAt(sidebar->visualItemRect(sidebar->trashRow()).center());
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), 2);
        QCOMPARE(menu->actions().at(1)->text(), QStringLiteral("Empty Trash…"));
        QVERIFY(menu->actions().at(1)->isEnabled());

        // Emptying from the menu asks once the list is in, then empties.
        TrashWindow window([] { return std::vector<std::string>{}; });
        window.emptyWhenLoaded();
        QVERIFY(answer(window, true));
        QTRY_VERIFY(!trashHasItems({}));
    }
};

BRONDEL_GUI_TEST_MAIN(TrashWindowTest)
#include "trash_window_test.moc"
