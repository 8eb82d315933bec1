// The Space-bar preview: each kind of item loaded off the UI thread, older loads
// dropped, a FIFO never waited on, and in a window Space opens it, arrows move it along,
// Escape closes it.

#include "fs/sys_calls.h"
#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/preview_window.h"

#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QImage>

#include <atomic>
#include <chrono>
#include <sys/stat.h>
#include <thread>

namespace {

// A one-page PDF with a correct cross-reference table.
std::string tinyPdf()
{
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 100] >>",
    };
    std::string pdf = "%PDF-1.4\n";
    std::vector<size_t> offsets;
    for (size_t i = 0; i < objects.size(); ++i) {
        offsets.push_back(pdf.size());
        pdf += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const size_t xref = pdf.size();
    pdf += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (size_t offset : offsets) {
        char line[32];
        std::snprintf(line, sizeof line, "%010zu 00000 n \n", offset);
        pdf += line;
    }
    pdf += "trailer\n<< /Size " + std::to_string(objects.size() + 1) + " /Root 1 0 R >>\nstartxref\n"
        + std::to_string(xref) + "\n%%EOF\n";
    return pdf;
}

// A 1×1 GIF of two frames that loops: an animation.
std::string twoFrameGif()
{
    std::string gif("GIF89a\x01\x00\x01\x00\x80\x00\x00" "\x00\x00\x00\xff\xff\xff", 19);
    gif += std::string("\x21\xff\x0bNETSCAPE2.0\x03\x01\x00\x00\x00", 19);
    const std::string frame("\x21\xf9\x04\x00\x0a\x00\x00\x00"
                            "\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00"
                            "\x02\x02\x44\x01\x00", 23);
    return gif + frame + frame + ";";
}

std::atomic<int> g_slowOpens{0};

// Opens of a file called "slow…" take a while, as on a sluggish drive.
int openSlow(const char* path, int flags, mode_t mode)
{
    if (std::string_view(path).find("/slow") != std::string_view::npos) {
        ++g_slowOpens;
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }
    return sysCallsReal().open(path, flags, mode);
}

bool loadedPath(PreviewWindow& preview, const std::string& path)
{
    preview.showFor(path);
    return QTest::qWaitFor([&] { return preview.isLoaded(); }, 10000) && preview.path() == path;
}

} // namespace

class PreviewWindowTest : public QObject {
    Q_OBJECT
private slots:
    void eachKindLoads()
    {
        TempTree tree;
        QWidget host;
        host.resize(300, 200);
        host.show();
        PreviewWindow preview(&host);

        QVERIFY(loadedPath(preview, tree.file("latin.txt", "caf\xE9 \x01 ok\n")));
        QCOMPARE(preview.shownKind(), PreviewKind::Text);
        QCOMPARE(preview.shownText(), QString::fromUtf8("café \xEF\xBF\xBD ok\n"));

        // 50 MB of text: the first megabyte only.
        const std::string big = tree.sized("big.log", int64_t(50) << 20);
        {
            std::string head(1000, 'a');
            FILE* f = std::fopen(big.c_str(), "r+");
            std::fwrite(head.data(), 1, head.size(), f);
            std::fclose(f);
        }
        QVERIFY(loadedPath(preview, big));
        QCOMPARE(preview.shownKind(), PreviewKind::Text);
        QVERIFY(preview.shownText().size() <= qsizetype(kPreviewTextCap));
        QVERIFY(preview.shownText().startsWith(QString(1000, QLatin1Char('a'))));

        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::red);
        const std::string png = tree.path("picture.png");
        QVERIFY(image.save(QString::fromStdString(png)));
        QVERIFY(loadedPath(preview, png));
        QCOMPARE(preview.shownKind(), PreviewKind::Image);
        QCOMPARE(preview.shownImageSize(), QSize(40, 30));

        QVERIFY(loadedPath(preview, tree.file("spinner.gif", twoFrameGif())));
        QCOMPARE(preview.shownKind(), PreviewKind::Image);
        QVERIFY(preview.playsMovie());
        QCOMPARE(preview.shownImageSize(), QSize(1, 1));

        // Larger than any screen: decoded smaller, keeping its shape.
        QImage wide(9000, 300, QImage::Format_RGB32);
        wide.fill(Qt::blue);
        const std::string huge = tree.path("wide.png");
        QVERIFY(wide.save(QString::fromStdString(huge)));
        QVERIFY(loadedPath(preview, huge));
        QCOMPARE(preview.shownKind(), PreviewKind::Image);
        QCOMPARE(preview.shownImageSize(), QSize(4096, 136));

        const std::string pdf = tree.file("paper.pdf", tinyPdf());
        QVERIFY(loadedPath(preview, pdf));
        if (PreviewWindow::pdfSupported()) {
            QCOMPARE(preview.shownKind(), PreviewKind::Pdf);
            QCOMPARE(preview.shownPages(), 1);
        } else {
            QCOMPARE(preview.shownKind(), PreviewKind::Other);
        }

        tree.file("folder/one", "1234");
        tree.file("folder/two", "5678");
        QVERIFY(loadedPath(preview, tree.path("folder")));
        QCOMPARE(preview.shownKind(), PreviewKind::Folder);
        QVERIFY2(preview.shownFacts().contains(QStringLiteral("2 item")), qPrintable(preview.shownFacts()));

        QVERIFY(loadedPath(preview, tree.file("blob.bin", std::string("\0\1\2\xff\xfe", 5))));
        QCOMPARE(preview.shownKind(), PreviewKind::Other);
        QVERIFY(preview.shownFacts().contains(QStringLiteral("Size: 5 B")));

        // A FIFO without a writer is described, never opened.
        const std::string fifo = tree.path("pipe");
        QCOMPARE(::mkfifo(fifo.c_str(), 0600), 0);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(loadedPath(preview, fifo));
        QVERIFY(clock.elapsed() < 5000);
        QVERIFY(preview.shownFacts().contains(QStringLiteral("inode/fifo")));
    }

    void aLaterItemWinsOverASlowerEarlierOne()
    {
        TempTree tree;
        const std::string slow = tree.file("slow.txt", "slow text");
        const std::string quick = tree.file("quick.txt", "quick text");
        SysCalls calls = sysCallsReal();
        calls.open = openSlow;
        SysCallsOverride override(calls);
        QWidget host;
        PreviewWindow preview(&host);
        g_slowOpens = 0;
        QElapsedTimer clock;
        clock.start();
        preview.showFor(slow);
        QVERIFY(clock.elapsed() < 300); // the UI thread never waits on the read
        preview.showFor(quick);
        QTRY_VERIFY(preview.isLoaded());
        QCOMPARE(preview.shownText(), QStringLiteral("quick text"));
        QTRY_VERIFY(g_slowOpens >= 1);
        QTest::qWait(1000); // the slow read lands meanwhile and is dropped
        QCOMPARE(preview.shownText(), QStringLiteral("quick text"));
        QCOMPARE(preview.path(), quick);
    }

    void spaceOpensArrowsFollowEscapeCloses()
    {
        TempTree tree;
        tree.file("a.txt", "first");
        tree.file("b.txt", "second");
        TestContext t;
        auto frame = testFrame(t, tree.root());
        frame->activePane()->showLocation(tree.root());
        t.scans.finishAll();
        frame->show();
        frame->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(frame.get()));
        auto* view = qobject_cast<QAbstractItemView*>(frame->activePane()->contentView());
        QVERIFY(view);
        view->setFocus();
        view->setCurrentIndex(view->model()->index(0, 0));
        QCOMPARE(frame->activePane()->selectedPaths(), std::vector<std::string>{tree.path("a.txt")});

        QTest::keyClick(view, Qt::Key_Space);
        PreviewWindow* preview = frame->preview();
        QVERIFY(preview && preview->isVisible());
        QTRY_COMPARE(preview->shownText(), QStringLiteral("first"));
        QVERIFY(view->hasFocus()); // the pane keeps the keyboard

        QTest::keyClick(view, Qt::Key_Down);
        QTRY_COMPARE(preview->shownText(), QStringLiteral("second"));

        QTest::keyClick(view, Qt::Key_Escape);
        QVERIFY(!preview->isVisible());
        QTest::keyClick(view, Qt::Key_Space);
        QVERIFY(preview->isVisible());
        QTest::keyClick(view, Qt::Key_Space);
        QVERIFY(!preview->isVisible());
    }
};

BRONDEL_GUI_TEST_MAIN(PreviewWindowTest)
#include "preview_window_test.moc"
