#include "services/op_progress_model.h"

#include "fs/fmt.h"
#include "ops/op_queue.h"

#include <QCoreApplication>
#include <QFile>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OpProgress", text);
}

QString human(uint64_t bytes)
{
    return QString::fromStdString(fmtHuman(int64_t(bytes)));
}

QString nameOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return QFile::decodeName(QByteArray::fromStdString(slash == std::string::npos ? path : path.substr(slash + 1)));
}

QString timeLeft(int64_t seconds)
{
    if (seconds < 60)
        return tr("%1 s left").arg(seconds);
    if (seconds < 3600)
        return tr("%1 min left").arg((seconds + 30) / 60);
    return tr("%1 h %2 min left").arg(seconds / 3600).arg((seconds % 3600) / 60);
}

} // namespace

QString opProgressTitle(OpKind kind, const OpProgress& progress)
{
    QString verb;
    switch (kind) {
    case OpKind::Copy: verb = tr("Copying"); break;
    case OpKind::Move: verb = tr("Moving"); break;
    case OpKind::Rename: verb = tr("Renaming"); break;
    case OpKind::NewFolder: verb = tr("Making a folder"); break;
    case OpKind::Trash: verb = tr("Moving to the Trash"); break;
    case OpKind::Restore: verb = tr("Putting back"); break;
    case OpKind::Delete: verb = tr("Deleting"); break;
    }
    return progress.currentItem.empty() ? verb : verb + ' ' + nameOf(progress.currentItem);
}

QString opProgressLine(const OpProgress& progress)
{
    QStringList parts;
    if (progress.counting)
        parts << tr("Counting…");
    if (progress.itemsTotal > 1)
        parts << tr("%1 of %2 items").arg(progress.itemsDone).arg(progress.itemsTotal);
    if (progress.bytesTotal > 0)
        parts << tr("%1 of %2").arg(human(progress.bytesDone), human(progress.bytesTotal));
    if (progress.paused)
        parts << tr("Paused");
    else {
        if (progress.bytesPerSecond >= 1)
            parts << tr("%1/s").arg(human(uint64_t(progress.bytesPerSecond)));
        if (progress.secondsLeft >= 0 && !progress.counting)
            parts << timeLeft(progress.secondsLeft);
    }
    return parts.join(QStringLiteral(" — "));
}

double opProgressFraction(const OpProgress& progress)
{
    if (progress.counting)
        return -1;
    if (progress.bytesTotal > 0)
        return std::min(1.0, double(progress.bytesDone) / double(progress.bytesTotal));
    if (progress.itemsTotal > 0)
        return std::min(1.0, double(progress.itemsDone) / double(progress.itemsTotal));
    return -1;
}

OpProgressModel::OpProgressModel(OpQueue* queue, QObject* parent, int longMs)
    : QAbstractListModel(parent)
    , m_longMs(longMs)
{
    if (!queue)
        return;
    connect(queue, &OpQueue::jobQueued, this, &OpProgressModel::jobQueued);
    connect(queue, &OpQueue::progressChanged, this, &OpProgressModel::progressChanged);
    connect(queue, &OpQueue::jobFinished, this, &OpProgressModel::jobFinished);
}

int OpProgressModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_jobs.size());
}

QVariant OpProgressModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || size_t(index.row()) >= m_jobs.size())
        return {};
    const Job& job = m_jobs[size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole: return opProgressTitle(job.kind, job.progress);
    case LineRole: return opProgressLine(job.progress);
    case FractionRole: return opProgressFraction(job.progress);
    case PausedRole: return job.progress.paused;
    case JobRole: return QVariant::fromValue<qulonglong>(job.id);
    default: return {};
    }
}

OpJobId OpProgressModel::jobAt(int row) const
{
    return row >= 0 && size_t(row) < m_jobs.size() ? m_jobs[size_t(row)].id : 0;
}

int OpProgressModel::rowOf(OpJobId job) const
{
    for (size_t i = 0; i < m_jobs.size(); ++i)
        if (m_jobs[i].id == job)
            return int(i);
    return -1;
}

double OpProgressModel::overallFraction() const
{
    uint64_t done = 0, total = 0, itemsDone = 0, itemsTotal = 0;
    for (const Job& job : m_jobs) {
        if (job.progress.counting)
            return -1;
        done += job.progress.bytesDone;
        total += job.progress.bytesTotal;
        itemsDone += job.progress.itemsDone;
        itemsTotal += job.progress.itemsTotal;
    }
    if (total > 0)
        return std::min(1.0, double(done) / double(total));
    return itemsTotal > 0 ? std::min(1.0, double(itemsDone) / double(itemsTotal)) : -1;
}

void OpProgressModel::jobQueued(OpJobId job, OpKind kind)
{
    if (rowOf(job) >= 0)
        return;
    const int row = int(m_jobs.size());
    beginInsertRows({}, row, row);
    Job made;
    made.id = job;
    made.kind = kind;
    made.started.start();
    m_jobs.push_back(made);
    endInsertRows();
}

void OpProgressModel::progressChanged(OpJobId job, const OpProgress& progress)
{
    const int row = rowOf(job);
    if (row < 0)
        return;
    m_jobs[size_t(row)].progress = progress;
    emit dataChanged(index(row), index(row));
}

void OpProgressModel::jobFinished(OpJobId job, const OpResult& result)
{
    const int row = rowOf(job);
    if (row < 0)
        return;
    const Job ended = m_jobs[size_t(row)];
    beginRemoveRows({}, row, row);
    m_jobs.erase(m_jobs.begin() + row);
    endRemoveRows();
    if (ended.started.elapsed() >= m_longMs)
        emit finishedLong(opProgressTitle(ended.kind, OpProgress{}), result);
}
