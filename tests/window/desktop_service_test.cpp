// Brondel on a real session bus (a private one: the test starts itself again under
// dbus-run-session, so it never talks to the desktop's own bus). Another process asks the
// file-manager service to show items, and a window opens on their folder with them
// selected; a second launch hands its folder over and exits, and --new-process keeps a
// process of its own.

#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/app_delegate.h"
#include "window/browser_frame.h"

#include <QProcess>
#include <QUrl>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <unistd.h>

namespace {

constexpr const char* kPrivateBus = "DESKTOP_SERVICE_TEST_PRIVATE_BUS";

QString fileUri(const std::string& path)
{
    return QUrl::fromLocalFile(QString::fromStdString(path)).toString();
}

// Runs `program` to its end (a guard of 20 s only turns a hang into a failure) while the
// event loop keeps turning, so the delegate can answer it; its exit code.
int runAnswered(const QString& program, const QStringList& args, const QStringList& env = {})
{
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const QString& pair : env)
        environment.insert(pair.section(u'=', 0, 0), pair.section(u'=', 1));
    process.setProcessEnvironment(environment);
    process.start(program, args);
    if (!process.waitForStarted(5000))
        return -1;
    QElapsedTimer timer;
    timer.start();
    while (process.state() != QProcess::NotRunning && timer.elapsed() < 20000)
        QTest::qWait(20);
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        return -2;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -3;
}

int gdbusCall(const char* method, const QStringList& uris)
{
    QStringList quoted;
    for (const QString& uri : uris)
        quoted << QStringLiteral("'%1'").arg(uri);
    return runAnswered(QStringLiteral("gdbus"),
                       {"call", "--session", "--dest", "org.freedesktop.FileManager1", "--object-path",
                        "/org/freedesktop/FileManager1", "--method", QStringLiteral("org.freedesktop.FileManager1.") + method,
                        QStringLiteral("[%1]").arg(quoted.join(u',')), ""});
}

std::vector<std::string> sorted(std::vector<std::string> v)
{
    std::sort(v.begin(), v.end());
    return v;
}

} // namespace

class DesktopServiceTest : public QObject {
    Q_OBJECT
private:
    BrondelSettings m_settings;
    std::unique_ptr<TempTree> m_tree;
    std::unique_ptr<AppDelegate> m_delegate;

    BrowserFrame* lastWindow() const
    {
        auto open = m_delegate->windows();
        return open.empty() ? nullptr : open.back();
    }

private slots:
    void initTestCase()
    {
        if (!qEnvironmentVariableIsSet(kPrivateBus))
            QSKIP("needs dbus-run-session");
        m_tree = std::make_unique<TempTree>();
        m_tree->file("docs/a.txt");
        m_tree->file("docs/b.txt");
        m_tree->file("docs/c.txt");
        m_tree->file("other/d.txt");
        m_tree->dir("second");
        m_delegate = std::make_unique<AppDelegate>(std::vector<std::string>{}, RootChoice::Nothing, ViewMode::List,
                                                   m_settings);
        m_delegate->applicationDidFinishLaunching();
        QCOMPARE(m_delegate->windows().size(), size_t(0));
        std::optional<DesktopServed> served;
        m_delegate->serveDesktop(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                 [&served](DesktopServed s) { served = s; });
        QTRY_VERIFY_WITH_TIMEOUT(served.has_value(), 10000);
        QCOMPARE(int(*served), int(DesktopServed::Ours));
    }

    void cleanupTestCase()
    {
        m_delegate.reset();
        m_tree.reset();
    }

    // Items in two folders: a window on each, with exactly its own items selected.
    void showItemsSelectsThemInTheirFolders()
    {
        const size_t before = m_delegate->windows().size();
        const std::string a = m_tree->path("docs/a.txt"), c = m_tree->path("docs/c.txt");
        const std::string d = m_tree->path("other/d.txt");
        QCOMPARE(gdbusCall("ShowItems", {fileUri(a), fileUri(d), fileUri(c)}), 0);
        QTRY_COMPARE(m_delegate->windows().size(), before + 2);
        BrowserFrame* docs = m_delegate->windows()[before];
        BrowserFrame* other = m_delegate->windows()[before + 1];
        QCOMPARE(docs->activePane()->currentLocation(), m_tree->path("docs"));
        QCOMPARE(other->activePane()->currentLocation(), m_tree->path("other"));
        QTRY_COMPARE(sorted(docs->activePane()->selectedPaths()), sorted({a, c}));
        QTRY_COMPARE(other->activePane()->selectedPaths(), std::vector<std::string>{d});
    }

    void showFoldersOpensEach()
    {
        const size_t before = m_delegate->windows().size();
        QCOMPARE(gdbusCall("ShowFolders", {fileUri(m_tree->path("docs")), QStringLiteral("http://example.org/")}), 0);
        QTRY_COMPARE(m_delegate->windows().size(), before + 1);
        QCOMPARE(lastWindow()->activePane()->currentLocation(), m_tree->path("docs"));
    }

    // The item's Properties window opens here, once however often it is asked for.
    void showItemPropertiesOpensItsWindow()
    {
        const std::string b = m_tree->path("docs/b.txt");
        auto propertiesOf = [](const std::string& path) {
            int n = 0;
            for (QWidget* w : QApplication::topLevelWidgets())
                n += w->objectName() == QLatin1String("properties") && w->isVisible()
                    && w->windowTitle().startsWith(QString::fromStdString(path.substr(path.rfind('/') + 1)));
            return n;
        };
        QCOMPARE(gdbusCall("ShowItemProperties", {fileUri(b)}), 0);
        QTRY_COMPARE(propertiesOf(b), 1);
        QCOMPARE(gdbusCall("ShowItemProperties", {fileUri(b)}), 0);
        QTest::qWait(200);
        QCOMPARE(propertiesOf(b), 1);
    }

    // A second launch with a folder (relative to its own working directory) hands it
    // over in its view mode and ends; the window opens here.
    void secondLaunchHandsOver()
    {
        const size_t before = m_delegate->windows().size();
        const QString cd = QString::fromStdString(m_tree->root());
        QCOMPARE(runAnswered(QStringLiteral("sh"),
                             {"-c", QStringLiteral("cd '%1' && exec '%2' --view 3 second")
                                        .arg(cd, QString::fromStdString(testBrondel()))}),
                 0);
        QTRY_COMPARE(m_delegate->windows().size(), before + 1);
        QCOMPARE(lastWindow()->activePane()->currentLocation(), m_tree->path("second"));
        QCOMPARE(lastWindow()->activePane()->currentMode(), ViewMode::Column);
    }

    // --new-process runs on its own (it grabs its window and quits), and nothing arrives.
    void newProcessStaysApart()
    {
        const size_t before = m_delegate->windows().size();
        const std::string shot = m_tree->path("own.png");
        QCOMPARE(runAnswered(QString::fromStdString(testBrondel()),
                             {"--new-process", QString::fromStdString(m_tree->path("second"))},
                             {"BRONDEL_SCREENSHOT=" + QString::fromStdString(shot)}),
                 0);
        QVERIFY(QFile::exists(QString::fromStdString(shot)));
        QTest::qWait(200);
        QCOMPARE(m_delegate->windows().size(), before);
    }

    // Started by the bus while this process answers already: it ends at once rather than
    // waiting for a window request that goes elsewhere.
    void serviceStartWhileServedEnds()
    {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(runAnswered(QString::fromStdString(testBrondel()), {"--service"}), 0);
        QVERIFY2(timer.elapsed() < 15000, qPrintable(QString::number(timer.elapsed())));
    }
};

// Runs itself again on a private bus when it is not on one yet.
int main(int argc, char** argv)
{
    if (!std::getenv(kPrivateBus) && ::access("/usr/bin/dbus-run-session", X_OK) == 0) {
        std::vector<char*> args{const_cast<char*>("dbus-run-session"), const_cast<char*>("--"),
                                const_cast<char*>("env"), const_cast<char*>("DESKTOP_SERVICE_TEST_PRIVATE_BUS=1")};
        for (int i = 0; i < argc; ++i)
            args.push_back(argv[i]);
        args.push_back(nullptr);
        ::execv("/usr/bin/dbus-run-session", args.data());
    }
    testIsolateEnvironment();
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    DesktopServiceTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "desktop_service_test.moc"
