// Move to Trash, New Folder, Rename and Delete Permanently as the menus, keys and views
// run them: the first three are jobs of the file operations that Undo reverses (trashed
// items come back, a new folder still empty goes to the Trash), Delete Permanently asks
// first in a box that does not block, and leaves nothing to undo.

#include "../window/gui_test_main.h"
#include "actions/action_dialogs.h"
#include "actions/context_actions.h"
#include "actions/file_actions.h"
#include "actions/menu_setup.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "views/content_view.h"
#include "views/icon_card_view.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <unistd.h>

namespace {

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

// A window on a folder of a few items, in one view mode, with the alerts caught.
struct Window {
    TempTree tree;
    TestContext t;
    std::unique_ptr<BrowserFrame> frame;
    ActionDialogs saved = ActionDialogs::current();
    std::vector<QString> alerts;

    explicit Window(ViewMode mode)
    {
        tree.file("root/a.txt", "a");
        tree.file("root/b.txt", "b");
        tree.file("root/box/inner.txt", "i");
        ActionDialogs::current().alert = [this](QWidget*, const QString& text, const QString&) { alerts.push_back(text); };
        frame = testFrame(t, tree.path("root"));
        MenuSetup::install(frame.get()); // the keys: F2, Shift+Delete
        frame->resize(900, 600);
        frame->show();
        (void)QTest::qWaitForWindowExposed(frame.get());
        pane()->reload();
        t.scans.finishAll();
        pane()->rebuildMode(mode);
        if (auto* icons = qobject_cast<IconCardView*>(pane()->contentView()))
            (void)QTest::qWaitFor([icons] { return icons->ready(); }, 15000);
    }
    ~Window() { ActionDialogs::current() = saved; }

    BrondelWindow* pane() const { return frame->activePane(); }
    std::string path(const char* rel) const { return tree.path(std::string("root/") + rel); }
    // The window reads its folder again after a change: the read is handed over.
    void reread()
    {
        (void)QTest::qWaitFor([this] { return t.scans.count() > 0; }, 10000);
        t.scans.finishAll();
    }
    QLineEdit* renameField() const { return pane()->contentView()->findChild<QLineEdit*>(QStringLiteral("renameEditor")); }
    bool keyToWindow(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        frame->activateWindow();
        if (!QTest::qWaitForWindowActive(frame.get()))
            return false;
        QTest::keyClick(frame.get(), key, modifiers);
        return true;
    }
};

} // namespace

class UndoableActionsTest : public QObject {
    Q_OBJECT
private slots:
    void trashedItemsComeBack()
    {
        Window w(ViewMode::Column);
        ContextActions::trash(*w.pane(), {w.path("a.txt"), w.path("box")});
        QTRY_VERIFY_WITH_TIMEOUT(!exists(w.path("a.txt")) && !exists(w.path("box")), 10000);
        QTRY_COMPARE(w.t.ops.undoText(), QStringLiteral("Undo Move to Trash"));
        FileActions::undo(w.t.context, nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(exists(w.path("a.txt")) && exists(w.path("box/inner.txt")), 10000);
        QTRY_COMPARE(w.t.ops.redoText(), QStringLiteral("Redo Move to Trash"));
        QVERIFY(w.alerts.empty());
    }

    void aNewFolderIsNamedInPlaceAndUndoneWhileEmpty_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("columns") << int(ViewMode::Column);
        QTest::newRow("icons") << int(ViewMode::Icon);
    }

    void aNewFolderIsNamedInPlaceAndUndoneWhileEmpty()
    {
        QFETCH(int, mode);
        Window w{ViewMode(mode)};
        const std::string made = w.path("untitled folder");
        ContextActions::newFolder(*w.pane());
        QTRY_VERIFY_WITH_TIMEOUT(exists(made), 10000);
        w.reread();
        QTRY_VERIFY_WITH_TIMEOUT(w.renameField() != nullptr, 15000); // named at once
        QCOMPARE(w.renameField()->text(), QStringLiteral("untitled folder"));
        QTest::keyClick(w.renameField(), Qt::Key_Escape);
        QTRY_COMPARE(w.t.ops.undoText(), QStringLiteral("Undo New Folder"));
        FileActions::undo(w.t.context, nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(!exists(made), 10000);

        // One that got something inside stays, and the undo says why.
        ContextActions::newFolder(*w.pane());
        QTRY_VERIFY_WITH_TIMEOUT(exists(made), 10000);
        w.tree.file("root/untitled folder/kept.txt");
        QTRY_COMPARE(w.t.ops.undoText(), QStringLiteral("Undo New Folder"));
        FileActions::undo(w.t.context, nullptr);
        QTRY_COMPARE_WITH_TIMEOUT(w.alerts.size(), size_t(1), 10000);
        QVERIFY(w.alerts[0].contains(QStringLiteral("no longer possible")));
        QVERIFY(exists(made + "/kept.txt"));
    }

    // F2 in the icon view renames through the file operations: undone by Undo, and a
    // name already taken is refused with an alert.
    void renameInTheIconView()
    {
        Window w(ViewMode::Icon);
        QVERIFY(contentViewSelect(w.pane()->contentView(), w.path("a.txt")));
        QVERIFY(w.keyToWindow(Qt::Key_F2));
        QTRY_VERIFY(w.renameField() != nullptr);
        w.renameField()->setText(QStringLiteral("c.txt"));
        QTest::keyClick(w.renameField(), Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(exists(w.path("c.txt")) && !exists(w.path("a.txt")), 10000);
        QTRY_COMPARE(w.t.ops.undoText(), QStringLiteral("Undo Rename"));
        FileActions::undo(w.t.context, nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(exists(w.path("a.txt")), 10000);

        QVERIFY(contentViewRename(w.pane()->contentView(), w.path("b.txt")));
        w.renameField()->setText(QStringLiteral("a.txt"));
        QTest::keyClick(w.renameField(), Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(w.alerts.size(), size_t(1), 10000);
        QCOMPARE(w.alerts[0], QStringLiteral("“b.txt” could not be renamed."));
        QCOMPARE(fileReadAll(w.path("a.txt")).value_or(""), std::string("a"));
    }

    void shiftDeleteAsksThenDeletesForGood_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QString>("question");
        QTest::newRow("columns") << int(ViewMode::Column) << QStringList{"a.txt", "box"}
                                 << QStringLiteral("Delete 2 items permanently?");
        QTest::newRow("icons") << int(ViewMode::Icon) << QStringList{"box"}
                               << QStringLiteral("Delete “box” permanently?");
    }

    void shiftDeleteAsksThenDeletesForGood()
    {
        QFETCH(int, mode);
        QFETCH(QStringList, selected);
        QFETCH(QString, question);
        Window w{ViewMode(mode)};
        FileActions::rename(*w.pane(), w.path("b.txt"), "kept.txt");
        QTRY_COMPARE_WITH_TIMEOUT(w.t.ops.undoText(), QStringLiteral("Undo Rename"), 10000);
        std::vector<std::string> paths;
        for (const QString& name : selected)
            paths.push_back(w.path(qPrintable(name)));
        QCOMPARE(contentViewSelectAll(w.pane()->contentView(), paths), int(paths.size()));

        auto ask = [&]() -> QMessageBox* {
            if (!w.keyToWindow(Qt::Key_Delete, Qt::ShiftModifier))
                return nullptr;
            QMessageBox* box = nullptr;
            (void)QTest::qWaitFor([&] { return (box = w.frame->findChild<QMessageBox*>(QStringLiteral("deleteForGood"))); });
            return box;
        };
        QMessageBox* box = ask();
        QVERIFY(box);
        QCOMPARE(box->text(), question);
        QCOMPARE(box->informativeText(), QStringLiteral("This cannot be undone."));
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::Cancel)); // Return keeps the files
        box->button(QMessageBox::Cancel)->click();
        QTRY_VERIFY(!w.frame->findChild<QMessageBox*>(QStringLiteral("deleteForGood")));
        QTest::qWait(50);
        for (const std::string& path : paths)
            QVERIFY(exists(path));

        box = ask();
        QVERIFY(box);
        for (QAbstractButton* button : box->buttons())
            if (button->text() == QStringLiteral("Delete"))
                button->click();
        QTRY_VERIFY_WITH_TIMEOUT(std::none_of(paths.begin(), paths.end(), exists), 10000);
        QTest::qWait(50);
        QCOMPARE(w.t.ops.undoText(), QStringLiteral("Undo Rename")); // nothing to undo of it
        QVERIFY(w.alerts.empty());
        QVERIFY(exists(w.path("kept.txt")));
    }
};

BRONDEL_GUI_TEST_MAIN(UndoableActionsTest)
#include "undoable_actions_test.moc"
