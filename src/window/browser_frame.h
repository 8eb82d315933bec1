#pragma once
// The top-level browser window: toolbar, sidebar and the pane area. It hosts one or
// more BrondelWindow panes, routes every navigation and mode command to the active
// one, splits, closes and rearranges panes, and owns the cables between them.

#include "app/view_mode.h"
#include "window/brondel_window.h"
#include "window/pane_area.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>
#include <vector>

class BrowserToolbar;
class CableOverlay;
class DropOverlay;
class FolderStatusBar;
class PathEntry;
class SearchPanel;
class PaneView;
class PreviewWindow;
class SidebarView;

class BrowserFrame : public QMainWindow {
    Q_OBJECT
public:
    BrowserFrame(DirNodePtr rootNode, RootKind kind, const BrowserContext& context, QWidget* parent = nullptr);
    ~BrowserFrame() override;

    const std::vector<BrondelWindow*>& panes() const { return m_panes; }
    BrondelWindow* activePane() const { return m_active; }
    // The pane that the window's commands go to.
    BrondelWindow* routed() const { return m_active; }
    PaneView* paneViewOf(const BrondelWindow* pane) const;
    PaneArea* paneArea() const { return m_area; }
    SidebarView* sidebar() const { return m_sidebar; }
    BrowserToolbar* toolbar() const { return m_toolbar; }
    BrondelWindow::Cables& cables() { return m_cables; }
    DropOverlay* dropOverlay() const { return m_dropOverlay; }
    CableOverlay* cableOverlay() const { return m_cableOverlay; }
    const BrowserContext& context() const { return m_context; }
    FolderStatusBar* folderStatus() const { return m_status; }
    PathEntry* pathEntry() const { return m_pathEntry; }

    // Opens the location field over the active pane's header (Ctrl+L).
    void openPathEntry();
    // Opens the search below the active pane's folder (Ctrl+F, findAction()).
    void openSearch();
    SearchPanel* search() const { return m_search; }
    // The window's Find item: the menus add this very action, so its key stays one
    // shortcut whether or not the window has menus.
    QAction* findAction() const { return m_findAction; }
    // Opens the preview of the active pane's selection beside the window, or closes it
    // (Space, previewAction()). While open it follows the selection.
    void togglePreview();
    PreviewWindow* preview() const { return m_preview; }
    QAction* previewAction() const { return m_previewAction; }
    // Shows `folder` in the active pane with `select` (if any) selected.
    void reveal(const std::string& folder, const std::string& select);

    // Navigation and modes, routed to the active pane.
    void navigateTo(const std::string& path);
    void openFolder(const std::string& path);
    void goBack();
    void goForward();
    void goUp();
    void goComputer();
    void switchMode(ViewMode mode);
    void refresh();
    // Moves the items selected in the active pane to the Trash.
    void trashSelected();

    // Panes.
    void addPane() { splitPane(m_active, Axis::SideBySide); }
    void splitPaneDown() { splitPane(m_active, Axis::Stacked); }
    void closeActivePane() { closePane(m_active); }
    BrondelWindow* splitPane(BrondelWindow* pane, Axis axis);
    void closePane(BrondelWindow* pane);
    void movePane(PaneView* source, PaneView* target, DropZone zone);
    void setActivePane(BrondelWindow* pane);

    // Cables.
    bool link(BrondelWindow* from, BrondelWindow* to);
    void unlinkAll(BrondelWindow* pane);
    void linkSwap(BrondelWindow* pane);
    void linkToggleActive();
    void toggleMirror(BrondelWindow* pane);
    void linkChrome();
    // The jack menu's first line for a pane.
    QString linkRole(const BrondelWindow* pane) const;

signals:
    void newWindowRequested();
    // Whether the active pane can go back and forward: on each of its steps and when
    // another pane becomes the active one.
    void historyChanged(bool canGoBack, bool canGoForward);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    BrondelWindow* makePane(DirNodePtr root, RootKind kind, ViewMode mode);
    PaneView* wrap(BrondelWindow* pane);
    void wireHeader(PaneView* view);
    void wireJack(PaneView* view);
    void paneLocationChanged(BrondelWindow* pane);
    // Back and Forward are enabled as far as the active pane's histories go.
    void syncHistory();
    void openFile(const std::string& path);
    QPoint jackCentre(BrondelWindow* pane) const;

    const BrowserContext& m_context;
    BrowserToolbar* m_toolbar = nullptr;
    SidebarView* m_sidebar = nullptr;
    PaneArea* m_area = nullptr;
    DropOverlay* m_dropOverlay = nullptr;
    CableOverlay* m_cableOverlay = nullptr;
    BrondelWindow::Cables m_cables;
    std::vector<BrondelWindow*> m_panes;
    BrondelWindow* m_active = nullptr;
    FolderStatusBar* m_status = nullptr;
    PathEntry* m_pathEntry = nullptr;
    SearchPanel* m_search = nullptr;
    QAction* m_findAction = nullptr;
    QMetaObject::Connection m_focusLink;
    // The preview and the view whose selection it follows.
    void previewWatch();
    void previewSync();
    PreviewWindow* m_preview = nullptr;
    QAction* m_previewAction = nullptr;
    QAction* m_previewClose = nullptr;
    QList<QMetaObject::Connection> m_previewLinks;
};

// The open browser windows.
std::vector<BrowserFrame*> browserFrames();

// Refreshes every open browser window: each one's sidebar and all its panes.
void brondelRefreshAll();
