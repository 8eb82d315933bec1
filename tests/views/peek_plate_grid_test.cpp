// The plates of a Peek level: how many per row for a width, a column and a row, the
// "+ N more" plate at the end, a panel opened under the row of a plate pushing the
// later rows down, and what a drive's plate says.

#include "../window/gui_test_main.h"
#include "views/peek/peek_plate_grid.h"

#include <QVBoxLayout>

namespace {

std::vector<LabItem> files(int n)
{
    std::vector<LabItem> out;
    for (int i = 0; i < n; ++i) {
        LabItem item;
        item.name = "f" + std::to_string(i);
        item.path = "/x/" + item.name;
        item.bytes = i;
        out.push_back(item);
    }
    return out;
}

constexpr int kStep = PeekPlate::kWidth + PeekPlateGrid::kSpacing;
constexpr int kRow = PeekPlate::kHeight + PeekPlateGrid::kSpacing;

} // namespace

class PeekPlateGridTest : public QObject {
    Q_OBJECT
private slots:
    void platesFlowByTheWidth_data()
    {
        QTest::addColumn<int>("flow");
        QTest::addColumn<int>("plates");
        QTest::addColumn<int>("total");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("rows");
        const int wrap = int(PeekPlateGrid::Flow::Wrap);
        const int edges = 2 * PeekPlateGrid::kMargin - PeekPlateGrid::kSpacing;
        QTest::newRow("wrap, three fit") << wrap << 7 << 7 << 3 * kStep + edges << 3 << 3;
        QTest::newRow("wrap, a pixel short of three") << wrap << 7 << 7 << 3 * kStep + edges - 1 << 2 << 4;
        QTest::newRow("wrap, narrower than a plate") << wrap << 3 << 3 << 50 << 1 << 3;
        QTest::newRow("wrap, the more plate takes a place") << wrap << 6 << 40 << 3 * kStep + edges << 3 << 3;
        QTest::newRow("column") << int(PeekPlateGrid::Flow::Column) << 4 << 4 << 2000 << 1 << 4;
        QTest::newRow("row") << int(PeekPlateGrid::Flow::Row) << 4 << 9 << 100 << 5 << 1;
    }

    void platesFlowByTheWidth()
    {
        QFETCH(int, flow);
        QFETCH(int, plates);
        QFETCH(int, total);
        QFETCH(int, width);
        QFETCH(int, columns);
        QFETCH(int, rows);
        PeekPlateGrid grid(files(plates), total, "/x", PeekPlateGrid::Flow(flow), PeekPlate::Size::Normal);
        grid.resize(width, 10);
        grid.show();
        QCOMPARE(grid.count(), plates);
        QCOMPARE(grid.columns(), columns);
        QCOMPARE(bool(grid.morePlate()), total > plates);
        const int all = plates + (total > plates ? 1 : 0);
        QCOMPARE(grid.heightForWidth(width), 2 * PeekPlateGrid::kMargin + rows * kRow - PeekPlateGrid::kSpacing);
        PeekPlate* last = total > plates ? grid.morePlate() : grid.plate(plates - 1);
        QCOMPARE(last->pos(), QPoint(PeekPlateGrid::kMargin + ((all - 1) % columns) * kStep,
                                  PeekPlateGrid::kMargin + ((all - 1) / columns) * kRow));
        QCOMPARE(grid.current(), 0);
    }

    void aPanelOpensUnderTheRowOfItsPlate()
    {
        const int width = 3 * kStep + 2 * PeekPlateGrid::kMargin;
        PeekPlateGrid grid(files(8), 8, "/x", PeekPlateGrid::Flow::Wrap, PeekPlate::Size::Normal);
        grid.resize(width, 400);
        grid.show();
        const int before = grid.heightForWidth(width);
        auto* panel = new QWidget; // as tall as what it holds
        auto* box = new QVBoxLayout(panel);
        box->setContentsMargins(0, 0, 0, 0);
        box->addWidget(new QWidget);
        box->itemAt(0)->widget()->setFixedHeight(90);
        grid.setExpansion(4, panel); // the middle of the second row
        QCOMPARE(panel->parentWidget(), &grid);
        QCOMPARE(panel->y(), PeekPlateGrid::kMargin + 2 * kRow);
        QCOMPARE(panel->width(), width - 2 * PeekPlateGrid::kMargin);
        QCOMPARE(grid.plate(5)->y(), PeekPlateGrid::kMargin + kRow);           // same row: stays
        QCOMPARE(grid.plate(6)->y(), PeekPlateGrid::kMargin + 2 * kRow + 90 + PeekPlateGrid::kSpacing); // pushed down
        QCOMPARE(grid.heightForWidth(width), before + 90 + PeekPlateGrid::kSpacing);
        // While it grows in, only as much room as it is allowed.
        panel->setMaximumHeight(30);
        QTRY_COMPARE(grid.plate(6)->y(), PeekPlateGrid::kMargin + 2 * kRow + 30 + PeekPlateGrid::kSpacing);
        QPointer<QWidget> gone(panel);
        grid.setExpansion(-1, nullptr);
        QTRY_VERIFY(!gone);
        QCOMPARE(grid.plate(6)->y(), PeekPlateGrid::kMargin + 2 * kRow);
    }

    void currentAndOpenedMarkOnePlateEach()
    {
        PeekPlateGrid grid(files(3), 3, "/x", PeekPlateGrid::Flow::Column, PeekPlate::Size::Normal);
        grid.setCurrent(2);
        grid.setCurrent(7); // out of range: ignored
        QCOMPARE(grid.current(), 2);
        QVERIFY(grid.plate(2)->isCurrent());
        QVERIFY(!grid.plate(0)->isCurrent());
        QSignalSpy pressed(&grid, &PeekPlateGrid::pressed);
        grid.plate(1)->click();
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(pressed.at(0).at(0).toInt(), 1);
        QCOMPARE(grid.plate(0)->focusPolicy(), Qt::NoFocus); // the style's keys drive the plates
    }

    void platesSayWhatTheyAre_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<qint64>("capacity");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<qint64>("count");
        QTest::addColumn<QString>("line");
        QTest::newRow("drive") << qint64(750) << qint64(1000) << true << qint64(-1) << "250 B free of 1000 B";
        QTest::newRow("folder of one") << qint64(0) << qint64(0) << true << qint64(1) << "1 item";
        QTest::newRow("file") << qint64(2048) << qint64(0) << false << qint64(0) << "2.0 KB";
    }

    void platesSayWhatTheyAre()
    {
        QFETCH(qint64, bytes);
        QFETCH(qint64, capacity);
        QFETCH(bool, isDir);
        QFETCH(qint64, count);
        QFETCH(QString, line);
        LabItem item;
        item.name = "thing";
        item.bytes = bytes;
        item.capacity = capacity;
        item.isDir = isDir;
        item.count = count;
        PeekPlate plate(item, PeekPlate::Size::Normal);
        QCOMPARE(plate.accessibleName(), "thing");
        QCOMPARE(plate.accessibleDescription(), line);
        QVERIFY(plate.toolTip().contains(line));
        PeekPlate more(12, "/x", PeekPlate::Size::Small);
        QVERIFY(more.isMore());
        QCOMPARE(more.accessibleName(), "+ 12 more");
        QCOMPARE(more.size(), QSize(PeekPlate::kWidth, PeekPlate::kSmallHeight));
    }
};

BRONDEL_GUI_TEST_MAIN(PeekPlateGridTest)
#include "peek_plate_grid_test.moc"
