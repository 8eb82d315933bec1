#include "window/op_progress_panel.h"

#include "ops/op_queue.h"
#include "services/desktop_notify.h"
#include "services/op_progress_model.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <cstring>
#include <set>
#include <utility>

namespace {

QString decoded(const std::string& bytes)
{
    return QFile::decodeName(QByteArray::fromStdString(bytes));
}

QString lastName(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return decoded(slash == std::string::npos ? path : path.substr(slash + 1));
}

QString parentName(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos || slash == 0 ? QStringLiteral("/") : lastName(path.substr(0, slash));
}

void setFraction(QProgressBar* bar, double fraction)
{
    if (fraction < 0) {
        bar->setRange(0, 0); // busy: totals still being counted
    } else {
        bar->setRange(0, 1000);
        bar->setValue(int(fraction * 1000));
    }
}

} // namespace

QString opConflictText(const OpConflict& conflict)
{
    const QString what = conflict.targetIsDir ? QObject::tr("A folder named “%1” already exists in “%2”.")
                                              : QObject::tr("An item named “%1” already exists in “%2”.");
    return what.arg(lastName(conflict.target), parentName(conflict.target));
}

OpProgressPanel::OpProgressPanel(OpQueue* queue, QWidget* parent)
    : QWidget(parent)
    , m_queue(queue)
    , m_model(new OpProgressModel(queue, this))
{
    setObjectName(QStringLiteral("opProgress"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    m_list = new QWidget(this);
    m_list->setObjectName(QStringLiteral("jobList"));
    m_listLayout = new QVBoxLayout(m_list);
    m_listLayout->setContentsMargins(0, 0, 0, 0);
    m_list->hide();
    column->addWidget(m_list);
    auto* summary = new QHBoxLayout;
    m_bar = new QProgressBar(this);
    m_bar->setTextVisible(false);
    m_bar->setMaximumWidth(120);
    m_bar->setAccessibleName(tr("File operations"));
    m_line = new QLabel(this);
    m_expand = new QToolButton(this);
    m_expand->setObjectName(QStringLiteral("expandJobs"));
    m_expand->setText(QStringLiteral("▴"));
    m_expand->setAccessibleName(tr("Show the file operations"));
    m_expand->setAccessibleDescription(tr("Lists each operation with its progress"));
    connect(m_expand, &QToolButton::clicked, this, [this] { setExpanded(!m_expanded); });
    summary->addWidget(m_bar);
    summary->addWidget(m_line);
    summary->addWidget(m_expand);
    column->addLayout(summary);

    connect(m_model, &QAbstractItemModel::rowsInserted, this, &OpProgressPanel::rebuildList);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &OpProgressPanel::rebuildList);
    connect(m_model, &QAbstractItemModel::dataChanged, this, &OpProgressPanel::refreshRows);
    connect(m_model, &OpProgressModel::finishedLong, this, [](const QString& title, const OpResult& result) {
        if (QApplication::activeWindow())
            return; // the user is looking at us
        desktopNotify(title, result.status == OpStatus::Done ? tr("Finished") : tr("Stopped"));
    });
    if (queue) {
        connect(queue, &OpQueue::conflictAsked, this, &OpProgressPanel::askConflict);
        connect(queue, &OpQueue::errorAsked, this, &OpProgressPanel::askError);
    }
    rebuildList();
}

void OpProgressPanel::setExpanded(bool expanded)
{
    m_expanded = expanded;
    m_expand->setText(expanded ? QStringLiteral("▾") : QStringLiteral("▴"));
    m_list->setVisible(expanded && m_model->rowCount() > 0);
}

void OpProgressPanel::updateSummary()
{
    const int jobs = m_model->rowCount();
    setVisible(jobs > 0);
    if (jobs == 0)
        return;
    setFraction(m_bar, m_model->overallFraction());
    m_line->setText(jobs == 1 ? m_model->index(0).data(OpProgressModel::LineRole).toString()
                              : tr("%n operations", nullptr, jobs));
}

void OpProgressPanel::rebuildList()
{
    // A handful of jobs at most: one row widget each, made again when jobs come or go.
    m_rows.clear();
    while (QLayoutItem* item = m_listLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const OpJobId job = m_model->jobAt(row);
        auto* line = new QWidget(m_list);
        auto* grid = new QHBoxLayout(line);
        grid->setContentsMargins(0, 0, 0, 0);
        auto* texts = new QVBoxLayout;
        RowWidgets widgets{new QLabel(line), new QProgressBar(line), new QLabel(line), nullptr};
        widgets.bar->setTextVisible(false);
        widgets.title->setObjectName(QStringLiteral("jobTitle"));
        widgets.bar->setObjectName(QStringLiteral("jobBar"));
        widgets.line->setObjectName(QStringLiteral("jobLine"));
        texts->addWidget(widgets.title);
        texts->addWidget(widgets.bar);
        texts->addWidget(widgets.line);
        grid->addLayout(texts, 1);
        auto* pause = new QPushButton(line);
        widgets.pause = pause;
        auto* cancel = new QPushButton(tr("Cancel"), line);
        pause->setObjectName(QStringLiteral("jobPause"));
        cancel->setObjectName(QStringLiteral("jobCancel"));
        QPointer<OpQueue> queue = m_queue;
        QPointer<OpProgressModel> model = m_model;
        connect(pause, &QPushButton::clicked, line, [queue, model, job] {
            if (!queue || !model || model->rowOf(job) < 0)
                return;
            const bool paused = model->index(model->rowOf(job)).data(OpProgressModel::PausedRole).toBool();
            paused ? queue->resume(job) : queue->pause(job);
        });
        connect(cancel, &QPushButton::clicked, line, [queue, job] {
            if (queue)
                queue->cancel(job);
        });
        grid->addWidget(pause);
        grid->addWidget(cancel);
        m_listLayout->addWidget(line);
        m_rows.push_back(widgets);
    }
    setExpanded(m_expanded);
    refreshRows();
}

void OpProgressPanel::refreshRows()
{
    for (int row = 0; row < m_model->rowCount() && size_t(row) < m_rows.size(); ++row) {
        const QModelIndex index = m_model->index(row);
        const RowWidgets& widgets = m_rows[size_t(row)];
        widgets.title->setText(index.data(Qt::DisplayRole).toString());
        setFraction(widgets.bar, index.data(OpProgressModel::FractionRole).toDouble());
        widgets.line->setText(index.data(OpProgressModel::LineRole).toString());
        widgets.pause->setText(index.data(OpProgressModel::PausedRole).toBool() ? tr("Resume") : tr("Pause"));
    }
    updateSummary();
}

namespace {

// Every window's panel hears every question; the first to hear it asks.
bool firstToAsk(OpJobId job, uint64_t question)
{
    static std::set<std::pair<OpJobId, uint64_t>> asked; // UI thread only
    return asked.insert({job, question}).second;
}

} // namespace

void OpProgressPanel::askConflict(OpJobId job, const OpConflict& conflict)
{
    if (!firstToAsk(job, conflict.questionId))
        return;
    auto* box = new QMessageBox(QMessageBox::Question, tr("Name Already Taken"), opConflictText(conflict),
        QMessageBox::NoButton, window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(tr("Replace it, keep both, or skip this item?"));
    auto* replace = box->addButton(tr("Replace"), QMessageBox::DestructiveRole);
    auto* keepBoth = box->addButton(tr("Keep Both"), QMessageBox::AcceptRole);
    auto* skip = box->addButton(tr("Skip"), QMessageBox::RejectRole);
    QPushButton* merge = nullptr;
    if (conflict.sourceIsDir && conflict.targetIsDir)
        merge = box->addButton(tr("Merge"), QMessageBox::AcceptRole);
    auto* stop = box->addButton(tr("Stop"), QMessageBox::RejectRole);
    auto* all = new QCheckBox(tr("Do this for every item of this operation"), box);
    box->setCheckBox(all);
    box->setEscapeButton(skip);
    QPointer<OpQueue> queue = m_queue;
    const uint64_t question = conflict.questionId;
    connect(box, &QMessageBox::buttonClicked, box, [=](QAbstractButton* button) {
        if (!queue)
            return;
        OpConflictAnswer answer;
        answer.scope = all->isChecked() ? ConflictScope::AllItems : ConflictScope::ThisItem;
        answer.choice = button == replace ? ConflictChoice::Replace
            : button == keepBoth          ? ConflictChoice::KeepBoth
            : button == merge && merge    ? ConflictChoice::Merge
            : button == stop              ? ConflictChoice::Cancel
                                          : ConflictChoice::Skip;
        queue->answerConflict(job, question, answer);
    });
    box->open();
}

void OpProgressPanel::askError(OpJobId job, const OpError& error)
{
    if (!firstToAsk(job, error.questionId))
        return;
    auto* box = new QMessageBox(QMessageBox::Warning, tr("An Item Failed"),
        tr("“%1” could not be handled: %2.").arg(lastName(error.path), QString::fromLocal8Bit(std::strerror(error.error))),
        QMessageBox::NoButton, window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    auto* retry = box->addButton(tr("Retry"), QMessageBox::AcceptRole);
    auto* skip = box->addButton(tr("Skip"), QMessageBox::RejectRole);
    box->addButton(tr("Stop"), QMessageBox::DestructiveRole);
    box->setEscapeButton(skip);
    QPointer<OpQueue> queue = m_queue;
    const uint64_t question = error.questionId;
    connect(box, &QMessageBox::buttonClicked, box, [=](QAbstractButton* button) {
        if (queue)
            queue->answerError(job, question,
                button == retry ? ErrorChoice::Retry : button == skip ? ErrorChoice::Skip : ErrorChoice::Cancel);
    });
    box->open();
}
