// The status bar: the folder's item count, the selection's count and size, and the free
// space of the folder's drive, counted once per burst of selection changes.

#include "fs/fmt.h"
#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/browser_frame.h"
#include "window/folder_status_bar.h"

#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QItemSelectionModel>

#include <memory>

namespace {

std::unique_ptr<BrowserFrame> frameOn(TestContext& t, const std::string& path)
{
    auto frame = testFrame(t, path);
    frame->activePane()->showLocation(path);
    t.scans.finishAll();
    return frame;
}

QAbstractItemView* itemsOf(BrowserFrame& frame)
{
    return qobject_cast<QAbstractItemView*>(frame.activePane()->contentView());
}

QString human(int64_t bytes)
{
    return QString::fromStdString(fmtHuman(bytes));
}

} // namespace

class FolderStatusBarTest : public QObject {
    Q_OBJECT
private slots:
    void countsTheFolderAndTheSelection()
    {
        TestContext t;
        TempTree tree;
        tree.sized("a.bin", 1000);
        tree.sized("b.bin", 24000);
        tree.sized("c.bin", 5);
        tree.dir("sub");
        auto frame = frameOn(t, tree.root());
        FolderStatusBar* status = frame->folderStatus();
        status->recountNow();
        QCOMPARE(status->itemsText(), QStringLiteral("4 items"));
        QCOMPARE(status->selectionText(), QString());
        QTRY_VERIFY(status->spaceText().endsWith(QStringLiteral(" free")));

        QAbstractItemView* view = itemsOf(*frame);
        QVERIFY(view);
        auto* model = view->model();
        auto rowOf = [&](const char* name) {
            for (int row = 0; row < model->rowCount(); ++row)
                if (model->index(row, 0).data().toString() == QLatin1String(name))
                    return row;
            return -1;
        };
        QItemSelection picked;
        for (const char* name : {"a.bin", "b.bin"})
            picked.select(model->index(rowOf(name), 0), model->index(rowOf(name), model->columnCount() - 1));
        view->selectionModel()->select(picked, QItemSelectionModel::ClearAndSelect);
        QTRY_COMPARE(status->selectionText(), QStringLiteral("2 selected (%1)").arg(human(25000)));

        // A folder counts once its size is known; until then the total is a lower bound.
        picked.select(model->index(rowOf("sub"), 0), model->index(rowOf("sub"), model->columnCount() - 1));
        view->selectionModel()->select(picked, QItemSelectionModel::ClearAndSelect);
        QTRY_VERIFY(status->selectionText().startsWith(QStringLiteral("3 selected")));
        QTRY_COMPARE(status->selectionText(), QStringLiteral("3 selected (%1)").arg(human(25000)));
    }

    void aBigSelectionIsCountedOncePerBurst()
    {
        constexpr int kFiles = 20000;
        TestContext t;
        TempTree tree;
        for (int i = 0; i < kFiles; ++i)
            tree.file("f" + std::to_string(i), "x");
        auto frame = frameOn(t, tree.root());
        FolderStatusBar* status = frame->folderStatus();
        QAbstractItemView* view = itemsOf(*frame);
        QVERIFY(view);
        // Row by row, as a held Shift+Down selects.
        for (int row = 0; row < 200; ++row)
            view->selectionModel()->select(view->model()->index(row, 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTRY_COMPARE(status->selectionText(), QStringLiteral("200 selected (%1)").arg(human(200)));

        view->selectAll();
        QElapsedTimer clock;
        clock.start();
        status->recountNow();
        const qint64 ms = clock.elapsed();
        // The sizes of a folder shown names first may still be arriving: the total grows
        // to the full one, "at least" until then.
        QTRY_COMPARE(status->selectionText(), QStringLiteral("%1 selected (%2)").arg(kFiles).arg(human(kFiles)));
        qInfo("counting a selection of %d rows took %lld ms", kFiles, ms);
        QVERIFY(ms < 500);
    }
};

BRONDEL_GUI_TEST_MAIN(FolderStatusBarTest)
#include "folder_status_bar_test.moc"
