// Rows drag out as files and files dropped on the model go into the right folder: a
// folder row takes them, a file row or the empty space hands them to the shown folder.
// Only a folder's own entries can be renamed in place.

#include "services/file_clipboard.h"
#include "services/scan_service.h"
#include "support/temp_tree.h"
#include "support/test_env.h"
#include "views/list_source.h"

#include <QApplication>
#include <QTest>

#include <memory>

class NodeTreeModelTest : public QObject {
    Q_OBJECT
private slots:
    void dragAndDropTargets()
    {
        TempTree tree;
        tree.dir("box");
        tree.file("note.txt");
        ScanService scans;
        BrondelSettings settings;
        BrowserContext context;
        context.scans = &scans;
        context.settings = &settings;
        ListSource model(ScanService::scanListing(tree.root(), settings), {}, context);
        const QModelIndex box = model.indexOfPath(tree.path("box"));
        const QModelIndex note = model.indexOfPath(tree.path("note.txt"));
        QVERIFY(box.isValid() && note.isValid());

        std::unique_ptr<QMimeData> dragged(model.mimeData({box, note, note.siblingAtColumn(1)}));
        QVERIFY(dragged);
        const auto files = fileClipboardRead(*dragged);
        QVERIFY(files);
        QCOMPARE(files->paths, (std::vector<std::string>{tree.path("box"), tree.path("note.txt")}));

        std::unique_ptr<QMimeData> incoming(fileClipboardData({"/elsewhere/a"}, ClipboardIntent::Copy));
        QVERIFY(!model.canDropMimeData(incoming.get(), Qt::MoveAction, -1, -1, box)); // no drop hook: no drops
        std::vector<std::pair<std::vector<std::string>, std::string>> drops;
        model.setDrop([&](std::vector<std::string> paths, std::string folder) { drops.emplace_back(paths, folder); });
        const struct {
            const char* name;
            QModelIndex parent;
            int row;
            std::string folder;
        } cases[] = {
            {"onto a folder row", box, -1, tree.path("box")},
            {"empty space", QModelIndex(), -1, tree.root()},
            {"between rows", QModelIndex(), 1, tree.root()},
        };
        for (const auto& c : cases) {
            drops.clear();
            QVERIFY2(model.canDropMimeData(incoming.get(), Qt::MoveAction, c.row, 0, c.parent), c.name);
            model.dropMimeData(incoming.get(), Qt::MoveAction, c.row, 0, c.parent);
            QCOMPARE(drops.size(), size_t(1));
            QCOMPARE(drops[0].second, c.folder);
            QCOMPARE(drops[0].first, std::vector<std::string>{"/elsewhere/a"});
        }
        QVERIFY(!model.canDropMimeData(incoming.get(), Qt::MoveAction, -1, 0, note)); // a file takes nothing
        QMimeData text;
        text.setText(QStringLiteral("hello"));
        QVERIFY(!model.canDropMimeData(&text, Qt::CopyAction, -1, 0, box));

        QVERIFY(model.flags(note) & Qt::ItemIsEditable);
        QVERIFY(!(model.flags(note.siblingAtColumn(1)) & Qt::ItemIsEditable));
        QVERIFY(model.flags(note) & Qt::ItemIsDragEnabled);
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QApplication app(argc, argv);
    NodeTreeModelTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "node_tree_model_test.moc"
