// What the icon view's sections hold besides the core's sections: a drive tile's legend,
// the figures of breakdown tiles, and a folder's items read from the pane's store.

#include "../window/gui_test_main.h"
#include "cards/card_config.h"
#include "cards/card_menu.h"
#include "support/temp_tree.h"
#include "views/icon_card_data.h"

class IconCardDataTest : public QObject {
    Q_OBJECT
private slots:
    void driveTileLegends()
    {
        using Legend = std::vector<std::pair<std::string, int64_t>>;
        const Legend items{{"small", 10}, {"big", 500}, {"empty", 0}, {"mid", 100}};
        struct Case {
            const char* what;
            int64_t used;
            long long rows;
            Legend legend;
        };
        const Case cases[] = {
            {"room for all, nothing else used", 610, 8, {{"big", 500}, {"mid", 100}, {"small", 10}}},
            {"room for all, the rest is other", 1000, 8, {{"big", 500}, {"mid", 100}, {"small", 10}, {"Other", 390}}},
            {"two rows: the biggest and the rest", 1000, 2, {{"big", 500}, {"Other", 500}}},
            {"one row: all other", 1000, 1, {{"Other", 1000}}},
            {"not a drive: the items alone", 0, 8, {{"big", 500}, {"mid", 100}, {"small", 10}}},
        };
        for (const Case& c : cases)
            QVERIFY2(driveTileLegend(items, c.used, c.rows) == c.legend, c.what);
    }

    void breakdownTilesAndStoreItems()
    {
        TempTree tree;
        tree.file("f/a.txt", "12345");
        tree.dir("f/b");
        tree.setMtime("f/a.txt", 1700000000);
        // The Computer root with one item that is no drive: a tile without figures.
        auto root = DirNode::make();
        root->path = "/";
        root->name = "TestComputer";
        root->isDir = true;
        auto folder = DirNode::make();
        folder->name = "f";
        folder->path = tree.path("f");
        folder->isDir = true;
        root->children = {folder};
        cardUpdate("drives", "drives", [](CardConfig& c) { c.layout = "breakdown"; c.legendRows = 4; });
        BrondelSettings settings;
        settings.showDownloads = false;
        IconCardDataPtr data = iconCardDataGather(root, {}, settings);
        QVERIFY(!data->sections.empty());
        const IconCardSection& drives = data->sections.front();
        QVERIFY(drives.sec.breakdown);
        QCOMPARE(drives.sec.legendRows, int64_t(4));
        QCOMPARE(drives.tiles.size(), size_t(1));
        QVERIFY(!drives.tiles[0].known);
        QVERIFY(drives.tiles[0].legend.empty());

        // A folder's items come from its store; a node made for one carries its status.
        IconCardDataPtr items = iconCardDataGather(ScanService::scanListing(tree.path("f"), BrondelSettings{}), {}, settings);
        QCOMPARE(items->count(0), size_t(2));
        QCOMPARE(items->name(0, 0), QStringLiteral("b"));
        QVERIFY(items->isDir(0, 0));
        const DirNodePtr file = items->node(0, 1);
        QCOMPARE(file->path, tree.path("f/a.txt"));
        QVERIFY(!file->isDir);
    }
};

BRONDEL_GUI_TEST_MAIN(IconCardDataTest)
#include "icon_card_data_test.moc"
