// Renaming in place in the icon view: F2 (the window's Rename) and a slow second click
// open a field over the item's name with the rename editor's rules; Return hands a good
// name to the rename hook, Escape and bad names do not; favourites are not renamed here;
// the field survives a rebuild and opens on an item asked for before the first build.

#include "../window/gui_test_main.h"
#include "support/temp_tree.h"
#include "views/content_view.h"
#include "views/icon_card_view.h"

#include <QLineEdit>
#include <QStyleHints>

namespace {

struct Renames {
    TempTree tree;
    TestContext t;
    std::vector<std::pair<std::string, std::string>> asked; // path, new name
    std::vector<std::string> opened;
    ContentHooks hooks;
    DirNodePtr folder;

    Renames()
    {
        tree.file("f/report.txt", "r");
        tree.dir("f/sub");
        tree.file("f/archive.tar.gz");
        folder = ScanService::scanListing(tree.path("f"), BrondelSettings{});
        hooks.rename = [this](const std::string& path, const std::string& name) { asked.emplace_back(path, name); };
        hooks.openFolder = [this](const std::string& path) { opened.push_back(path); };
        hooks.openFile = [this](const std::string& path) { opened.push_back(path); };
    }

    std::unique_ptr<IconCardView> show()
    {
        auto view = std::make_unique<IconCardView>(folder,
            std::vector<DirNodePtr>{testHeader("Work", "pinned:/Work", {"/w1"})}, t.context, hooks);
        view->resize(600, 400);
        view->show();
        (void)QTest::qWaitForWindowExposed(view.get());
        (void)QTest::qWaitFor([&] { return view->ready(); }, 15000);
        return view;
    }
};

void typeAndPress(QLineEdit* field, const QString& text, Qt::Key key)
{
    field->setText(text);
    QTest::keyClick(field, key);
}

} // namespace

class IconRenameTest : public QObject {
    Q_OBJECT
private slots:
    void fieldFollowsTheEditorRules()
    {
        Renames r;
        auto view = r.show();
        QVERIFY(view->ready());
        const std::string report = r.tree.path("f/report.txt");
        QVERIFY(contentViewRename(view.get(), report));
        QLineEdit* field = view->renameField();
        QVERIFY(field);
        QCOMPARE(field->objectName(), QStringLiteral("renameEditor"));
        QCOMPARE(field->text(), QStringLiteral("report.txt"));
        QTRY_COMPARE(field->selectedText(), QStringLiteral("report")); // the extension left out
        QVERIFY(view->itemRect(view->current()).intersects(field->geometry())); // over the item

        // Names that cannot be: said why, the field stays, nothing renamed.
        for (const QString& bad : {QStringLiteral("a/b"), QString(), QStringLiteral("..")}) {
            typeAndPress(field, bad, Qt::Key_Return);
            QCOMPARE(view->renameField(), field);
            QVERIFY(!field->property("renameProblem").toString().isEmpty());
        }
        QVERIFY(r.asked.empty());
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(!view->renameField());
        QVERIFY(r.asked.empty());

        // A good name goes to the hook, the focus back to the view.
        QVERIFY(contentViewRename(view.get()));
        typeAndPress(view->renameField(), QStringLiteral("final.txt"), Qt::Key_Return);
        QVERIFY(!view->renameField());
        QCOMPARE(r.asked, (std::vector<std::pair<std::string, std::string>>{{report, "final.txt"}}));
        QVERIFY(view->hasFocus());
        // Unchanged: nothing asked.
        QVERIFY(contentViewRename(view.get()));
        QTest::keyClick(view->renameField(), Qt::Key_Return);
        QCOMPARE(r.asked.size(), size_t(1));

        // A folder is selected whole, a double extension up to its last dot; a favourite
        // is not renamed here.
        for (auto [name, selected] : {std::pair{"sub", "sub"}, std::pair{"archive.tar.gz", "archive.tar"}}) {
            QVERIFY(contentViewRename(view.get(), r.tree.path("f/") + name));
            QTRY_COMPARE(view->renameField()->selectedText(), QString::fromLatin1(selected));
            QTest::keyClick(view->renameField(), Qt::Key_Escape);
        }
        QVERIFY(!contentViewRename(view.get(), "/w1"));
        QVERIFY(!view->renameField());
    }

    void slowSecondClickOpensItAndADoubleClickDoesNot()
    {
        Renames r;
        auto view = r.show();
        QVERIFY(view->ready());
        QVERIFY(view->selectPath(r.tree.path("f/report.txt")));
        const QPoint at = view->itemRect(view->current()).center();
        const int interval = QGuiApplication::styleHints()->mouseDoubleClickInterval();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
        QTRY_VERIFY_WITH_TIMEOUT(view->renameField() != nullptr, interval * 4);
        QTest::keyClick(view->renameField(), Qt::Key_Escape);

        QTest::qWait(interval + 50);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at);
        QTest::qWait(interval * 2);
        QVERIFY(!view->renameField());
        QCOMPARE(r.opened, std::vector<std::string>{r.tree.path("f/report.txt")});

        // A first click only selects.
        QTest::qWait(interval + 50);
        const QPoint other = view->itemRect({view->current().section, view->current().index == 0 ? 1u : 0u}).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, other);
        QTest::qWait(interval * 2);
        QVERIFY(!view->renameField());
    }

    void survivesARebuildAndWaitsForTheFirstOne()
    {
        Renames r;
        auto view = r.show();
        QVERIFY(view->ready());
        QVERIFY(contentViewRename(view.get(), r.tree.path("f/sub")));
        QLineEdit* field = view->renameField();
        field->setText(QStringLiteral("half typed"));
        QSignalSpy loaded(view.get(), &IconCardView::loaded);
        view->reload();
        QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, 15000);
        QCOMPARE(view->renameField(), field);
        QCOMPARE(field->text(), QStringLiteral("half typed"));

        // Asked before the sections exist (a new folder named at once): opens on arrival.
        IconCardView fresh(r.folder, {}, r.t.context, r.hooks);
        fresh.resize(600, 400);
        fresh.show();
        QVERIFY(contentViewRename(&fresh, r.tree.path("f/report.txt")));
        QTRY_VERIFY_WITH_TIMEOUT(fresh.renameField() != nullptr, 15000);
        QCOMPARE(fresh.renameField()->text(), QStringLiteral("report.txt"));
    }
};

BRONDEL_GUI_TEST_MAIN(IconRenameTest)
#include "icon_rename_test.moc"
