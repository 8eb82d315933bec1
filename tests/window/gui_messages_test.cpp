// Qt's own diagnostics stay off standard error unless BRONDEL_DEBUG asks for them.

#include "gui_test_main.h"
#include "window/gui_messages.h"

#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

// What the messages of `speak` write to standard error.
QByteArray stderrOf(const std::function<void()>& speak)
{
    const std::string file = testHome() + "/stderr.txt";
    std::fflush(stderr);
    const int saved = ::dup(2);
    const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(fd, 2);
    ::close(fd);
    speak();
    std::fflush(stderr);
    ::dup2(saved, 2);
    ::close(saved);
    QFile in(QString::fromStdString(file));
    in.open(QIODevice::ReadOnly);
    return in.readAll();
}

void chatter()
{
    qDebug("a debug line");
    qInfo("an info line");
    qWarning("QStandardPaths: XDG_RUNTIME_DIR not set");
}

} // namespace

class GuiMessagesTest : public QObject {
    Q_OBJECT
private slots:
    void quietUnlessDebugging()
    {
        ::unsetenv("BRONDEL_DEBUG");
        guiInstallMessageHandler();
        QCOMPARE(stderrOf(chatter), QByteArray());

        ::setenv("BRONDEL_DEBUG", "", 1); // set is enough, whatever the value
        guiInstallMessageHandler();
        QByteArray text = stderrOf(chatter);
        ::unsetenv("BRONDEL_DEBUG");
        QVERIFY(text.contains("a debug line"));
        QVERIFY(text.contains("XDG_RUNTIME_DIR not set"));
        qInstallMessageHandler(nullptr);
    }
};

BRONDEL_GUI_TEST_MAIN(GuiMessagesTest)
#include "gui_messages_test.moc"
