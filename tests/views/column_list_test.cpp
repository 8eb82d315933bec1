// One column of the column mode over a million rows: rows are found where they are
// drawn at both ends and in the middle, keys move the current row (past rows that
// cannot be selected, never sideways), a swept rectangle selects one range, and
// assistive technology reads the rows and their state.

#include "../window/gui_test_main.h"
#include "views/column_list.h"

#include <QAccessible>
#include <QAbstractListModel>
#include <QScrollBar>

namespace {

// A million rows made on demand; every thousandth cannot be selected.
class ManyRows : public QAbstractListModel {
public:
    static constexpr int kRows = 1000000;
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : kRows; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("row %1").arg(index.row())) : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        if (index.row() % 1000 == 999)
            return Qt::ItemIsEnabled;
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    }
};

struct Column {
    ManyRows rows;
    ColumnList list;

    Column()
    {
        list.setModel(&rows);
        list.setSelectionMode(QAbstractItemView::ExtendedSelection);
        list.resize(240, 400);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
    }
    QModelIndex at(int row) const { return rows.index(row); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) { QTest::keyClick(&list, key, modifiers); }
};

} // namespace

class ColumnListTest : public QObject {
    Q_OBJECT
private slots:
    void rowsAreFoundWhereTheyAreDrawn()
    {
        Column c;
        const int h = c.list.rowHeight();
        QVERIFY(h > 0);
        QScrollBar* bar = c.list.verticalScrollBar();
        QCOMPARE(int64_t(bar->maximum()), int64_t(ManyRows::kRows) * h - c.list.viewport()->height());
        for (int row : {0, 500000, ManyRows::kRows - 1}) {
            c.list.scrollTo(c.at(row), QAbstractItemView::PositionAtCenter);
            const QRect rect = c.list.visualRect(c.at(row));
            QVERIFY2(c.list.viewport()->rect().contains(rect.center()), qPrintable(QString::number(row)));
            QCOMPARE(rect.height(), h);
            QCOMPARE(c.list.indexAt(rect.center()), c.at(row));
            QCOMPARE(c.list.indexAt(rect.topLeft()), c.at(row));
        }
        // Below the last row and beside the column there is no row.
        QCOMPARE(c.list.indexAt(QPoint(10, c.list.viewport()->height() - 1)), c.at(ManyRows::kRows - 1));
        QVERIFY(!c.list.indexAt(QPoint(-1, 5)).isValid());
    }

    void keysMoveTheCurrentRowButNeverSideways()
    {
        Column c;
        c.list.setFocus();
        c.list.setCurrentIndex(c.at(5));
        c.press(Qt::Key_PageDown);
        const int page = c.list.currentIndex().row() - 5;
        QVERIFY2(page > 1 && page < c.list.viewport()->height() / c.list.rowHeight() + 1, qPrintable(QString::number(page)));
        // From a row, a key, the row it lands on: a row that cannot be selected (every
        // thousandth, and the last) is stepped over both ways; Left and Right belong to
        // the browser around the column.
        const struct {
            int from;
            Qt::Key key;
            int to;
        } steps[] = {
            {5, Qt::Key_Down, 6},
            {6, Qt::Key_Up, 5},
            {998, Qt::Key_Down, 1000},
            {1000, Qt::Key_Up, 998},
            {998, Qt::Key_End, ManyRows::kRows - 2},
            {ManyRows::kRows - 2, Qt::Key_Home, 0},
            {0, Qt::Key_Right, 0},
            {7, Qt::Key_Left, 7},
        };
        for (const auto& step : steps) {
            c.list.setCurrentIndex(c.at(step.from));
            c.press(step.key);
            QCOMPARE(c.list.currentIndex(), c.at(step.to));
            QVERIFY(c.list.viewport()->rect().intersects(c.list.visualRect(c.list.currentIndex())));
        }
    }

    // Typed names are looked for a slice of rows at a time: the keys return at once and
    // the row far down is found a few turns of the event loop later.
    void typeAheadGoesASliceAtATime()
    {
        Column c;
        c.list.setFocus();
        c.list.setCurrentIndex(c.at(0));
        c.list.keyboardSearch(QStringLiteral("row 7"));
        QCOMPARE(c.list.currentIndex(), c.at(7));
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
        c.list.keyboardSearch(QStringLiteral("ROW 999998"));
        QCOMPARE(c.list.currentIndex(), c.at(7));
        QTRY_COMPARE(c.list.currentIndex(), c.at(999998));
        QVERIFY(c.list.selectionModel()->isSelected(c.at(999998)));
    }

    void aSweptRectangleSelectsOneRange()
    {
        Column c;
        const int h = c.list.rowHeight();
        c.list.scrollTo(c.at(700000), QAbstractItemView::PositionAtTop);
        QTest::mousePress(c.list.viewport(), Qt::LeftButton, {}, QPoint(20, h / 2));
        QTest::mouseMove(c.list.viewport(), QPoint(20, 3 * h + h / 2));
        QTest::mouseRelease(c.list.viewport(), Qt::LeftButton, {}, QPoint(20, 3 * h + h / 2));
        const QItemSelection selection = c.list.selectionModel()->selection();
        QCOMPARE(selection.size(), 1);
        QCOMPARE(selection.first().top(), 700000);
        QCOMPARE(selection.first().bottom(), 700003);
        // Shift+End from there is still one range, to the end.
        c.press(Qt::Key_End, Qt::ShiftModifier);
        QCOMPARE(c.list.selectionModel()->selection().size(), 1);
        QCOMPARE(c.list.selectionModel()->selection().first().bottom(), ManyRows::kRows - 2);
    }

    void assistiveTechnologyReadsTheRows()
    {
        Column c;
        QAccessible::setActive(true);
        c.list.setFocus();
        c.list.selectionModel()->select(c.at(3), QItemSelectionModel::Select);
        QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&c.list);
        QVERIFY(list);
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->childCount(), ManyRows::kRows);
        QAccessibleInterface* row = list->child(3);
        QVERIFY(row);
        QCOMPARE(row->role(), QAccessible::ListItem);
        QCOMPARE(row->text(QAccessible::Name), QStringLiteral("row 3"));
        QVERIFY(row->state().selected);
        QCOMPARE(list->indexOfChild(row), 3);
        QVERIFY(!list->child(4)->state().selected);
        QVERIFY(list->child(ManyRows::kRows - 1)->state().invisible);
        QCOMPARE(list->childAt(row->rect().center().x(), row->rect().center().y()), row);
        QVERIFY(!list->child(ManyRows::kRows));
    }
};

BRONDEL_GUI_TEST_MAIN(ColumnListTest)
#include "column_list_test.moc"
