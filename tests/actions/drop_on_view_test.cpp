// Files dropped on a view from another application (text/uri-list), with the keys held
// at the drop: on one device a plain drop moves, Ctrl copies, Shift moves; onto the empty
// space they land in the shown folder, onto a folder's row in that folder.

#include "../window/gui_test_main.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "views/column_view.h"
#include "views/list_view.h"

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
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("moves");
        QTest::addColumn<bool>("ontoRow");
        for (ViewMode mode : {ViewMode::Column, ViewMode::List}) {
            const QByteArray name = mode == ViewMode::List ? "list, " : "columns, ";
            QTest::newRow(name + "plain, same device: moved") << int(mode) << int(Qt::NoModifier) << true << false;
            QTest::newRow(name + "Ctrl: copied") << int(mode) << int(Qt::ControlModifier) << false << false;
            QTest::newRow(name + "Shift: moved") << int(mode) << int(Qt::ShiftModifier) << true << false;
            QTest::newRow(name + "Ctrl onto a folder's row: copied into it")
                << int(mode) << int(Qt::ControlModifier) << false << true;
        }
    }

    void keysAtTheDropChooseCopyOrMove()
    {
        QFETCH(int, mode);
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
        pane->rebuildMode(ViewMode(mode));
        pane->resize(700, 400);
        pane->show();
        QVERIFY(QTest::qWaitForWindowExposed(pane.get()));
        QAbstractItemView* view = nullptr;
        const NodeTreeModel* model = nullptr;
        if (auto* browser = qobject_cast<BrondelBrowser*>(pane->contentView())) {
            view = browser->columns().first();
            model = browser->source();
        } else if (auto* list = qobject_cast<BrondelOutlineView*>(pane->contentView())) {
            view = list;
            model = list->source();
        }
        QVERIFY(view && model);

        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(QString::fromStdString(item))});
        const QPoint at = ontoRow ? view->visualRect(model->indexOfPath(shown + "/sub")).center()
                                  : QPoint(view->viewport()->width() / 2, view->viewport()->height() - 4);
        dropAt(view->viewport(), at, mime, Qt::KeyboardModifiers(modifiers));
        const std::string landed = shown + (ontoRow ? "/sub/item.txt" : "/item.txt");
        QTRY_VERIFY_WITH_TIMEOUT(exists(landed), 10000);
        QTRY_COMPARE_WITH_TIMEOUT(exists(item), !moves, 10000);
        QCOMPARE(fileReadAll(landed).value_or(""), std::string("payload"));
    }
};

BRONDEL_GUI_TEST_MAIN(DropOnViewTest)
#include "drop_on_view_test.moc"
