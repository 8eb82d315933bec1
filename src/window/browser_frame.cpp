#include "window/browser_frame.h"
#include "window/op_progress_panel.h"

#include "window/window_hooks.h"
#include "window/browser_toolbar.h"
#include "window/cable_overlay.h"
#include "window/drop_overlay.h"
#include "services/file_icons.h"
#include "window/folder_status_bar.h"
#include "window/jack_view.h"
#include "window/pane_header.h"
#include "views/content_view.h"
#include "window/pane_view.h"
#include "window/path_entry.h"
#include "window/search_panel.h"
#include "services/shortcuts.h"
#include "services/theme_icons.h"
#include "window/preview_window.h"
#include "window/sidebar_view.h"
#include "window/trash_window.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPointer>
#include <QShortcut>
#include <QMessageBox>
#include <QSplitter>

BrowserFrame::BrowserFrame(DirNodePtr rootNode, RootKind kind, const BrowserContext& context, QWidget* parent)
    : QMainWindow(parent)
    , m_context(context)
{
    setAttribute(Qt::WA_DeleteOnClose);
    resize(1000, 650);
    setMinimumSize(600, 400);

    m_toolbar = new BrowserToolbar(this);
    addToolBar(Qt::TopToolBarArea, m_toolbar);
    connect(m_toolbar, &BrowserToolbar::backTriggered, this, &BrowserFrame::goBack);
    connect(m_toolbar, &BrowserToolbar::forwardTriggered, this, &BrowserFrame::goForward);
    connect(m_toolbar, &BrowserToolbar::modeChosen, this, &BrowserFrame::switchMode);
    connect(m_toolbar, &BrowserToolbar::splitTriggered, this, &BrowserFrame::addPane);
    connect(m_toolbar, &BrowserToolbar::trashTriggered, this, &BrowserFrame::trashSelected);

    auto* central = new QWidget(this);
    auto* row = new QHBoxLayout(central);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    m_sidebar = new SidebarView(context.scans, central);
    connect(m_sidebar, &SidebarView::locationChosen, this, &BrowserFrame::navigateTo);
    connect(m_sidebar, &SidebarView::trashStateChanged, m_toolbar, &BrowserToolbar::setTrashFull);
    connect(m_sidebar, &SidebarView::trashChosen, this, [] { TrashWindow::showShared(brondelRefreshAll); });
    connect(m_sidebar, &SidebarView::emptyTrashChosen, this,
        [] { TrashWindow::showShared(brondelRefreshAll)->emptyWhenLoaded(); });
    connect(m_sidebar, &SidebarView::diskFailed, this, [this](const QString& text) {
        auto* box = new QMessageBox(QMessageBox::Warning, tr("Drive"), text, QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    });
    m_sidebar->setDisks(UdisksClient::shared());
    row->addWidget(m_sidebar);
    // The search's results open below the panes, which keep most of the height.
    auto* stack = new QSplitter(Qt::Vertical, central);
    stack->setChildrenCollapsible(false);
    m_area = new PaneArea(stack);
    stack->addWidget(m_area);
    m_search = new SearchPanel(context, stack);
    m_search->hide();
    stack->addWidget(m_search);
    stack->setStretchFactor(0, 3);
    stack->setStretchFactor(1, 1);
    row->addWidget(stack, 1);
    setCentralWidget(central);
    connect(m_search, &SearchPanel::revealRequested, this, &BrowserFrame::reveal);
    m_findAction = new QAction(tr("Find…"), this);
    m_findAction->setShortcut(shortcutKeys(Shortcut::Find));
    m_findAction->setShortcutContext(Qt::WindowShortcut);
    addAction(m_findAction);
    connect(m_findAction, &QAction::triggered, this, &BrowserFrame::openSearch);
    // Space in a text field types a space: line edits take their printable keys first.
    m_previewAction = new QAction(iconSymbol("eye"), tr("Preview"), this);
    m_previewAction->setShortcut(shortcutKeys(Shortcut::Preview));
    m_previewAction->setShortcutContext(Qt::WindowShortcut);
    addAction(m_previewAction);
    connect(m_previewAction, &QAction::triggered, this, &BrowserFrame::togglePreview);
    // Escape closes the preview, and is left alone while there is none.
    m_previewClose = new QAction(tr("Close Preview"), this);
    m_previewClose->setShortcut(shortcutKeys(Shortcut::ClosePreview));
    m_previewClose->setShortcutContext(Qt::WindowShortcut);
    m_previewClose->setEnabled(false);
    addAction(m_previewClose);
    connect(m_previewClose, &QAction::triggered, this, &BrowserFrame::togglePreview);

    m_status = new FolderStatusBar(context, this);
    setStatusBar(m_status);
    if (context.ops)
        m_status->addPermanentWidget(new OpProgressPanel(context.ops, m_status));
    m_pathEntry = new PathEntry(context, this);
    connect(m_pathEntry, &PathEntry::navigateRequested, this, &BrowserFrame::navigateTo);
    auto* locate = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_L), this);
    connect(locate, &QShortcut::activated, this, &BrowserFrame::openPathEntry);
    // Rows drawn before their type's icon was known get it on the next paint.
    connect(&FileIcons::shared(), &FileIcons::changed, this, [this] {
        for (BrondelWindow* pane : m_panes)
            if (auto* view = qobject_cast<QAbstractItemView*>(pane->contentView()))
                view->viewport()->update();
    });

    m_dropOverlay = new DropOverlay(m_area);
    m_cableOverlay = new CableOverlay(
        m_cables, [this](BrondelWindow* pane) { return jackCentre(pane); }, m_area);
    m_cableOverlay->hide();
    m_area->installEventFilter(this);
    m_cables.onLinked([](BrondelWindow* from, BrondelWindow* to) { to->navigateLocal(from->currentLocation()); });

    BrondelWindow* first = makePane(std::move(rootNode), kind, ViewMode::List);
    m_area->setFirst(wrap(first));
    setActivePane(first);

    // Whichever pane takes the keyboard focus becomes the active one.
    m_focusLink = connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        for (QWidget* w = now; w; w = w->parentWidget())
            if (auto* view = qobject_cast<PaneView*>(w)) {
                if (view->window() == this && view->host() != m_active)
                    setActivePane(view->host());
                return;
            }
    });
}

BrowserFrame::~BrowserFrame()
{
    // The children's destruction moves the focus: the handler must not see a half-gone frame.
    disconnect(m_focusLink);
    // The panes outlive this body (children go last): they must not touch the graph.
    for (BrondelWindow* pane : m_panes)
        pane->setCables(nullptr);
}

BrondelWindow* BrowserFrame::makePane(DirNodePtr root, RootKind kind, ViewMode mode)
{
    auto* pane = new BrondelWindow(std::move(root), kind, m_context);
    pane->setCables(&m_cables);
    m_panes.push_back(pane);
    connect(pane, &BrondelWindow::titleChanged, this, [this, pane](const QString& title) {
        if (pane == m_active)
            setWindowTitle(title);
    });
    connect(pane, &BrondelWindow::locationChanged, this, [this, pane] { paneLocationChanged(pane); });
    connect(pane, &BrondelWindow::modeChanged, this, [this, pane](ViewMode mode) {
        if (pane == m_active)
            m_toolbar->syncMode(mode);
    });
    connect(pane, &BrondelWindow::fileOpenRequested, this, &BrowserFrame::openFile);
    pane->rebuildMode(mode);
    return pane;
}

PaneView* BrowserFrame::wrap(BrondelWindow* pane)
{
    auto* view = new PaneView(pane);
    wireHeader(view);
    wireJack(view);
    return view;
}

void BrowserFrame::wireHeader(PaneView* view)
{
    PaneHeader* header = view->header();
    BrondelWindow* pane = view->host();
    connect(header, &PaneHeader::pressed, this, [this, pane] { setActivePane(pane); });
    connect(header, &PaneHeader::splitRight, this, [this, pane] { splitPane(pane, Axis::SideBySide); });
    connect(header, &PaneHeader::splitDown, this, [this, pane] { splitPane(pane, Axis::Stacked); });
    connect(header, &PaneHeader::closeTapped, this, [this, pane] { closePane(pane); });
    connect(header, &PaneHeader::modeChosen, this, [this, pane](ViewMode mode) {
        setActivePane(pane);
        pane->rebuildMode(mode);
    });
    connect(header, &PaneHeader::dragMoved, this,
        [this, view](QPoint global) { m_dropOverlay->track(view, m_area->mapFromGlobal(global)); });
    connect(header, &PaneHeader::dragEnded, this, [this, view](QPoint global) {
        m_dropOverlay->track(view, m_area->mapFromGlobal(global));
        PaneView* target = m_dropOverlay->target();
        DropZone zone = m_dropOverlay->zone();
        m_dropOverlay->deactivate();
        if (target)
            movePane(view, target, zone);
    });
}

void BrowserFrame::wireJack(PaneView* view)
{
    JackView* jack = view->header()->jack();
    BrondelWindow* pane = view->host();
    connect(jack, &JackView::hovered, this, [this](bool inside) {
        if (inside)
            m_cableOverlay->fadeIn();
        else
            m_cableOverlay->scheduleFade(0.4);
    });
    connect(jack, &JackView::dragged, this, [this, pane](QPoint global) {
        m_cableOverlay->setGeometry(m_area->rect());
        m_cableOverlay->setDrag(pane, m_area->mapFromGlobal(global));
    });
    connect(jack, &JackView::released, this, [this, pane, view](QPoint global, bool moved) {
        m_cableOverlay->clearDrag();
        if (!moved) {
            unlinkAll(pane);
            return;
        }
        PaneView* target = m_area->paneAt(m_area->mapFromGlobal(global));
        if (target && target != view) // the whole pane is a target, not only its jack
            link(pane, target->host());
    });
    connect(jack, &JackView::menuRequested, this, [this, pane](QPoint global) {
        QMenu menu;
        menu.addAction(tr("This pane is %1").arg(linkRole(pane)))->setEnabled(false);
        QAction* mirror = menu.addAction(tr("Mirror: FROM enters folders too"));
        mirror->setCheckable(true);
        mirror->setChecked(m_cables.mirror(pane));
        mirror->setEnabled(m_cables.from(pane) != nullptr);
        QAction* swap = menu.addAction(tr("Swap FROM \u21c4 TO"));
        swap->setEnabled(m_cables.to(pane).size() == 1);
        QAction* detach = menu.addAction(tr("Detach cable"));
        detach->setEnabled(m_cables.from(pane) || !m_cables.to(pane).empty());
        // The menu's own event loop may close the pane (or the frame) meanwhile.
        QPointer<BrondelWindow> alive(pane);
        QAction* chosen = menu.exec(global);
        if (!alive)
            return;
        if (chosen == mirror)
            toggleMirror(pane);
        else if (chosen == swap)
            linkSwap(pane);
        else if (chosen == detach)
            unlinkAll(pane);
    });
}

PaneView* BrowserFrame::paneViewOf(const BrondelWindow* pane) const
{
    for (PaneView* view : m_area->paneViews())
        if (view->host() == pane)
            return view;
    return nullptr;
}

QPoint BrowserFrame::jackCentre(BrondelWindow* pane) const
{
    PaneView* view = paneViewOf(pane);
    if (!view)
        return {};
    JackView* jack = view->header()->jack();
    return jack->mapTo(m_area, jack->rect().center());
}

bool BrowserFrame::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_area && event->type() == QEvent::Resize) {
        m_cableOverlay->setGeometry(m_area->rect());
        m_dropOverlay->setGeometry(m_area->rect());
    }
    return QMainWindow::eventFilter(watched, event);
}

// ---- navigation, routed to the active pane

void BrowserFrame::navigateTo(const std::string& path)
{
    m_active->navigateLocal(path);
    m_sidebar->select(m_active->currentLocation());
}

void BrowserFrame::openFolder(const std::string& path)
{
    m_active->openFolder(path);
}

void BrowserFrame::goBack()
{
    m_active->goBack();
}

void BrowserFrame::goForward()
{
    m_active->goForward();
}

void BrowserFrame::goUp()
{
    m_active->goUp();
}

void BrowserFrame::goComputer()
{
    navigateTo("/");
}

void BrowserFrame::switchMode(ViewMode mode)
{
    m_active->rebuildMode(mode);
    m_toolbar->syncMode(m_active->currentMode());
}

void BrowserFrame::refresh()
{
    m_sidebar->reload();
    for (BrondelWindow* pane : m_panes)
        pane->refresh();
}

void BrowserFrame::trashSelected()
{
    if (windowHooks().trash)
        windowHooks().trash(*m_active, m_active->selectedPaths());
}

void BrowserFrame::paneLocationChanged(BrondelWindow* pane)
{
    if (pane != m_active)
        return;
    m_sidebar->select(pane->currentLocation());
    m_search->setRoot(pane->currentLocation()); // a search under the folder left stops
    syncHistory();
}

void BrowserFrame::syncHistory()
{
    const bool canGoBack = !m_active->navHistory().empty();
    const bool canGoForward = !m_active->forwardHistory().empty();
    m_toolbar->item("back")->setEnabled(canGoBack);
    m_toolbar->item("forward")->setEnabled(canGoForward);
    emit historyChanged(canGoBack, canGoForward);
}

void BrowserFrame::openSearch()
{
    m_search->open(m_active->currentLocation());
}

void BrowserFrame::reveal(const std::string& folder, const std::string& select)
{
    if (folder == m_active->currentLocation()) {
        if (!select.empty())
            contentViewSelect(m_active->contentView(), select);
        return;
    }
    if (!select.empty())
        m_active->selectAfterLoad(select);
    navigateTo(folder);
}

void BrowserFrame::openPathEntry()
{
    PaneView* view = paneViewOf(m_active);
    if (!view)
        return;
    QWidget* header = view->header();
    m_pathEntry->open(m_active->currentLocation(), QRect(header->mapTo(this, QPoint(0, 0)), header->size()));
}

void BrowserFrame::openFile(const std::string& path)
{
    if (windowHooks().openFile)
        windowHooks().openFile(this, path);
}

// ---- panes

void BrowserFrame::setActivePane(BrondelWindow* pane)
{
    if (!pane)
        return;
    m_active = pane;
    m_status->setPane(pane);
    previewWatch();
    m_search->setRoot(pane->currentLocation());
    setWindowTitle(pane->title());
    for (PaneView* view : m_area->paneViews())
        view->header()->setActive(view->host() == pane);
    m_toolbar->syncMode(pane->currentMode());
    m_sidebar->select(pane->currentLocation());
    m_search->setRoot(pane->currentLocation()); // a search under the folder left stops
    syncHistory();
}

BrondelWindow* BrowserFrame::splitPane(BrondelWindow* pane, Axis axis)
{
    PaneView* existing = paneViewOf(pane);
    if (!existing)
        return nullptr;
    BrondelWindow* added = makePane(pane->rootNode(), pane->isComputerRoot() ? RootKind::Computer : RootKind::Folder,
        pane->currentMode());
    m_area->insertAfter(existing, wrap(added), axis);
    setActivePane(added);
    linkChrome();
    return added;
}

void BrowserFrame::closePane(BrondelWindow* pane)
{
    if (m_panes.size() < 2)
        return; // the last pane stays
    PaneView* view = paneViewOf(pane);
    if (!view)
        return;
    m_cables.remove(pane);
    pane->setCables(nullptr);
    m_area->detach(view);
    std::erase(m_panes, pane);
    view->deleteLater();
    if (m_active == pane)
        setActivePane(m_area->paneViews().value(0)->host());
    linkChrome();
}

void BrowserFrame::movePane(PaneView* source, PaneView* target, DropZone zone)
{
    if (source == target || m_panes.size() < 2)
        return;
    if (zone == DropZone::Center)
        m_area->swap(source, target);
    else
        m_area->placeBeside(source, target, zone);
    setActivePane(source->host());
    linkChrome();
}

// ---- cables

bool BrowserFrame::link(BrondelWindow* from, BrondelWindow* to)
{
    bool made = m_cables.link(from, to);
    if (made)
        linkChrome();
    return made;
}

void BrowserFrame::unlinkAll(BrondelWindow* pane)
{
    m_cables.unlinkAll(pane);
    linkChrome();
}

void BrowserFrame::linkSwap(BrondelWindow* pane)
{
    if (m_cables.swap(pane))
        linkChrome();
}

void BrowserFrame::linkToggleActive()
{
    if (m_cables.toggle(m_panes, m_active) != BrondelWindow::Cables::Toggle::Nothing)
        linkChrome();
}

void BrowserFrame::toggleMirror(BrondelWindow* pane)
{
    m_cables.setMirror(pane, !m_cables.mirror(pane));
    linkChrome();
}

QString BrowserFrame::linkRole(const BrondelWindow* pane) const
{
    const bool hasFrom = m_cables.from(pane) != nullptr;
    const bool hasTo = !m_cables.to(pane).empty();
    if (hasFrom && hasTo)
        return tr("TO and FROM");
    if (hasTo)
        return tr("FROM");
    if (hasFrom)
        return tr("TO");
    return tr("Drag to another pane: this = FROM, target = TO");
}

void BrowserFrame::linkChrome()
{
    for (PaneView* view : m_area->paneViews()) {
        BrondelWindow* pane = view->host();
        BrondelWindow* from = m_cables.from(pane);
        const auto& to = m_cables.to(pane);
        QColor color = from ? CableOverlay::cableColor(from, pane)
                            : (to.empty() ? QColor() : CableOverlay::cableColor(pane, to.front()));
        view->header()->jack()->setState(from || !to.empty(), color);
        QString badge;
        if (from && !to.empty())
            badge = QStringLiteral("TO\u00b7FROM");
        else if (from)
            badge = m_cables.mirror(pane) ? QStringLiteral("TO \u21c4") : QStringLiteral("TO");
        else if (!to.empty())
            badge = QStringLiteral("FROM");
        view->header()->setBadge(badge);
    }
    m_cableOverlay->setGeometry(m_area->rect());
    if (m_cables.empty()) {
        m_cableOverlay->scheduleFade(0.0);
        return;
    }
    m_cableOverlay->fadeIn();
    m_cableOverlay->scheduleFade(1.4);
}

// ---- all windows

std::vector<BrowserFrame*> browserFrames()
{
    std::vector<BrowserFrame*> frames;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* frame = qobject_cast<BrowserFrame*>(widget))
            frames.push_back(frame);
    return frames;
}

void brondelRefreshAll()
{
    for (BrowserFrame* frame : browserFrames())
        frame->refresh();
}

// ---- preview

void BrowserFrame::togglePreview()
{
    if (m_preview && m_preview->isVisible()) {
        m_preview->hide();
        m_previewClose->setEnabled(false);
        return;
    }
    if (!m_active || m_active->selectedPaths().empty())
        return;
    if (!m_preview) {
        m_preview = new PreviewWindow(this);
        connect(m_preview, &PreviewWindow::closeRequested, this, &BrowserFrame::togglePreview);
        connect(m_preview, &PreviewWindow::closed, this, [this] {
            m_previewClose->setEnabled(false);
            previewWatch();
        });
    }
    m_previewClose->setEnabled(true);
    previewWatch();
    previewSync();
}

void BrowserFrame::previewWatch()
{
    for (const auto& link : m_previewLinks)
        disconnect(link);
    m_previewLinks.clear();
    if (!m_preview || !m_previewClose->isEnabled())
        return;
    // The view is rebuilt on every load and mode change: follow the new one.
    m_previewLinks << connect(m_active, &BrondelWindow::modeChanged, this, [this] { previewWatch(); });
    auto* view = qobject_cast<QAbstractItemView*>(m_active->contentView());
    if (view && view->selectionModel()) {
        m_previewLinks << connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &BrowserFrame::previewSync);
        m_previewLinks << connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &BrowserFrame::previewSync);
    }
}

void BrowserFrame::previewSync()
{
    if (!m_preview || !m_previewClose->isEnabled() || !m_active)
        return;
    const std::vector<std::string> selected = m_active->selectedPaths();
    if (!selected.empty())
        m_preview->showFor(selected.front());
}
