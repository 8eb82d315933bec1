// The five drop zones of a pane and the area each one highlights.

#include "gui_test_main.h"
#include "window/drop_zone.h"

Q_DECLARE_METATYPE(DropZone)

class DropZoneTest : public QObject {
    Q_OBJECT
private slots:
    void zoneAtFractions_data()
    {
        QTest::addColumn<double>("fx");
        QTest::addColumn<double>("fyUp"); // measured from the bottom edge
        QTest::addColumn<DropZone>("zone");
        QTest::newRow("left edge") << 0.1 << 0.5 << DropZone::Left;
        QTest::newRow("near top") << 0.5 << 0.9 << DropZone::Top;
        QTest::newRow("near bottom") << 0.5 << 0.1 << DropZone::Bottom;
        QTest::newRow("right edge") << 0.9 << 0.5 << DropZone::Right;
        QTest::newRow("centre") << 0.5 << 0.5 << DropZone::Center;
        QTest::newRow("quarter is centre") << 0.25 << 0.5 << DropZone::Center;
        QTest::newRow("just inside quarter") << 0.2499 << 0.5 << DropZone::Left;
        QTest::newRow("left ties bottom") << 0.125 << 0.125 << DropZone::Left;
        QTest::newRow("right ties bottom") << 0.875 << 0.125 << DropZone::Right;
        QTest::newRow("left ties top") << 0.125 << 0.875 << DropZone::Left;
        QTest::newRow("bottom nearer than left") << 0.2 << 0.1 << DropZone::Bottom;
        QTest::newRow("top nearer than right") << 0.85 << 0.95 << DropZone::Top;
        QTest::newRow("outside left") << -0.2 << 0.5 << DropZone::Left;
    }
    void zoneAtFractions()
    {
        QFETCH(double, fx);
        QFETCH(double, fyUp);
        QFETCH(DropZone, zone);
        // An offset rectangle in widget coordinates: y grows downwards.
        const QRectF rect(100, 50, 400, 200);
        const QPointF point(rect.left() + fx * rect.width(), rect.bottom() - fyUp * rect.height());
        QCOMPARE(dropZone(point, rect), zone);
    }

    void degenerateSizesCountAsOne()
    {
        // A rectangle with no width: fx is the raw offset, so x 0.1 past the edge is left.
        QCOMPARE(dropZone(QPointF(0.1, 0.5), QRectF(0, 0, 0, 1)), DropZone::Left);
        QCOMPARE(dropZone(QPointF(0.5, 0.5), QRectF(0, 0, 1, 1)), DropZone::Center);
    }

    void zoneRectangles()
    {
        const QRectF r(10, 20, 200, 100);
        QCOMPARE(dropZoneRect(DropZone::Left, r), QRectF(10, 20, 100, 100));
        QCOMPARE(dropZoneRect(DropZone::Right, r), QRectF(110, 20, 100, 100));
        QCOMPARE(dropZoneRect(DropZone::Top, r), QRectF(10, 20, 200, 50));
        QCOMPARE(dropZoneRect(DropZone::Bottom, r), QRectF(10, 70, 200, 50));
        QCOMPARE(dropZoneRect(DropZone::Center, r), QRectF(16, 26, 188, 88));
    }
};

BRONDEL_GUI_TEST_MAIN(DropZoneTest)
#include "drop_zone_test.moc"
