// The column view during a drag: a folder hovered for a moment opens its column
// (spring-loaded), a file, a short hover or a drag that leaves opens nothing.

#include "../window/gui_test_main.h"
#include "support/temp_tree.h"
#include "views/column_view.h"

#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QMimeData>
#include <QUrl>

namespace {

struct Browser {
    TempTree tree;
    TestContext t;
    std::unique_ptr<BrondelBrowser> view;
    QMimeData mime; // a file from elsewhere, as another application drags it

    Browser()
    {
        tree.file("root/inner/deeper/x.txt");
        tree.dir("root/other");
        tree.file("root/file.txt");
        mime.setUrls({QUrl::fromLocalFile(QString::fromStdString(tree.file("outside.txt")))});
        auto* source = new ColumnSource(ScanService::scanListing(tree.path("root"), t.settings), {}, t.context);
        view = std::make_unique<BrondelBrowser>(source, t.context, ContentHooks{});
        view->resize(700, 400);
        view->show();
        (void)QTest::qWaitForWindowExposed(view.get());
    }

    QAbstractItemView* first() const { return view->columns().first(); }
    QPoint rowOf(const std::string& rel) const
    {
        return first()->visualRect(view->source()->indexOfPath(tree.path(rel))).center();
    }
    void drag(QEvent::Type type, QPoint at)
    {
        QWidget* target = first()->viewport();
        if (type == QEvent::DragLeave) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(target, &leave);
            return;
        }
        QDragMoveEvent move(at, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier, type);
        QApplication::sendEvent(target, &move);
    }
    std::string current() const
    {
        const DirNodePtr node = view->source()->nodeAt(view->currentIndex());
        return node ? node->path : std::string();
    }
};

} // namespace

class ColumnViewTest : public QObject {
    Q_OBJECT
private slots:
    void aHoveredFolderOpensAfterAMoment()
    {
        Browser b;
        QElapsedTimer clock;
        clock.start();
        b.drag(QEvent::DragEnter, b.rowOf("root/inner"));
        b.drag(QEvent::DragMove, b.rowOf("root/inner") + QPoint(3, 0)); // still on it: the wait goes on
        QTest::qWait(BrondelBrowser::kSpringDelayMs / 2);
        QVERIFY(b.current().empty());
        QTRY_COMPARE_WITH_TIMEOUT(b.current(), b.tree.path("root/inner"), 5000);
        QVERIFY(clock.elapsed() >= BrondelBrowser::kSpringDelayMs - 50);
        QTRY_VERIFY(b.view->columns().size() >= 2); // its column is open beside
    }

    void aFileAShortHoverOrALeaveOpensNothing_data()
    {
        QTest::addColumn<QString>("hovered");
        QTest::addColumn<bool>("leaves");
        QTest::newRow("a file") << "root/file.txt" << false;
        QTest::newRow("left before the moment") << "root/other" << true;
    }

    void aFileAShortHoverOrALeaveOpensNothing()
    {
        QFETCH(QString, hovered);
        QFETCH(bool, leaves);
        Browser b;
        b.drag(QEvent::DragEnter, b.rowOf(hovered.toStdString()));
        QTest::qWait(BrondelBrowser::kSpringDelayMs / 4);
        if (leaves)
            b.drag(QEvent::DragLeave, {});
        QTest::qWait(BrondelBrowser::kSpringDelayMs * 2);
        QVERIFY(b.current().empty());

        // Moving on from a folder to a file before the moment is over opens nothing either.
        b.drag(QEvent::DragEnter, b.rowOf("root/other"));
        QTest::qWait(BrondelBrowser::kSpringDelayMs / 2);
        b.drag(QEvent::DragMove, b.rowOf("root/file.txt"));
        QTest::qWait(BrondelBrowser::kSpringDelayMs * 2);
        QVERIFY(b.current().empty());
    }
};

BRONDEL_GUI_TEST_MAIN(ColumnViewTest)
#include "column_view_test.moc"
