// The location field: completion from the typed folder read in the background (late
// readings dropped), Enter to a folder navigates the active pane, anything else says why
// in place, Escape closes.

#include "fs/paths.h"
#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/browser_frame.h"
#include "window/path_entry.h"

#include <QLineEdit>

#include <memory>

namespace {

std::unique_ptr<BrowserFrame> frameOn(TestContext& t, const std::string& path)
{
    auto frame = testFrame(t, path);
    frame->show();
    QApplication::setActiveWindow(frame.get());
    return frame;
}

void type(PathEntry& entry, const QString& text)
{
    entry.edit()->clear();
    QTest::keyClicks(entry.edit(), text);
}

} // namespace

class PathEntryTest : public QObject {
    Q_OBJECT
private slots:
    void resolvesTypedText()
    {
        const std::string home = "/home/u";
        struct Case {
            const char* typed;
            const char* base;
            const char* expected;
        };
        for (const Case& c : {Case{"~", "/x", "/home/u"}, Case{"~/Docs/", "/x", "/home/u/Docs"},
                 Case{"/etc//", "/x", "/etc"}, Case{"sub", "/x", "/x/sub"}, Case{"sub", "/", "/home/u/sub"},
                 Case{"  /tmp  ", "/x", "/tmp"}})
            QCOMPARE(pathEntryResolve(QString::fromLatin1(c.typed), c.base, home), std::string(c.expected));
        QCOMPARE(pathEntryFolderPart(QStringLiteral("~/Pro")), QStringLiteral("~/"));
        QCOMPARE(pathEntryFolderPart(QStringLiteral("Pro")), QString());
    }

    void completesAndNavigates()
    {
        TestContext t;
        TempTree tree;
        tree.dir("Projects/alpha");
        tree.dir("Projects/beta");
        tree.file("Projects/notes.txt");
        tree.dir("Pictures");
        auto frame = frameOn(t, tree.root());
        QVERIFY(QTest::qWaitForWindowActive(frame.get()));
        QTest::keyClick(frame.get(), Qt::Key_L, Qt::ControlModifier);
        PathEntry* entry = frame->pathEntry();
        QVERIFY(entry->isVisible());
        QVERIFY(entry->edit()->hasFocus());

        const QString root = QString::fromStdString(tree.root());
        type(*entry, root + QStringLiteral("/Projects/a"));
        QCOMPARE(entry->listedFolder(), tree.path("Projects"));
        // The user types on into another folder before the first reading lands: it is dropped.
        const size_t first = t.scans.count() - 1;
        type(*entry, root + QStringLiteral("/P"));
        const size_t second = t.scans.count() - 1;
        QVERIFY(second > first);
        t.scans.finish(second);
        t.scans.finish(first);
        QCOMPARE(entry->candidates(), (QStringList{root + QStringLiteral("/Pictures/"), root + QStringLiteral("/Projects/")}));

        type(*entry, root + QStringLiteral("/Nowhere"));
        QTest::keyClick(entry->edit(), Qt::Key_Return);
        QTRY_VERIFY(entry->errorText().contains(QStringLiteral("Nowhere")));
        QVERIFY(entry->isVisible());
        QCOMPARE(frame->activePane()->currentLocation(), tree.root());

        type(*entry, root + QStringLiteral("/Projects/notes.txt"));
        QTest::keyClick(entry->edit(), Qt::Key_Return);
        QTRY_VERIFY(entry->errorText().contains(QStringLiteral("not a folder")));

        type(*entry, root + QStringLiteral("/Projects/beta/"));
        QTest::keyClick(entry->edit(), Qt::Key_Return);
        QTRY_COMPARE(frame->activePane()->currentLocation(), tree.path("Projects/beta"));
        QVERIFY(!entry->isVisible());
    }

    void tildeAndEscape()
    {
        TestContext t;
        TempTree tree;
        auto frame = frameOn(t, tree.root());
        frame->openPathEntry();
        PathEntry* entry = frame->pathEntry();
        QVERIFY(entry->edit()->text().startsWith(QLatin1Char('~'))); // the temporary tree lies in the home
        QTest::keyClick(entry->edit(), Qt::Key_Escape);
        QVERIFY(!entry->isVisible());
        QCOMPARE(frame->activePane()->currentLocation(), tree.root());

        frame->openPathEntry();
        type(*entry, QStringLiteral("~"));
        QTest::keyClick(entry->edit(), Qt::Key_Return);
        QTRY_COMPARE(frame->activePane()->currentLocation(), homeDir());
    }
};

BRONDEL_GUI_TEST_MAIN(PathEntryTest)
#include "path_entry_test.moc"
