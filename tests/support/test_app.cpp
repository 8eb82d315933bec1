#include "support/test_app.h"

#include "support/test_env.h"

#include <QElapsedTimer>
#include <QThread>

#include <string>

QCoreApplication& testApp()
{
    static std::string name = testSelfPath();
    static int argc = 1;
    static char* argv[] = {name.data(), nullptr};
    static auto* app = new QCoreApplication(argc, argv);
    return *app;
}

bool testSpinUntil(const std::function<bool()>& done, int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return done();
}
