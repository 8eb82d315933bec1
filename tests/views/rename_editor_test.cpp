// Renaming in place: bad names are refused with a reason, the editor selects the name
// without its extension, F2 opens it on the current row of the list and column views,
// and an accepted name reaches the pane (an unchanged or refused one does not).

#include "support/temp_tree.h"
#include "support/test_env.h"
#include "views/column_view.h"
#include "views/content_view.h"
#include "views/list_view.h"
#include "views/rename_editor.h"
#include "services/scan_service.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

class RenameEditorTest : public QObject {
    Q_OBJECT
private slots:
    void problems()
    {
        const struct {
            const char* name;
            bool refused;
        } cases[] = {
            {"", true}, {".", true}, {"..", true}, {"a/b", true}, {"/", true},
            {"ok.txt", false}, {"...", false}, {" spaced ", false}, {".hidden", false},
        };
        for (const auto& c : cases)
            QVERIFY2(renameProblem(QString::fromUtf8(c.name)).has_value() == c.refused, c.name);
        QVERIFY(renameProblem(QString(256, 'x')));
        QVERIFY(!renameProblem(QString(255, 'x')));
    }

    void selectionWithoutExtension()
    {
        const struct {
            const char* name;
            bool folder;
            int length;
        } cases[] = {
            {"report.pdf", false, 6}, {"archive.tar.gz", false, 11}, {".bashrc", false, 7},
            {"noext", false, 5}, {"my.folder", true, 9}, {"trailing.", false, 8},
        };
        for (const auto& c : cases)
            QVERIFY2(renameSelectionLength(QString::fromUtf8(c.name), c.folder) == c.length, c.name);
    }

    void editInListAndColumns()
    {
        TempTree tree;
        tree.file("notes.txt");
        tree.file("zeta.md");
        DirNodePtr root = ScanService::scanListing(tree.root(), BrondelSettings{});
        ScanService scans;
        BrondelSettings settings;
        BrowserContext context;
        context.scans = &scans;
        context.settings = &settings;
        for (ViewMode mode : {ViewMode::List, ViewMode::Column}) {
            std::vector<std::pair<std::string, std::string>> renamed;
            ContentHooks hooks;
            hooks.rename = [&](const std::string& path, const std::string& name) { renamed.emplace_back(path, name); };
            std::unique_ptr<QWidget> view(contentViewBuild(mode, root, {}, context, hooks));
            view->resize(600, 400);
            view->show();
            QVERIFY(QTest::qWaitForWindowExposed(view.get()));
            QVERIFY(contentViewRename(view.get(), tree.path("notes.txt")));
            auto* line = view->findChild<QLineEdit*>(QStringLiteral("renameEditor"));
            QVERIFY(line);
            QCOMPARE(line->text(), QStringLiteral("notes.txt"));
            QTRY_COMPARE(line->selectedText(), QStringLiteral("notes"));
            // A bad name stays in the field, with the reason, and is not handed on.
            line->setText(QStringLiteral("a/b"));
            QTest::keyClick(line, Qt::Key_Return);
            QCoreApplication::processEvents(); // a commit would be a queued call
            QVERIFY(renamed.empty());
            QVERIFY(!line->property("renameProblem").toString().isEmpty());
            line->setText(QStringLiteral("kept.txt"));
            QTest::keyClick(line, Qt::Key_Return);
            QTRY_COMPARE(renamed.size(), size_t(1));
            QCOMPARE(renamed[0].first, tree.path("notes.txt"));
            QCOMPARE(renamed[0].second, std::string("kept.txt"));
            // Unchanged: nothing to do.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the last editor goes
            QVERIFY(contentViewRename(view.get(), tree.path("zeta.md")));
            line = view->findChild<QLineEdit*>(QStringLiteral("renameEditor"));
            QVERIFY(line);
            QTest::keyClick(line, Qt::Key_Return);
            QTest::qWait(50);
            QCOMPARE(renamed.size(), size_t(1));
        }
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QApplication app(argc, argv);
    RenameEditorTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "rename_editor_test.moc"
