// The applications for a file type, the chooser's list, a new default and a launch, read
// by GIO from fake desktop entries in the test's own folders (the system's are hidden).
// Launches start a small script that records its arguments, never a real application.

#include "services/app_infos.h"
#include "fs/file_io.h"
#include "support/test_env.h"

#include <QCoreApplication>
#include <QTest>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string g_apps;   // the user's applications folder
std::string g_record; // what the recording script has been given, a line per start

void entry(const std::string& id, const std::string& body)
{
    QVERIFY(fileWriteAtomic(g_apps + "/" + id, "[Desktop Entry]\nType=Application\n" + body));
}

QStringList ids(const std::vector<AppInfo>& apps)
{
    QStringList out;
    for (const AppInfo& app : apps)
        out << app.id;
    return out;
}

QStringList recordedLines()
{
    QStringList lines = QString::fromStdString(fileReadAll(g_record).value_or("")).split(u'\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

} // namespace

class AppInfosTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // Everything GIO will know of, before its first look-up in this process.
        g_apps = testIsolateApplications();
        g_record = testHome() + "/launched";
        const std::string script = testHome() + "/record.sh";
        // One write per start, so that starts running at once never mix their lines.
        QVERIFY(fileWriteAtomic(script, "#!/bin/sh\nline=\nfor a in \"$@\"; do line=\"$line$a|\"; done\n"
                                        "printf '%s\\n' \"$line\" >> '" + g_record + "'\n"));
        QCOMPARE(::chmod(script.c_str(), 0755), 0);
        entry("viewer.desktop", "Name=Viewer\nIcon=text-x-generic\nExec=true %U\nMimeType=text/plain;\n");
        entry("copier.desktop", "Name=Copier\nExec=true %f\nMimeType=text/plain;\n");
        entry("quiet.desktop", "Name=Quiet\nNoDisplay=true\nExec=true %f\nMimeType=text/plain;\n");
        entry("csource.desktop", "Name=C Source Editor\nExec=true %f\nMimeType=text/x-csrc;\n");
        entry("gone.desktop", "Name=Gone\nHidden=true\nExec=true %f\nMimeType=text/plain;\n");
        entry("each.desktop", "Name=Each\nExec=" + script + " %f\n");
        entry("list.desktop", "Name=List\nExec=" + script + " %F\n");
        entry("uris.desktop", "Name=Uris\nExec=" + script + " %u\n");
        entry("missing.desktop", "Name=Missing\nExec=/nonexistent/program %f\n");
        // GIO learns which types an entry takes from the folder's cache, as
        // update-desktop-database writes it.
        QVERIFY(fileWriteAtomic(g_apps + "/mimeinfo.cache",
            "[MIME Cache]\ntext/plain=viewer.desktop;copier.desktop;quiet.desktop;gone.desktop;\n"
            "text/x-csrc=csource.desktop;\n"));
        QVERIFY(fileWriteAtomic(std::string(qgetenv("XDG_CONFIG_HOME").constData()) + "/mimeapps.list",
            "[Default Applications]\ntext/plain=copier.desktop\n"));
    }

    void forType_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("first");      // the default, or nothing
        QTest::addColumn<QStringList>("others"); // in any order
        QTest::newRow("the default, then the others that name the type")
            << "text/plain" << "copier.desktop" << QStringList{"quiet.desktop", "viewer.desktop"};
        QTest::newRow("a subtype: its own first (the default), then those of its parent")
            << "text/x-csrc" << "csource.desktop" << QStringList{"copier.desktop", "quiet.desktop", "viewer.desktop"};
        QTest::newRow("nothing takes it") << "audio/flac" << "" << QStringList{};
        QTest::newRow("an unknown type") << "application/x-nothing-knows" << "" << QStringList{};
    }
    void forType()
    {
        QFETCH(QString, type);
        QFETCH(QString, first);
        QFETCH(QStringList, others);
        const std::vector<AppInfo> apps = AppInfos::forType(type);
        QStringList got = ids(apps);
        if (!first.isEmpty()) {
            QVERIFY(!apps.empty());
            QCOMPARE(apps.front().id, first);
            QVERIFY(apps.front().isDefault);
            got.removeFirst();
        }
        QVERIFY(std::none_of(apps.begin() + (first.isEmpty() ? 0 : 1), apps.end(), [](const AppInfo& a) { return a.isDefault; }));
        QCOMPARE(got.size(), others.size()); // each once
        got.sort();
        others.sort();
        QCOMPARE(got, others);
    }

    void chooserListsTheShownOnesByName()
    {
        const std::vector<AppInfo> all = AppInfos::all();
        QCOMPARE(ids(all), (QStringList{"csource.desktop", "copier.desktop", "each.desktop", "list.desktop",
                               "uris.desktop", "viewer.desktop"}));
        QCOMPARE(all.back().name, QStringLiteral("Viewer"));
        QCOMPARE(all.back().icon, QStringLiteral("text-x-generic"));
    }

    void newDefault()
    {
        QCOMPARE(AppInfos::setDefault(QStringLiteral("text/plain"), QStringLiteral("viewer.desktop")), QString());
        const std::vector<AppInfo> apps = AppInfos::forType(QStringLiteral("text/plain"));
        QVERIFY(!apps.empty());
        QCOMPARE(apps.front().id, QStringLiteral("viewer.desktop"));
        QVERIFY(apps.front().isDefault);
        const std::string list = fileReadAll(std::string(qgetenv("XDG_CONFIG_HOME").constData()) + "/mimeapps.list").value_or("");
        QVERIFY2(list.find("text/plain=viewer.desktop") != std::string::npos, list.c_str());
        QVERIFY(!AppInfos::setDefault(QStringLiteral("text/plain"), QStringLiteral("nothing.desktop")).isEmpty());
    }

    void launch_data()
    {
        const QString a = QString::fromStdString(testHome() + "/my notes.txt");
        const QString b = QString::fromStdString(testHome() + "/Grüße.txt");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("lines"); // sorted: separate starts may finish in any order
        QTest::newRow("one start per file") << "each.desktop" << QStringList{b + "|", a + "|"};
        QTest::newRow("one start for the list") << "list.desktop" << QStringList{a + "|" + b + "|"};
        // Handed over as addresses, which GIO gives a local program back as paths.
        QTest::newRow("addresses of local files") << "uris.desktop" << QStringList{b + "|", a + "|"};
    }
    void launch()
    {
        QFETCH(QString, id);
        QFETCH(QStringList, lines);
        ::unlink(g_record.c_str());
        const std::vector<std::string> paths{testHome() + "/my notes.txt", testHome() + "/Grüße.txt"};
        QCOMPARE(AppInfos::launch(id, paths), QString());
        QTRY_COMPARE_WITH_TIMEOUT(recordedLines().size(), lines.size(), 10000);
        lines.sort();
        QCOMPARE(recordedLines(), lines);
    }

    void launchFailures_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("not installed") << "nothing.desktop";
        QTest::newRow("its program is missing") << "missing.desktop";
        QTest::newRow("hidden") << "gone.desktop";
    }
    void launchFailures()
    {
        QFETCH(QString, id);
        QVERIFY(!AppInfos::launch(id, {testHome() + "/x.txt"}).isEmpty());
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QCoreApplication app(argc, argv);
    AppInfosTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "app_infos_test.moc"
