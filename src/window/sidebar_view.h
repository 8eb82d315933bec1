#pragma once
// The window's sidebar: the top section from the sidebar file, then the computer and the
// mounted drives, each badged "not responding" while its mount does not answer. A click
// goes to the row's folder; the row of the shown location is selected. A right-click
// opens the menu the window fills for the row; the top section's rows are reordered by
// dragging them, which the window writes to the sidebar file.

#include "services/background_work.h"
#include "services/core_bridge.h"
#include "services/udisks_client.h"

#include <QPointer>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <string>

class QMenu;
class ScanService;

// A row of the top section (from the sidebar file), the top section's title, or any
// other row (the computer, a drive, the Trash, their title).
enum class SidebarRowKind { Title, Entry, Other };

class SidebarView : public QTreeWidget {
    Q_OBJECT
public:
    explicit SidebarView(ScanService* scans, QWidget* parent = nullptr);

    // Rebuilds the rows from a background read.
    void reload();
    // Selects the row of `location` ("/" for the computer), or none.
    void select(const std::string& location);
    // The path of a row ("" for a section title).
    static std::string pathOf(const QTreeWidgetItem* item);
    // Whether a row carries the "not responding" badge.
    static bool badged(const QTreeWidgetItem* item);
    // The Trash row, and whether it shows the Trash as holding something.
    QTreeWidgetItem* trashRow() const;
    bool trashFull() const { return m_trashFull; }
    // The rows of removable drives that are not mounted (the disk service's), by device.
    QTreeWidgetItem* diskRow(const QString& device) const;
    // Offers the drives the disk service knows (none when it is absent).
    void setDisks(UdisksClient* disks);
    static SidebarRowKind kindOf(const QTreeWidgetItem* item);

    using MenuFill = std::function<void(QMenu&, const std::string& path, SidebarRowKind kind)>;
    void setMenuFill(MenuFill fill) { m_menuFill = std::move(fill); }
    // The menu of the row at `pos` (viewport coordinates); null when there is nothing to offer.
    std::unique_ptr<QMenu> menuAt(QPoint pos);
    // Moves the top section's row `from` to the place of row `to` (a finished drag):
    // emits rowMoved; the rows themselves change when the file is read again.
    void moveRow(int from, int to);

signals:
    void locationChosen(const std::string& path);
    void trashChosen();
    void emptyTrashChosen();
    // Whether the Trash holds anything, after each reload.
    void trashStateChanged(bool full);
    // A drive action failed; what to tell the user.
    void diskFailed(const QString& text);
    // The top section's row of `path` was dragged to the place of the row of `target`.
    void rowMoved(const std::string& path, const std::string& target);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void fill(const SidebarSection& top, const std::vector<BridgeDrive>& drives);
    // Badges the drive rows that are in `stuck` or that the watchdog remembers as stuck,
    // and unbadges the others.
    void updateBadges(const std::vector<std::string>& stuck);
    QTreeWidgetItem* section(const QString& title);
    QTreeWidgetItem* row(QTreeWidgetItem* section, const QString& name, const std::string& path, const char* symbol);
    void setTrashFull(bool full);
    // The disk service's volume of a row: an unmounted drive's row, or a drive row
    // mounted where one of its file systems is.
    const UdisksVolume* volumeOf(const QTreeWidgetItem* item) const;
    void addDiskActions(QMenu& menu, const UdisksVolume& volume);
    void runDisk(UdisksAction action, const UdisksVolume& volume);

    // The top section's row under `pos` while dragging, or null.
    QTreeWidgetItem* entryAt(QPoint pos) const;

    ScanService* m_scans;
    MenuFill m_menuFill;
    std::string m_selected;
    int m_generation = 0;
    // The two halves as last read (until the first reads land: the defaults, no drives).
    SidebarSection m_top{"Favorites", {}};
    std::vector<BridgeDrive> m_drives;
    QTimer m_badgeCheck;
    bool m_trashFull = false;
    // Looking into every volume's trash may wait on a slow drive: on a thread of its own,
    // never one that folder reads need.
    BackgroundWork m_trashCheck{1, WorkClass::Utility};
    QPointer<UdisksClient> m_disks;
};
