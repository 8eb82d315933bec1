#include "window/folder_status_bar.h"

#include "fs/node_store.h"

#include "fs/fmt.h"
#include "sizes/info_notifier.h"
#include "views/node_tree_model.h"
#include "window/brondel_window.h"
#include "services/core_bridge.h"
#include "services/scan_service.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QLabel>

#include <string>
#include <vector>

namespace {

// Long enough to fold a rubber-band drag or a Shift+End into one count.
constexpr int kCoalesceMs = 60;

QString human(int64_t bytes)
{
    return QString::fromStdString(fmtHuman(bytes));
}

struct SelectionTally {
    int64_t count = 0;
    int64_t fileBytes = 0;
    std::vector<std::string> folders; // asked of the size cache in the background
    bool foldersLeftOut = false;      // more folders than are asked about
    bool sizesPending = false;        // files whose sizes are still being read
};

// One pass over the ranges: a range's rows are looked at one by one only to skip
// section headers and to add up sizes; no list of indexes is ever built.
SelectionTally tally(const QItemSelectionModel& selection)
{
    SelectionTally out;
    const auto* model = qobject_cast<const NodeTreeModel*>(selection.model());
    if (!model)
        return out;
    for (const QItemSelectionRange& range : selection.selection()) {
        if (range.left() != 0) // each row once, by its first column
            continue;
        for (int row = range.top(); row <= range.bottom(); ++row) {
            const QModelIndex index = model->index(row, 0, range.parent());
            const NodeTreeModel::Facts facts = model->factsAt(index);
            if (facts.header)
                continue;
            ++out.count;
            if (!facts.folder) {
                out.fileBytes += facts.size; // no node is made for a file
                out.sizesPending |= !facts.sizeKnown;
            }
            else if (int64_t(out.folders.size()) < FolderStatusBar::kFolderSizeAsks)
                out.folders.push_back(model->nodeAt(index)->path);
            else
                out.foldersLeftOut = true;
        }
    }
    return out;
}

} // namespace

QString statusItemCount(int64_t count)
{
    return count == 1 ? FolderStatusBar::tr("1 item") : FolderStatusBar::tr("%1 items").arg(count);
}

FolderStatusBar::FolderStatusBar(const BrowserContext& context, QWidget* parent)
    : QStatusBar(parent)
    , m_context(context)
{
    m_items = new QLabel(this);
    m_selected = new QLabel(this);
    m_space = new QLabel(this);
    m_items->setObjectName(QStringLiteral("statusItems"));
    m_selected->setObjectName(QStringLiteral("statusSelection"));
    m_space->setObjectName(QStringLiteral("statusSpace"));
    addWidget(m_items);
    addWidget(m_selected, 1);
    addPermanentWidget(m_space);
    m_coalesce.setSingleShot(true);
    m_coalesce.setInterval(kCoalesceMs);
    connect(&m_coalesce, &QTimer::timeout, this, &FolderStatusBar::recount);
    // Folder sizes that were still being computed are added once they are known.
    connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, this, [this] {
        if (m_partial)
            scheduleRecount();
    });
}

QString FolderStatusBar::itemsText() const
{
    return m_items->text();
}

QString FolderStatusBar::selectionText() const
{
    return m_selected->text();
}

QString FolderStatusBar::spaceText() const
{
    return m_space->text();
}

void FolderStatusBar::setPane(BrondelWindow* pane)
{
    if (pane == m_pane)
        return;
    for (const auto& link : m_paneLinks)
        disconnect(link);
    m_paneLinks.clear();
    m_pane = pane;
    if (pane) {
        // A view is rebuilt whenever the folder's read lands or the mode changes.
        m_paneLinks << connect(pane, &BrondelWindow::modeChanged, this, [this] { watchView(); });
        m_paneLinks << connect(pane, &BrondelWindow::locationChanged, this, [this] { readSpace(); });
        m_paneLinks << connect(pane, &BrondelWindow::contentsChanged, this, &FolderStatusBar::scheduleRecount);
    }
    watchView();
    readSpace();
}

void FolderStatusBar::watchView()
{
    disconnect(m_selectionLink);
    auto* view = m_pane ? qobject_cast<QAbstractItemView*>(m_pane->contentView()) : nullptr;
    m_selection = view ? view->selectionModel() : nullptr;
    disconnect(m_metaLink);
    if (m_selection)
        m_selectionLink = connect(m_selection, &QItemSelectionModel::selectionChanged, this,
            &FolderStatusBar::scheduleRecount);
    // A folder shown names first: the selection's size grows as the sizes arrive.
    if (auto* model = view ? qobject_cast<NodeTreeModel*>(view->model()) : nullptr)
        m_metaLink = connect(model, &NodeTreeModel::metaArrived, this, &FolderStatusBar::scheduleRecount);
    scheduleRecount();
}

void FolderStatusBar::scheduleRecount()
{
    if (!m_coalesce.isActive())
        m_coalesce.start();
}

void FolderStatusBar::recountNow()
{
    m_coalesce.stop();
    recount();
}

void FolderStatusBar::recount()
{
    const int64_t gen = ++m_sizeGeneration;
    m_items->setText(m_pane && m_pane->rootNode() ? statusItemCount(int64_t(dirNodeEntryCount(*m_pane->rootNode())))
                                                   : QString());
    SelectionTally selected = m_selection ? tally(*m_selection) : SelectionTally{};
    m_partial = false;
    if (selected.count == 0) {
        m_selected->clear();
        return;
    }
    auto show = [this, count = selected.count](int64_t bytes, bool partial) {
        m_partial = partial;
        const QString size = partial ? tr("at least %1").arg(human(bytes)) : human(bytes);
        m_selected->setText(tr("%1 selected (%2)").arg(count).arg(size));
    };
    show(selected.fileBytes, !selected.folders.empty() || selected.sizesPending);
    if (selected.folders.empty())
        return;
    // The size cache may look up a folder's drive: never on the main thread.
    m_context.scans->submit(this, [this, gen, show, selected = std::move(selected)]() -> std::function<void()> {
        int64_t bytes = selected.fileBytes;
        bool partial = selected.foldersLeftOut || selected.sizesPending;
        for (const std::string& folder : selected.folders) {
            if (auto size = bridgeFolderSize(folder))
                bytes += *size;
            else
                partial = true;
        }
        return [this, gen, show, bytes, partial] {
            if (gen == m_sizeGeneration)
                show(bytes, partial);
        };
    });
}

void FolderStatusBar::readSpace()
{
    const int64_t gen = ++m_spaceGeneration;
    const std::string location = m_pane ? m_pane->currentLocation() : std::string();
    if (location.empty() || location == "/") { // the Computer root lists every drive's own
        m_space->clear();
        return;
    }
    m_context.scans->submit(this, [this, gen, location]() -> std::function<void()> {
        const BridgeSpace space = bridgeFreeSpace(location);
        return [this, gen, space] {
            if (gen != m_spaceGeneration)
                return;
            if (!space.responding)
                m_space->setText(tr("Drive not responding"));
            else if (space.freeBytes)
                m_space->setText(tr("%1 free").arg(human(*space.freeBytes)));
            else
                m_space->clear();
        };
    });
}
