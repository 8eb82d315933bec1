// The jobs list of the progress panel: rows come and go with the jobs, texts say what is
// known and leave out what is not, and a long job is announced when it ends.

#include "services/op_progress_model.h"
#include "services/desktop_notify.h"
#include "support/test_env.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

class OpProgressModelTest : public QObject {
    Q_OBJECT
private slots:
    void texts()
    {
        OpProgress counting;
        counting.counting = true;
        counting.itemsTotal = 12;
        QCOMPARE(opProgressFraction(counting), -1.0);
        QVERIFY(opProgressLine(counting).startsWith(QStringLiteral("Counting")));

        OpProgress running;
        running.itemsDone = 3;
        running.itemsTotal = 10;
        running.bytesDone = 1000;
        running.bytesTotal = 4000;
        running.bytesPerSecond = 500;
        running.secondsLeft = 6;
        running.currentItem = "/home/u/report.pdf";
        QCOMPARE(opProgressFraction(running), 0.25);
        const QString line = opProgressLine(running);
        QVERIFY2(line.contains(QStringLiteral("3 of 10 items")), qPrintable(line));
        QVERIFY2(line.contains(QStringLiteral("6 s left")), qPrintable(line));
        QCOMPARE(opProgressTitle(OpKind::Copy, running), QStringLiteral("Copying report.pdf"));

        OpProgress paused = running;
        paused.paused = true;
        QVERIFY(opProgressLine(paused).contains(QStringLiteral("Paused")));
        QVERIFY(!opProgressLine(paused).contains(QStringLiteral("left")));

        OpProgress itemsOnly;
        itemsOnly.itemsDone = 1;
        itemsOnly.itemsTotal = 4;
        QCOMPARE(opProgressFraction(itemsOnly), 0.25);
        OpProgress longer = running;
        longer.secondsLeft = 3 * 3600 + 120;
        QVERIFY(opProgressLine(longer).contains(QStringLiteral("3 h 2 min left")));
    }

    void rowsFollowJobs()
    {
        OpProgressModel model(nullptr, nullptr, 0);
        QSignalSpy announced(&model, &OpProgressModel::finishedLong);
        model.jobQueued(7, OpKind::Move);
        model.jobQueued(9, OpKind::Copy);
        model.jobQueued(7, OpKind::Move); // told twice: one row
        QCOMPARE(model.rowCount(), 2);
        OpProgress half;
        half.bytesDone = 50;
        half.bytesTotal = 100;
        model.progressChanged(9, half);
        model.progressChanged(42, half); // not ours: ignored
        QCOMPARE(model.index(1).data(OpProgressModel::FractionRole).toDouble(), 0.5);
        QCOMPARE(model.overallFraction(), 0.5); // the other job has no bytes
        OpProgress counting;
        counting.counting = true;
        model.progressChanged(7, counting);
        QCOMPARE(model.overallFraction(), -1.0);
        model.jobFinished(7, OpResult{});
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.jobAt(0), OpJobId(9));
        QCOMPARE(model.rowOf(7), -1);
        QCOMPARE(announced.count(), 1); // longMs 0: every job is long
        QCOMPARE(announced.at(0).at(0).toString(), QStringLiteral("Moving"));

        OpProgressModel patient(nullptr, nullptr, 60000);
        QSignalSpy quiet(&patient, &OpProgressModel::finishedLong);
        patient.jobQueued(1, OpKind::Copy);
        patient.jobFinished(1, OpResult{});
        QCOMPARE(quiet.count(), 0); // a quick job is not announced
    }

    void notificationCall()
    {
        const QDBusMessage call = desktopNotifyMessage(QStringLiteral("Copying"), QStringLiteral("Finished"));
        QCOMPARE(call.service(), QStringLiteral("org.freedesktop.Notifications"));
        QCOMPARE(call.member(), QStringLiteral("Notify"));
        const QList<QVariant> args = call.arguments();
        QCOMPARE(args.size(), 8);
        QCOMPARE(args.at(3).toString(), QStringLiteral("Copying"));
        QCOMPARE(args.at(4).toString(), QStringLiteral("Finished"));
        QCOMPARE(args.at(7).toInt(), -1);
        // Without a session bus nothing is sent and nothing waits.
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        QVERIFY(!desktopNotify(QStringLiteral("x"), QStringLiteral("y")));
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QCoreApplication app(argc, argv);
    OpProgressModelTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "op_progress_model_test.moc"
