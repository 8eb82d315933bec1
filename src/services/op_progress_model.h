#pragma once
// The file operations under way, one row per job, as the progress panel shows them: a
// title ("Copying report.pdf"), a line with amounts, rate and time left, the fraction
// done and whether the job is paused. Rows come and go with the queue's signals; a
// job that ran for a while and ended is announced (finishedLong) so that the desktop
// can be told when the window is not in front.

#include "ops/op_queue.h" // the metatypes of the records the signals carry

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QString>

#include <vector>

class OpQueue;

// "Copying", "Moving", ... with the current item's name when there is one.
QString opProgressTitle(OpKind kind, const OpProgress& progress);
// "3 of 10 items — 1.2 MB of 4 MB — 2.1 MB/s — 5 s left", parts left out while unknown.
QString opProgressLine(const OpProgress& progress);
// 0..1 by bytes when there are any, else by items; -1 while the totals are counted.
double opProgressFraction(const OpProgress& progress);

class OpProgressModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { LineRole = Qt::UserRole + 1, FractionRole, PausedRole, JobRole };

    // Follows `queue` (none: the slots are called by hand, as in tests). A job that ran
    // at least `longMs` is announced when it ends.
    explicit OpProgressModel(OpQueue* queue, QObject* parent = nullptr, int longMs = 10000);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    OpJobId jobAt(int row) const;
    int rowOf(OpJobId job) const; // -1: not shown
    // The jobs together: the fraction of all bytes (or items) done, -1 when unknown.
    double overallFraction() const;

    void jobQueued(OpJobId job, OpKind kind);
    void progressChanged(OpJobId job, const OpProgress& progress);
    void jobFinished(OpJobId job, const OpResult& result);

signals:
    void finishedLong(const QString& title, const OpResult& result);

private:
    struct Job {
        OpJobId id = 0;
        OpKind kind = OpKind::Copy;
        OpProgress progress;
        QElapsedTimer started;
    };
    std::vector<Job> m_jobs;
    int m_longMs;
};
