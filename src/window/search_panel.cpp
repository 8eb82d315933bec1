#include "window/search_panel.h"

#include "fs/file_io.h"
#include "window/path_entry.h"

#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QTreeView>
#include <QVBoxLayout>

#include <mutex>

namespace {

// The pause in typing after which the query runs.
constexpr int kTypingPauseMs = 150;

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

} // namespace

int SearchResults::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_hits.size());
}

int SearchResults::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SearchResults::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const NameSearchHit& hit = m_hits[size_t(index.row())];
    if (role == Qt::DecorationRole && index.column() == Name)
        return QApplication::style()->standardIcon(hit.isDir ? QStyle::SP_DirIcon : QStyle::SP_FileIcon);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    if (index.column() == Name)
        return decode(pathLastComponent(hit.path));
    return decode(pathParent(hit.path));
}

QVariant SearchResults::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == Name ? tr("Name") : tr("Folder");
}

void SearchResults::clear()
{
    beginResetModel();
    m_hits.clear();
    endResetModel();
}

void SearchResults::append(std::vector<NameSearchHit> hits)
{
    if (hits.empty())
        return;
    beginInsertRows({}, rowCount(), rowCount() + int(hits.size()) - 1);
    m_hits.insert(m_hits.end(), std::make_move_iterator(hits.begin()), std::make_move_iterator(hits.end()));
    endInsertRows();
}

// One walk: its stop flag, and what it found that the list has not taken yet (the
// walk's threads add, the UI thread takes).
struct SearchPanel::Run {
    std::atomic<bool> cancel{false};
    std::mutex lock;
    std::vector<NameSearchHit> found;
};

SearchPanel::SearchPanel(const BrowserContext& context, QWidget* parent)
    : QWidget(parent)
    , m_context(context)
{
    setAccessibleName(tr("Search"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 0);
    m_field = new QLineEdit(this);
    m_field->setObjectName(QStringLiteral("searchField"));
    m_field->setPlaceholderText(tr("Search in this folder"));
    m_field->setClearButtonEnabled(true);
    fieldNameClearButton(*m_field, tr("Clears the search"));
    m_field->setAccessibleName(tr("Search"));
    m_field->setAccessibleDescription(tr("Finds the entries whose names contain the text, in all folders below"));
    m_field->installEventFilter(this);
    layout->addWidget(m_field);
    m_status = new QLabel(this);
    m_status->setAccessibleName(tr("Search progress"));
    m_status->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(m_status);
    m_view = new QTreeView(this);
    m_view->setObjectName(QStringLiteral("searchResults"));
    m_view->setAccessibleName(tr("Search results"));
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setModel(&m_results);
    m_view->header()->setSectionResizeMode(SearchResults::Name, QHeaderView::Stretch);
    m_view->header()->setStretchLastSection(false);
    m_view->header()->resizeSection(SearchResults::Folder, 320);
    m_view->installEventFilter(this);
    layout->addWidget(m_view, 1);

    m_typing.setSingleShot(true);
    m_typing.setInterval(kTypingPauseMs);
    connect(&m_typing, &QTimer::timeout, this, &SearchPanel::start);
    connect(m_field, &QLineEdit::textEdited, this, [this] {
        cancel(); // a new query: the walk for the old one stops now
        m_typing.start();
    });
    connect(m_field, &QLineEdit::returnPressed, this, [this] {
        if (m_typing.isActive())
            runNow();
        else if (m_results.rowCount() > 0)
            activate(m_view->currentIndex().isValid() ? m_view->currentIndex() : m_results.index(0, 0));
    });
    m_drainer.setInterval(kBatchMs);
    connect(&m_drainer, &QTimer::timeout, this, &SearchPanel::drain);
    connect(m_view, &QAbstractItemView::activated, this, &SearchPanel::activate);
}

SearchPanel::~SearchPanel()
{
    cancel();
}

void SearchPanel::open(const std::string& root)
{
    setRoot(root);
    show();
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

void SearchPanel::setRoot(const std::string& root)
{
    if (root == m_root)
        return;
    m_root = root;
    cancel();
}

void SearchPanel::runNow()
{
    m_typing.stop();
    start();
}

void SearchPanel::cancel()
{
    m_typing.stop();
    if (!m_run)
        return;
    m_run->cancel = true;
    drain();
    m_run.reset();
    m_drainer.stop();
    m_status->setText(tr("Stopped: %n found", nullptr, m_results.rowCount()));
}

void SearchPanel::start()
{
    cancel();
    m_results.clear();
    m_batches = 0;
    const QString query = m_field->text();
    if (query.isEmpty() || m_root.empty() || m_root == "/") {
        m_status->setText(query.isEmpty() ? QString() : tr("Open a folder to search in it"));
        return;
    }
    auto run = std::make_shared<Run>();
    m_run = run;
    m_status->setText(tr("Searching…"));
    m_drainer.start();
    const BrondelSettings settings = *m_context.settings; // hidden files as the windows show them
    m_pool.submit(this, [this, run, root = m_root, text = query.toStdString(), settings]() -> std::function<void()> {
        NameSearchOptions options;
        options.cancel = &run->cancel;
        const size_t matches = nameSearchRun(root, text, settings, options, [&run](std::vector<NameSearchHit> hits) {
            std::lock_guard lock(run->lock);
            run->found.insert(run->found.end(), std::make_move_iterator(hits.begin()), std::make_move_iterator(hits.end()));
        });
        return [this, run, matches] { finished(run, matches); }; // runs only while the panel lives
    });
}

void SearchPanel::drain()
{
    if (!m_run)
        return;
    std::vector<NameSearchHit> batch;
    {
        std::lock_guard lock(m_run->lock);
        batch.swap(m_run->found);
    }
    if (batch.empty())
        return;
    ++m_batches;
    m_results.append(std::move(batch));
    m_status->setText(tr("Searching… %n found", nullptr, m_results.rowCount()));
}

void SearchPanel::finished(const std::shared_ptr<Run>& run, size_t matches)
{
    if (run != m_run)
        return; // a walk stopped or replaced: its end says nothing
    drain();
    m_run.reset();
    m_drainer.stop();
    m_status->setText(matches ? tr("%n found", nullptr, int(matches)) : tr("Nothing found"));
}

void SearchPanel::activate(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const NameSearchHit& hit = m_results.hit(index.row());
    if (hit.isDir)
        emit revealRequested(hit.path, {});
    else
        emit revealRequested(pathParent(hit.path), hit.path);
}

bool SearchPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape) {
            // The first Escape stops a walk; the next one closes the panel.
            if (m_run || m_typing.isActive())
                cancel();
            else
                hide();
            return true;
        }
        if (watched == m_field && key->key() == Qt::Key_Down && m_results.rowCount() > 0) {
            m_view->setFocus(Qt::TabFocusReason);
            m_view->setCurrentIndex(m_results.index(0, 0));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
