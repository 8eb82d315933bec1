// Files dropped on a view from another application (text/uri-list), with the keys held
// at the drop: on one device a plain drop moves, Ctrl copies, Shift moves; onto the empty
// space they land in the shown folder, onto a folder's row in that folder.

#include "../window/gui_test_main.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "views/column_view.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <unistd.h>

namespace {

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

// Drags `mime` over `target` at `at` and drops it there, the keys `modifiers` held.
void dropAt(QWidget* target, QPoint at, const QMimeData& mime, Qt::KeyboardModifiers modifiers)
{
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QDragEnterEvent enter(at, offered, &mime, Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &enter);
    QDragMoveEvent move(at, offered, &mime, Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &move);
    QDropEvent drop(at, offered, &mime, Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &drop);
}

} // namespace

class DropOnViewTest : public QObject {
    Q_OBJECT
private slots:
    void keysAtTheDropChooseCopyOrMove_data()
    {
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("moves");
        QTest::addColumn<bool>("ontoRow");
        QTest::newRow("plain, same device: moved") << int(Qt::NoModifier) << true << false;
        QTest::newRow("Ctrl: copied") << int(Qt::ControlModifier) << false << false;
        QTest::newRow("Shift: moved") << int(Qt::ShiftModifier) << true << false;
        QTest::newRow("Ctrl onto a folder's row: copied into it") << int(Qt::ControlModifier) << false << true;
    }

    void keysAtTheDropChooseCopyOrMove()
    {
        QFETCH(int, modifiers);
        QFETCH(bool, moves);
        QFETCH(bool, ontoRow);
        TempTree tree;
        const std::string item = tree.file("from/item.txt", "payload");
        const std::string shown = tree.dir("to");
        tree.dir("to/sub");
        TestContext t;
        auto pane = std::make_unique<BrondelWindow>(ScanService::scanListing(shown, t.settings), RootKind::Folder,
            t.context);
        pane->rebuildMode(ViewMode::Column);
        pane->resize(700, 400);
        pane->show();
        QVERIFY(QTest::qWaitForWindowExposed(pane.get()));
        auto* browser = qobject_cast<BrondelBrowser*>(pane->contentView());
        QVERIFY(browser);
        QAbstractItemView* column = browser->columns().first();

        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(QString::fromStdString(item))});
        const QPoint at = ontoRow ? column->visualRect(browser->source()->indexOfPath(shown + "/sub")).center()
                                  : QPoint(column->viewport()->width() / 2, column->viewport()->height() - 4);
        dropAt(column->viewport(), at, mime, Qt::KeyboardModifiers(modifiers));
        const std::string landed = shown + (ontoRow ? "/sub/item.txt" : "/item.txt");
        QTRY_VERIFY_WITH_TIMEOUT(exists(landed), 10000);
        QTRY_COMPARE_WITH_TIMEOUT(exists(item), !moves, 10000);
        QCOMPARE(fileReadAll(landed).value_or(""), std::string("payload"));
    }
};

BRONDEL_GUI_TEST_MAIN(DropOnViewTest)
#include "drop_on_view_test.moc"
