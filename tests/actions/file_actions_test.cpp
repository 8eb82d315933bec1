// Opening files with the applications of their type: the default application is started
// with the file expanded into its command line, a type nothing opens says so in an
// alert, and Open With lists the default first.

#include "actions/action_dialogs.h"
#include "actions/file_actions.h"
#include "actions/workspace.h"
#include "ops/op_queue.h"
#include "fs/file_io.h"
#include "services/scan_service.h"
#include "support/temp_tree.h"
#include "support/test_env.h"
#include "window/brondel_window.h"
#include "window/gui_test_main.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <unistd.h>

class FileActionsTest : public QObject {
    Q_OBJECT
private slots:
    void openWithTheDefaultApplication()
    {
        // Two applications for plain text in the test's own data folder (the system's are
        // hidden), before anything asks GIO; the user's list makes the second the default.
        // It copies the file beside itself.
        const std::string apps = testIsolateApplications();
        QVERIFY(fileWriteAtomic(apps + "/viewer.desktop",
            "[Desktop Entry]\nType=Application\nName=Viewer\nExec=true %U\nMimeType=text/plain;\n"));
        QVERIFY(fileWriteAtomic(apps + "/copier.desktop",
            R"([Desktop Entry]
Type=Application
Name=Copier
Exec=sh -c "cp \\"\\$1\\" \\"\\$1.opened\\"" sh %f
MimeType=text/plain;
)"));
        QVERIFY(fileWriteAtomic(apps + "/mimeinfo.cache", "[MIME Cache]\ntext/plain=viewer.desktop;copier.desktop;\n"));
        QVERIFY(fileWriteAtomic(std::string(qgetenv("XDG_CONFIG_HOME").constData()) + "/mimeapps.list",
            "[Default Applications]\ntext/plain=copier.desktop\n"));

        TestContext t;
        QVERIFY(!FileActions::openDefault(nullptr, "/x/not-read-yet.txt")); // the list is not read yet
        FileActions::warmUp();
        FileActions::waitForApps();

        std::vector<QString> alerts;
        ActionDialogs saved = ActionDialogs::current();
        ActionDialogs::current().alert = [&](QWidget*, const QString& text, const QString&) { alerts.push_back(text); };

        TempTree tree;
        const std::string note = tree.file("my note.txt", "hello");
        QVERIFY(FileActions::openDefault(nullptr, note));
        QTRY_VERIFY_WITH_TIMEOUT(::access((note + ".opened").c_str(), F_OK) == 0, 10000);
        QVERIFY(alerts.empty());

        // A type no application takes: an alert, nothing started.
        QVERIFY(FileActions::openDefault(nullptr, tree.file("tune.flac")));
        QTRY_COMPARE_WITH_TIMEOUT(alerts.size(), size_t(1), 10000);
        QVERIFY(alerts[0].contains(QStringLiteral("tune.flac")));
        // A name that tells no type goes to the desktop's opener.
        QVERIFY(!FileActions::openDefault(nullptr, tree.file("blob.qqzx")));

        // Open With: the default first, then the other, then the chooser.
        auto pane = std::make_unique<BrondelWindow>(ScanService::scanListing(tree.root(), t.settings), RootKind::Folder,
            t.context);
        QMenu menu;
        FileActions::openWithFill(menu, *pane, note);
        auto titles = [](QMenu& menu) {
            QStringList out;
            for (QAction* action : menu.actions())
                out << (action->isSeparator() ? QStringLiteral("-") : action->text());
            return out;
        };
        QTRY_COMPARE_WITH_TIMEOUT(titles(menu), (QStringList{"Copier", "Viewer", "-", "Other Application\u2026"}), 10000);

        // The chooser opens with the file and, when asked, makes its choice the default:
        // the user's mimeapps.list names it, and the next menu follows.
        menu.actions().last()->trigger();
        QDialog* chooser = nullptr;
        QTRY_VERIFY((chooser = pane->findChild<QDialog*>()) && chooser->isVisible());
        auto* list = chooser->findChild<QListWidget*>(QStringLiteral("applications"));
        QCOMPARE(list->count(), 2);
        const QList<QListWidgetItem*> viewer = list->findItems(QStringLiteral("Viewer"), Qt::MatchExactly);
        QCOMPARE(viewer.size(), 1);
        list->setCurrentItem(viewer.front());
        chooser->findChild<QCheckBox*>(QStringLiteral("setDefault"))->setChecked(true);
        chooser->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open)->click();
        FileActions::waitForApps();
        const std::string mimeapps = std::string(qgetenv("XDG_CONFIG_HOME").constData()) + "/mimeapps.list";
        QVERIFY(fileReadAll(mimeapps).value_or("").find("text/plain=viewer.desktop") != std::string::npos);
        QMenu again;
        FileActions::openWithFill(again, *pane, note);
        QTRY_COMPARE_WITH_TIMEOUT(titles(again).value(0), QStringLiteral("Viewer"), 10000);
        QCOMPARE(alerts.size(), size_t(1)); // only the type nothing opened, above
        ActionDialogs::current() = saved;
    }

    // Through the real file operations: a cut pasted moves, a rename renames, undo puts
    // the name back, and a failed rename says why.
    void cutPasteRenameAndUndo()
    {
        TempTree tree;
        const std::string from = tree.file("from/report.txt", "data");
        const std::string to = tree.dir("to");
        TestContext t;
        OpQueue queue;
        t.context.ops = &queue;
        std::vector<QString> alerts;
        ActionDialogs saved = ActionDialogs::current();
        ActionDialogs::current().alert = [&](QWidget*, const QString& text, const QString&) { alerts.push_back(text); };
        auto pane = std::make_unique<BrondelWindow>(ScanService::scanListing(to, t.settings), RootKind::Folder, t.context);

        FileActions::cut({from});
        FileActions::paste(*pane, to);
        QTRY_VERIFY_WITH_TIMEOUT(::access((to + "/report.txt").c_str(), F_OK) == 0, 10000);
        QCOMPARE(::access(from.c_str(), F_OK), -1);
        QVERIFY(!workspaceClipboardFiles()); // what was cut moves once

        FileActions::rename(*pane, to + "/report.txt", "final.txt");
        QTRY_VERIFY_WITH_TIMEOUT(::access((to + "/final.txt").c_str(), F_OK) == 0, 10000);
        QTRY_VERIFY(queue.canUndo());
        QCOMPARE(queue.undoText(), QStringLiteral("Undo Rename"));
        FileActions::undo(t.context, nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(::access((to + "/report.txt").c_str(), F_OK) == 0, 10000);

        FileActions::rename(*pane, to + "/missing.txt", "x.txt");
        QTRY_COMPARE_WITH_TIMEOUT(alerts.size(), size_t(1), 10000);
        QVERIFY(alerts[0].contains(QStringLiteral("missing.txt")));
        ActionDialogs::current() = saved;
    }
};

BRONDEL_GUI_TEST_MAIN(FileActionsTest)
#include "file_actions_test.moc"
