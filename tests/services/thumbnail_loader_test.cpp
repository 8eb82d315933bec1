// Real previews: a missing preview of an image is made, written to the shared cache in
// the standard's form and read from there next time; a changed file gets a fresh one;
// a file that is no image gets none; an image that cannot be decoded is recorded under
// fail/ and not tried again. The loader hands them to the UI thread as they arrive.

#include "../window/gui_test_main.h"
#include "cards/thumb_cache.h"
#include "services/thumbnail_loader.h"
#include "support/temp_tree.h"

#include <sys/stat.h>

namespace {

std::string makeImage(TempTree& tree, const std::string& rel, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    const std::string path = tree.file(rel);
    image.save(QString::fromStdString(path), "PNG");
    return path;
}

QString keyOf(const std::string& png, const char* key)
{
    return QImage(QString::fromStdString(png)).text(QString::fromLatin1(key));
}

} // namespace

class ThumbnailLoaderTest : public QObject {
    Q_OBJECT
private slots:
    void madeStoredReusedAndRenewed()
    {
        TempTree tree;
        const std::string root = tree.path("cache/thumbnails");
        const std::string photo = makeImage(tree, "pics/photo.png", QSize(1000, 500));
        tree.setMtime("pics/photo.png", 1700000000);
        const std::string stored = thumbPath(root, ThumbSize::Normal, thumbUri(photo));

        ThumbResult first = thumbnailProduce(photo, ThumbSize::Normal, root);
        QCOMPARE(int(first.outcome), int(ThumbOutcome::Made));
        QCOMPARE(first.image.size(), QSize(128, 64)); // scaled to the size's edge, proportions kept
        struct stat st {};
        QCOMPARE(::stat(stored.c_str(), &st), 0);
        QCOMPARE(int(st.st_mode & 0777), 0600);
        QCOMPARE(keyOf(stored, "Thumb::URI"), QString::fromStdString(thumbUri(photo)));
        QCOMPARE(keyOf(stored, "Thumb::MTime"), QStringLiteral("1700000000"));
        QCOMPARE(keyOf(stored, "Thumb::Mime"), QStringLiteral("image/png"));
        QVERIFY(!keyOf(stored, "Thumb::Size").isEmpty());

        QCOMPARE(int(thumbnailProduce(photo, ThumbSize::Normal, root).outcome), int(ThumbOutcome::FromCache));

        // The file changes: the stored preview is stale and made again with the new time.
        makeImage(tree, "pics/photo.png", QSize(300, 600));
        tree.setMtime("pics/photo.png", 1700000500);
        ThumbResult renewed = thumbnailProduce(photo, ThumbSize::Normal, root);
        QCOMPARE(int(renewed.outcome), int(ThumbOutcome::Made));
        QCOMPARE(renewed.image.size(), QSize(64, 128));
        QCOMPARE(keyOf(stored, "Thumb::MTime"), QStringLiteral("1700000500"));

        // Large previews live apart.
        QCOMPARE(int(thumbnailProduce(photo, ThumbSize::Large, root).outcome), int(ThumbOutcome::Made));
        QVERIFY(QFile::exists(QString::fromStdString(thumbPath(root, ThumbSize::Large, thumbUri(photo)))));
    }

    void nonImagesAndBrokenImages()
    {
        TempTree tree;
        const std::string root = tree.path("cache/thumbnails");
        const std::string text = tree.file("notes.txt", "hello");
        QCOMPARE(int(thumbnailProduce(text, ThumbSize::Normal, root).outcome), int(ThumbOutcome::NotImage));
        QVERIFY(!QFile::exists(QString::fromStdString(thumbPath(root, ThumbSize::Normal, thumbUri(text)))));
        QVERIFY(!QFile::exists(QString::fromStdString(thumbFailPath(root, "brondel", thumbUri(text)))));

        const std::string broken = tree.file("broken.png", "not a png at all");
        QCOMPARE(int(thumbnailProduce(broken, ThumbSize::Normal, root).outcome), int(ThumbOutcome::Failed));
        const std::string fail = thumbFailPath(root, "brondel", thumbUri(broken));
        QVERIFY(QFile::exists(QString::fromStdString(fail)));
        QCOMPARE(keyOf(fail, "Thumb::URI"), QString::fromStdString(thumbUri(broken)));
        // Recorded: the next request gives up at once, nothing is written beside it.
        QCOMPARE(int(thumbnailProduce(broken, ThumbSize::Normal, root).outcome), int(ThumbOutcome::Failed));
        QVERIFY(!QFile::exists(QString::fromStdString(thumbPath(root, ThumbSize::Normal, thumbUri(broken)))));
    }

    void loaderDeliversOnTheUiThread()
    {
        TempTree tree;
        ThumbnailLoader loader(3, tree.path("cache/thumbnails"));
        QSignalSpy ready(&loader, &ThumbnailLoader::ready);
        std::vector<std::string> photos;
        for (int i = 0; i < 8; ++i)
            photos.push_back(makeImage(tree, "p/" + std::to_string(i) + ".png", QSize(200, 200)));
        for (const std::string& photo : photos)
            QVERIFY(loader.preview(photo, 48).isNull()); // placeholder until it arrives
        QTRY_COMPARE_WITH_TIMEOUT(loader.pending(), 0, 20000);
        QTRY_VERIFY(ready.count() >= 1); // one announcement per burst, after a short pause
        QCOMPARE(loader.finished(ThumbOutcome::Made), 8);
        for (const std::string& photo : photos)
            QCOMPARE(loader.preview(photo, 48).size(), QSize(128, 128));
        QCOMPARE(loader.pending(), 0); // served from memory, nothing queued again
    }

    void queuedRequestsCanBeDropped()
    {
        TempTree tree;
        ThumbnailLoader loader(1, tree.path("cache/thumbnails"));
        std::vector<std::string> photos;
        for (int i = 0; i < 10; ++i)
            photos.push_back(makeImage(tree, "q/" + std::to_string(i) + ".png", QSize(64, 64)));
        for (const std::string& photo : photos)
            loader.preview(photo, 48);
        loader.dropQueued(); // scrolled away: only the one already started goes on
        QTRY_COMPARE_WITH_TIMEOUT(loader.pending(), 0, 20000);
        QCOMPARE(loader.finished(ThumbOutcome::Made), 1);
        QSignalSpy ready(&loader, &ThumbnailLoader::ready);
        QVERIFY(!loader.preview(photos.front(), 48).isNull()); // the one that went on is there
        QVERIFY(loader.preview(photos.back(), 48).isNull());    // a dropped one asked again: queued again
        QTRY_COMPARE_WITH_TIMEOUT(loader.finished(ThumbOutcome::Made), 2, 20000);
        QTRY_VERIFY(ready.count() >= 1);
    }
};

BRONDEL_GUI_TEST_MAIN(ThumbnailLoaderTest)
#include "thumbnail_loader_test.moc"
