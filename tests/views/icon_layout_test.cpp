// Where the icon view's sections and items go: wrapped rows at two widths, a strip, list
// rows and breakdown tiles, headers pushing items down, and the few items a screen asks
// for out of 100,000.

#include "../window/gui_test_main.h"
#include "views/icon_layout.h"

class IconLayoutTest : public QObject {
    Q_OBJECT
private slots:
    void layoutGeometry()
    {
        struct Case {
            const char* what;
            IconSecShape shape;
            int width;
            int columns, rows, cellWidth, cellHeight;
        };
        IconSecShape wrapped{10};
        IconSecShape strip{50, true};
        IconSecShape list{3, false, true};
        IconSecShape tiles{5, false, false, true, 48, 4, 180};
        const Case cases[] = {
            {"wrapped, narrow", wrapped, 400, 3, 4, 96, 92},
            {"wrapped, wide", wrapped, 800, 8, 2, 96, 92},
            {"strip", strip, 400, 50, 1, 96, 92},
            {"list rows", list, 400, 1, 3, 376, 56},
            {"breakdown tiles", tiles, 600, 3, 2, 192, 148}, // 180 + gap, 64 + 4 legend rows of 18 + gap
        };
        for (const Case& c : cases) {
            const IconLayout layout = iconLayoutMake({c.shape}, c.width);
            const IconSecGeom& g = layout.sections.front();
            QVERIFY2(g.columns == c.columns && g.rows == c.rows, c.what);
            QVERIFY2(g.cellWidth == c.cellWidth && g.cellHeight == c.cellHeight, c.what);
            const QRect last = iconItemRect(g, c.shape.count - 1);
            QVERIFY2(last.bottom() < g.top + g.height, c.what);
        }
        // A strip scrolls sideways: its items move left, its height stays one row.
        const IconSecGeom s = iconLayoutMake({strip}, 400).sections.front();
        QCOMPARE(iconItemRect(s, 10, 300).left(), kIconMargin + 10 * 96 - 300);
        QCOMPARE(iconStripRange(s, 50, 400), 50 * 96 + 2 * kIconMargin - 400);
        // Headers, a sub-header and the top pad push the items down; the next section follows.
        IconSecShape headed{4};
        headed.cardHeader = headed.subHeader = true;
        headed.topPad = 12;
        const IconLayout two = iconLayoutMake({headed, wrapped}, 800);
        QCOMPARE(two.sections[0].itemsTop, 12 + kIconHeaderHeight + kIconSubHeight);
        QCOMPARE(two.sections[1].top, two.sections[0].top + two.sections[0].height);
        QCOMPARE(iconSectionAt(two, two.sections[1].top + 1), 1);
        QCOMPARE(iconSectionAt(two, 5), -1); // the top pad belongs to no section
        // 100,000 items: a screen's worth of them is all that is asked for.
        IconSecShape big{100000};
        const IconSecGeom b = iconLayoutMake({big}, 800).sections.front();
        const auto [first, last] = iconItemsIn(b, 100000, QRect(0, 500000, 800, 600));
        QVERIFY(last - first <= size_t(8 * 8));
        QVERIFY(iconItemRect(b, first).bottom() >= 500000 && iconItemRect(b, last - 1).top() <= 500600);
    }
};

BRONDEL_GUI_TEST_MAIN(IconLayoutTest)
#include "icon_layout_test.moc"
