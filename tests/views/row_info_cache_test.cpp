// The background cache of the rows' info texts: a file's text at once, a folder's only
// once computed off the UI thread, kept while it is computed again after the sizes
// changed.

#include "../window/gui_test_main.h"
#include "sizes/info_notifier.h"
#include "support/temp_tree.h"
#include "views/row_info_cache.h"

namespace {

DirNodePtr nodeOf(const std::string& path, bool isDir, int64_t size = 0)
{
    auto node = DirNode::make();
    node->path = path;
    node->name = path.substr(path.rfind('/') + 1);
    node->isDir = isDir;
    node->size = size;
    return node;
}

} // namespace

class RowInfoCacheTest : public QObject {
    Q_OBJECT
private slots:
    void filesAtOnceFoldersFromTheBackground()
    {
        TempTree tree;
        BrondelSettings settings;
        settings.infoOn["folder-size"] = false; // walks end when they like
        RowInfoCache cache;
        QSignalSpy changed(&cache, &RowInfoCache::changed);

        auto file = cache.find(*nodeOf(tree.file("f.txt", "12345"), false, 5), settings);
        QVERIFY(file);
        QCOMPARE(file->line, QStringLiteral("5 B"));

        // A folder and a drive: nothing until the background has asked the disk.
        const auto folder = nodeOf(tree.dir("d"), true), drive = nodeOf("/", true);
        QVERIFY(!cache.find(*folder, settings));
        QVERIFY(!cache.find(*drive, settings));
        QTRY_VERIFY(cache.find(*drive, settings).has_value());
        QTRY_VERIFY(changed.count() >= 1); // one announcement for the burst
        QVERIFY(cache.find(*drive, settings)->cell.fraction);
        QVERIFY(cache.find(*drive, settings)->line.contains(QStringLiteral("free of")));
        QTRY_VERIFY(cache.find(*folder, settings).has_value());
        QCOMPARE(cache.find(*folder, settings)->line, QString());

        // Sizes changed: the views are told at once and keep the old text meanwhile.
        changed.clear();
        emit InfoNotifier::instance().brondelInfoChanged();
        QCOMPARE(changed.count(), 1);
        QVERIFY(cache.find(*drive, settings).has_value());
        QTRY_COMPARE(changed.count(), 2); // the recomputation is announced too

        // Other modules on: the old text stays until the new one is in.
        settings.infoOn["drive-space"] = false;
        QVERIFY(cache.find(*drive, settings)->cell.fraction);
        QTRY_VERIFY(!cache.find(*drive, settings)->cell.fraction);
    }
};

BRONDEL_GUI_TEST_MAIN(RowInfoCacheTest)
#include "row_info_cache_test.moc"
