#include "window/trash_window.h"

#include "fs/file_io.h"
#include "fs/fmt.h"
#include "fs/paths.h"
#include "fs/trash_op.h"

#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

namespace {

constexpr int kIndexRole = Qt::UserRole + 1;
// Progress reaches the window at most this often while emptying.
constexpr std::chrono::milliseconds kProgressEvery{50};

QString decode(const std::string& bytes) { return QFile::decodeName(QByteArray::fromStdString(bytes)); }

} // namespace

TrashWindow* TrashWindow::showShared(std::function<void()> changed)
{
    static QPointer<TrashWindow> shared;
    if (!shared) {
        shared = new TrashWindow;
        shared->setAttribute(Qt::WA_DeleteOnClose);
        connect(shared, &TrashWindow::trashChanged, shared, [changed] {
            if (changed)
                changed();
        });
    }
    shared->show();
    shared->raise();
    shared->activateWindow();
    shared->reload();
    return shared;
}

TrashWindow::TrashWindow(std::function<std::vector<std::string>()> topdirs, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_topdirs(topdirs ? std::move(topdirs) : [] { return trashVolumeTopdirs(); })
    , m_work(1, WorkClass::UserInitiated)
{
    setWindowTitle(tr("Trash"));
    setAccessibleName(tr("Trash"));
    resize(760, 460);
    auto* layout = new QVBoxLayout(this);
    m_list = new QTreeWidget(this);
    m_list->setHeaderLabels({tr("Name"), tr("Original Location"), tr("Date Deleted"), tr("Size")});
    m_list->setRootIsDecorated(false);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setSortingEnabled(true);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->setAccessibleName(tr("Items in the Trash"));
    layout->addWidget(m_list, 1);

    auto* row = new QHBoxLayout;
    m_status = new QLabel(this);
    row->addWidget(m_status, 1);
    m_progress = new QProgressBar(this);
    m_progress->hide();
    row->addWidget(m_progress);
    m_stopButton = new QPushButton(tr("Stop"), this);
    m_stopButton->hide();
    row->addWidget(m_stopButton);
    m_restore = new QPushButton(tr("Restore"), this);
    m_restore->setAccessibleDescription(tr("Puts the selected items back where they were"));
    m_delete = new QPushButton(tr("Delete Permanently…"), this);
    m_delete->setAccessibleDescription(tr("Deletes the selected items for good, after asking"));
    m_empty = new QPushButton(tr("Empty Trash…"), this);
    m_empty->setAccessibleDescription(tr("Deletes everything in the Trash for good, after asking"));
    for (QPushButton* button : {m_restore, m_delete, m_empty})
        row->addWidget(button);
    layout->addLayout(row);

    connect(m_restore, &QPushButton::clicked, this, &TrashWindow::restoreSelected);
    connect(m_delete, &QPushButton::clicked, this, &TrashWindow::deleteSelected);
    connect(m_empty, &QPushButton::clicked, this, &TrashWindow::emptyTrash);
    connect(m_stopButton, &QPushButton::clicked, this, [this] {
        if (m_stop)
            m_stop->store(true);
    });
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, [this] { setBusy(m_busy); });
    setBusy(false);
}

TrashWindow::~TrashWindow()
{
    if (m_stop)
        m_stop->store(true); // an erase still running stops after its current item
}

void TrashWindow::reload()
{
    const int gen = ++m_generation;
    m_work.submit(this, [this, gen, topdirs = m_topdirs]() -> std::function<void()> {
        auto items = std::make_shared<std::vector<TrashItem>>(trashListAll(topdirs()));
        return [this, gen, items] {
            if (gen != m_generation)
                return;
            m_items = std::move(*items);
            m_loaded = true;
            fill();
            if (std::exchange(m_emptyPending, false))
                emptyTrash();
        };
    });
}

void TrashWindow::fill()
{
    m_list->setSortingEnabled(false);
    m_list->clear();
    for (size_t i = 0; i < m_items.size(); ++i) {
        const TrashItem& item = m_items[i];
        const std::string folder = pathParent(item.originalPath);
        auto* row = new QTreeWidgetItem(m_list,
            {decode(pathLastComponent(item.originalPath)), decode(folder),
                item.deleted ? QString::fromStdString(dateFmt(*item.deleted)) : decode(item.deletionDate),
                item.size >= 0 ? QString::fromStdString(fmtHuman(item.size)) : QStringLiteral("--")});
        row->setData(0, kIndexRole, qulonglong(i));
        row->setToolTip(1, decode(item.originalPath));
    }
    m_list->setSortingEnabled(true);
    setWindowTitle(m_items.empty() ? tr("Trash — empty") : tr("Trash — %n item(s)", nullptr, int(m_items.size())));
    setBusy(m_busy);
}

std::vector<TrashItem> TrashWindow::selectedItems() const
{
    std::vector<TrashItem> out;
    for (QTreeWidgetItem* row : m_list->selectedItems()) {
        const size_t i = row->data(0, kIndexRole).toULongLong();
        if (i < m_items.size())
            out.push_back(m_items[i]);
    }
    return out;
}

void TrashWindow::setBusy(bool busy)
{
    m_busy = busy;
    const bool selected = !m_list->selectedItems().isEmpty();
    m_restore->setEnabled(!busy && selected);
    m_delete->setEnabled(!busy && selected);
    m_empty->setEnabled(!busy && !m_items.empty());
    m_progress->setVisible(busy);
    m_stopButton->setVisible(busy && m_stop);
}

void TrashWindow::report(const QString& text) { m_status->setText(text); }

void TrashWindow::ask(const QString& text, const QString& confirm, std::function<void()> then)
{
    // Opened, never exec'd: the window keeps running its loads underneath.
    auto* box = new QMessageBox(QMessageBox::Warning, tr("Trash"), text, QMessageBox::Cancel, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* yes = box->addButton(confirm, QMessageBox::AcceptRole);
    yes->setObjectName(QStringLiteral("confirm"));
    box->setDefaultButton(QMessageBox::Cancel);
    connect(box, &QMessageBox::buttonClicked, this, [yes, then = std::move(then)](QAbstractButton* clicked) {
        if (clicked == yes)
            then();
    });
    m_question = box;
    box->open();
}

void TrashWindow::restoreSelected()
{
    std::vector<TrashItem> items = selectedItems();
    if (items.empty() || m_busy)
        return;
    setBusy(true);
    restoreNext(std::move(items));
}

void TrashWindow::restoreNext(std::vector<TrashItem> queue)
{
    if (queue.empty()) {
        setBusy(false);
        reload();
        emit trashChanged();
        return;
    }
    const TrashItem item = queue.front();
    queue.erase(queue.begin());
    m_work.submit(this, [this, item, queue]() -> std::function<void()> {
        const int error = trashRestore(item, item.originalPath);
        return [this, item, queue, error] {
            if (error == EEXIST) {
                const QString name = decode(pathLastComponent(item.originalPath));
                ask(tr("An item named “%1” is already in “%2”. Restore this one beside it under another name?")
                        .arg(name, decode(pathParent(item.originalPath))),
                    tr("Keep Both"), [this, item, queue] {
                        m_work.submit(this, [this, item, queue]() -> std::function<void()> {
                            const int e = trashRestore(item, trashRestoreFreeName(item.originalPath, pathTaken));
                            return [this, queue, e] {
                                if (e)
                                    report(QString::fromStdString(TrashOp::describe(e)));
                                restoreNext(queue);
                            };
                        });
                    });
                // Cancel: this item stays in the Trash and the rest are not restored.
                connect(m_question, &QMessageBox::rejected, this, [this] {
                    setBusy(false);
                    reload();
                    emit trashChanged();
                });
                return;
            }
            if (error)
                report(tr("“%1” could not be restored: %2")
                           .arg(decode(pathLastComponent(item.originalPath)),
                               QString::fromStdString(TrashOp::describe(error))));
            restoreNext(queue);
        };
    });
}

void TrashWindow::deleteSelected()
{
    std::vector<TrashItem> items = selectedItems();
    if (items.empty() || m_busy)
        return;
    const QString text = items.size() == 1
        ? tr("Delete “%1” permanently? This cannot be undone.").arg(decode(pathLastComponent(items[0].originalPath)))
        : tr("Delete %n items permanently? This cannot be undone.", nullptr, int(items.size()));
    ask(text, tr("Delete Permanently"), [this, items] { eraseAll(items); });
}

void TrashWindow::emptyTrash()
{
    if (m_items.empty() || m_busy)
        return;
    ask(tr("Empty the Trash? All %n item(s) will be deleted permanently. This cannot be undone.", nullptr,
            int(m_items.size())),
        tr("Empty Trash"), [this] { eraseAll(m_items); });
}

void TrashWindow::emptyWhenLoaded()
{
    m_emptyPending = true;
    reload();
}

void TrashWindow::eraseAll(std::vector<TrashItem> items)
{
    m_stop = std::make_shared<std::atomic<bool>>(false);
    setBusy(true);
    m_progress->setRange(0, int(items.size()));
    m_progress->setValue(0);
    m_work.submitStreaming(this, [this, items, stop = m_stop](const BackgroundWork::Post& post) {
        auto last = std::chrono::steady_clock::now() - kProgressEvery;
        const size_t erased = trashEraseAll(items, [&](size_t done, size_t total) {
            const auto now = std::chrono::steady_clock::now();
            if (now - last < kProgressEvery && done < total)
                return;
            last = now;
            post([this, done] { m_progress->setValue(int(done)); });
        }, stop.get());
        post([this, erased, total = items.size()] {
            m_stop.reset();
            setBusy(false);
            report(erased == total ? tr("%n item(s) deleted", nullptr, int(erased))
                                   : tr("%1 of %2 items deleted").arg(erased).arg(total));
            reload();
            emit trashChanged();
        });
    });
}
