// Files copied or cut by us read back the same, including names that are not UTF-8, and
// what other file managers put on the clipboard reads as copied or cut as they meant.

#include "services/file_clipboard.h"
#include "support/test_env.h"

#include <QApplication>
#include <QTest>

#include <memory>

class FileClipboardTest : public QObject {
    Q_OBJECT
private slots:
    void oursRoundTrip()
    {
        const std::vector<std::string> paths{"/home/u/a b.txt", "/home/u/caf\xe9", "/home/u/100%#?.txt"};
        for (ClipboardIntent intent : {ClipboardIntent::Copy, ClipboardIntent::Cut}) {
            std::unique_ptr<QMimeData> data(fileClipboardData(paths, intent));
            auto read = fileClipboardRead(*data);
            QVERIFY(read);
            QCOMPARE(read->paths, paths);
            QCOMPARE(read->intent, intent);
            // Each form alone says the same.
            for (const char* only : {"text/uri-list", "x-special/gnome-copied-files"}) {
                QMimeData single;
                single.setData(only, data->data(only));
                if (QByteArray(only) == "text/uri-list")
                    single.setData("application/x-kde-cutselection", data->data("application/x-kde-cutselection"));
                auto alone = fileClipboardRead(single);
                QVERIFY2(alone, only);
                QCOMPARE(alone->paths, paths);
                QCOMPARE(alone->intent, intent);
            }
        }
    }

    void othersForms_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("kdeCut");
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<bool>("cut");
        QTest::newRow("gnome cut") << "x-special/gnome-copied-files" << QByteArray("cut\nfile:///a/x%20y\nfile:///b")
                                   << QByteArray() << QStringList{"/a/x y", "/b"} << true;
        QTest::newRow("gnome copy, trailing line") << "x-special/gnome-copied-files" << QByteArray("copy\nfile:///a\n")
                                                   << QByteArray() << QStringList{"/a"} << false;
        QTest::newRow("kde cut") << "text/uri-list" << QByteArray("file:///k/one\r\nfile://localhost/k/two\r\n")
                                 << QByteArray("1") << QStringList{"/k/one", "/k/two"} << true;
        QTest::newRow("plain uri list") << "text/uri-list" << QByteArray("# comment\r\nfile:///u\r\n") << QByteArray()
                                        << QStringList{"/u"} << false;
        QTest::newRow("remote and web links skipped") << "text/uri-list"
                                                      << QByteArray("https://x.org/f\r\nfile://other/f\r\nfile:///ok\r\n")
                                                      << QByteArray() << QStringList{"/ok"} << false;
        QTest::newRow("paths as text") << "text/plain" << QByteArray("/p/one\n/p/two") << QByteArray()
                                       << QStringList{"/p/one", "/p/two"} << false;
        QTest::newRow("prose is not files") << "text/plain" << QByteArray("/p/one\nhello") << QByteArray()
                                            << QStringList{} << false;
        QTest::newRow("nothing local") << "text/uri-list" << QByteArray("https://x.org/f") << QByteArray()
                                       << QStringList{} << false;
    }

    void othersForms()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, kdeCut);
        QFETCH(QStringList, paths);
        QFETCH(bool, cut);
        QMimeData data;
        data.setData(format, bytes);
        if (!kdeCut.isEmpty())
            data.setData("application/x-kde-cutselection", kdeCut);
        auto read = fileClipboardRead(data);
        if (paths.isEmpty()) {
            QVERIFY(!read);
            return;
        }
        QVERIFY(read);
        std::vector<std::string> want;
        for (const QString& p : paths)
            want.push_back(p.toStdString());
        QCOMPARE(read->paths, want);
        QCOMPARE(read->intent == ClipboardIntent::Cut, cut);
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QApplication app(argc, argv);
    FileClipboardTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "file_clipboard_test.moc"
