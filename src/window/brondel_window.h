#pragma once
// One browsing pane: a location with its node, a view mode, the Back and Forward
// histories and the background loading of locations. The top-level window
// (BrowserFrame) hosts one or more of these in its pane area and routes its commands to
// the active one; cables between panes live in the frame's CableGraph, which this pane
// reads to drag its TO panes along.

#include "app/view_mode.h"
#include "fs/dir_node.h"
#include "services/browser_context.h"
#include "window/cable_graph.h"

#include <QWidget>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct ListColumnWidths;
struct IconViewMemory;
class DimVeil;
class FolderWatch;
class QVBoxLayout;

enum class RootKind { Folder, Computer };

class BrondelWindow : public QWidget {
    Q_OBJECT
public:
    using Cables = CableGraph<BrondelWindow>;

    BrondelWindow(DirNodePtr rootNode, RootKind kind, const BrowserContext& context, QWidget* parent = nullptr);
    ~BrondelWindow() override;

    // "/" on the Computer root, else the shown folder.
    std::string currentLocation() const { return m_isComputerRoot ? "/" : m_rootPath; }
    const std::string& rootPath() const { return m_rootPath; }
    const DirNodePtr& rootNode() const { return m_rootNode; }
    bool isComputerRoot() const { return m_isComputerRoot; }
    ViewMode currentMode() const { return m_currentMode; }
    QString title() const { return m_title; }
    const std::vector<std::string>& navHistory() const { return m_navHistory; }
    const std::vector<std::string>& forwardHistory() const { return m_forwardHistory; }
    int64_t scanGeneration() const { return m_scanGeneration; }
    std::optional<int64_t> scanPendingGen() const { return m_scanPendingGen; }
    bool isDimmed() const { return m_dimmed; }
    const std::vector<DirNodePtr>& headers() const { return m_headers; }
    bool rootIsDrive() const { return m_rootIsDrive; }
    QWidget* contentView() const { return m_contentView; }
    const BrowserContext& context() const { return m_context; }

    // The cables of the hosting window (none for a pane on its own).
    void setCables(Cables* cables) { m_cables = cables; }
    Cables* cables() const { return m_cables; }

    // Navigation. navigateLocal records history; showLocation does not.
    void navigateLocal(const std::string& path);
    void showLocation(const std::string& path);
    void scanThenShow(const std::string& path);
    void goBack();
    void goForward();
    void goUp();
    void goComputer() { navigateLocal("/"); }
    // A folder activated in the content view: into the TO panes if there are any.
    void openFolder(const std::string& path);
    void rebuildMode(ViewMode mode);
    // Reloads the location (history untouched) and forgets folder sizes under it.
    void refresh();
    // Loads the shown location again in the background, without touching history.
    void reload();

    // The paths selected in the content view.
    std::vector<std::string> selectedPaths() const;
    // Selects the row of `path` once the location being loaded is shown.
    void selectAfterLoad(const std::string& path) { m_selectAfterLoad = {path}; }
    void selectAfterLoad(std::vector<std::string> paths) { m_selectAfterLoad = std::move(paths); }
    // The same, with the rename editor open on it (a new folder).
    void renameAfterLoad(const std::string& path)
    {
        m_selectAfterLoad = {path};
        m_renameAfterLoad = true;
    }

    // The dimming check of the load of generation `gen` (normally 0.12 s after it began).
    void dimCheck(int64_t gen);

signals:
    void titleChanged(const QString& title);
    void locationChanged(const std::string& location);
    void modeChanged(ViewMode mode);
    void fileOpenRequested(const std::string& path);
    // The shown folder's entries changed on disk and the view follows them.
    void contentsChanged();

private:
    void setTitle(const QString& title);
    void showComputerRoot();
    void setOpacity(double opacity, bool animated);
    void stepInto(const std::string& path); // history entry + showLocation
    // Back and Forward: one algorithm with the two stacks swapped.
    void stepThrough(std::vector<std::string>& source, std::vector<std::string>& other);
    void propagate(const std::string& location);
    // Finds out in the background whether `path` is a drive's root (for goUp).
    void checkDrive(const std::string& path);
    // Reads the favourites headers in the background; the view shows them on arrival.
    void loadHeaders();
    // Reads the shown folder again after a change on disk and hands the view the
    // difference; one read at a time, another one after it when more changes came.
    void liveReload();

    const BrowserContext& m_context;
    std::string m_rootPath;
    DirNodePtr m_rootNode;
    std::vector<DirNodePtr> m_headers; // the favourites, as last read in the background
    int64_t m_headersGeneration = 0;
    bool m_rootIsDrive = false; // false until the background check says otherwise
    bool m_isComputerRoot = false;
    ViewMode m_currentMode = ViewMode::List;
    QString m_title;
    QWidget* m_contentBox = nullptr;
    QVBoxLayout* m_contentLayout = nullptr;
    QWidget* m_contentView = nullptr;
    DimVeil* m_veil = nullptr; // over the content while a slow load is on its way
    bool m_dimmed = false;
    Cables* m_cables = nullptr;
    int64_t m_scanGeneration = 0;
    std::optional<int64_t> m_scanPendingGen;
    std::vector<std::string> m_navHistory;
    std::vector<std::string> m_forwardHistory;
    std::vector<std::string> m_selectAfterLoad;
    bool m_renameAfterLoad = false;
    std::shared_ptr<ListColumnWidths> m_listWidths; // kept across rebuilds of the list
    FolderWatch* m_watch = nullptr;
    bool m_liveBusy = false;  // a read after a change is on its way
    bool m_liveAgain = false; // and more changes came meanwhile
    bool m_liveAfterLoad = false;   // changes noticed while a load was on its way
    bool m_liveWhenWatched = false; // a load read before its watch was in place
    std::shared_ptr<IconViewMemory> m_iconMemory;   // the icon view's place, across rebuilds
};
