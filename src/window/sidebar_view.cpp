#include "window/sidebar_view.h"

#include "fs/mount_watchdog.h"
#include "fs/paths.h"
#include "fs/trash_list.h"
#include "fs/volume.h"
#include "services/core_bridge.h"
#include "services/scan_service.h"
#include "services/theme_icons.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QFile>
#include <QMenu>

#include <algorithm>
#include <QHeaderView>

namespace {

constexpr int kPathRole = Qt::UserRole + 1;
constexpr int kDriveNameRole = Qt::UserRole + 2; // rows that may be badged: the name without badge
constexpr int kSymbolRole = Qt::UserRole + 3;    // the symbol such a row shows while it answers
constexpr int kTrashRole = Qt::UserRole + 4;     // the Trash row
constexpr int kDiskRole = Qt::UserRole + 5;      // a drive not mounted: its device
constexpr int kBadgeCheckMs = 2000;

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

} // namespace

SidebarView::SidebarView(ScanService* scans, QWidget* parent)
    : QTreeWidget(parent)
    , m_scans(scans)
{
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(8);
    setFrameShape(QFrame::NoFrame);
    setFixedWidth(200);
    setIconSize(QSize(16, 16));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setAccessibleName(tr("Sidebar"));
    setAccessibleDescription(tr("Favourite folders, the computer and the drives"));
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::InternalMove);
    const auto choose = [this](QTreeWidgetItem* item) {
        if (item && item->data(0, kTrashRole).toBool()) {
            emit trashChosen();
            return;
        }
        if (const UdisksVolume* volume = item ? volumeOf(item) : nullptr; volume && !volume->mounted()) {
            runDisk(UdisksAction::Mount, *volume);
            return;
        }
        std::string path = pathOf(item);
        if (!path.empty())
            emit locationChosen(path);
    };
    connect(this, &QTreeWidget::itemClicked, this, choose);
    connect(this, &QTreeWidget::itemActivated, this, choose); // Return on a row, too
    // A drive may stop (or start again) answering at any time: the watchdog remembers
    // it, and asking it costs no system call.
    m_badgeCheck.setInterval(kBadgeCheckMs);
    connect(&m_badgeCheck, &QTimer::timeout, this, [this] { updateBadges({}); });
    m_badgeCheck.start();
    reload();
}

bool SidebarView::badged(const QTreeWidgetItem* item)
{
    return item && item->data(0, kDriveNameRole).isValid() && item->text(0) != item->data(0, kDriveNameRole).toString();
}

void SidebarView::updateBadges(const std::vector<std::string>& stuck)
{
    for (QTreeWidgetItemIterator it(this); *it; ++it) {
        QTreeWidgetItem* item = *it;
        if (!item->data(0, kDriveNameRole).isValid())
            continue;
        const std::string path = pathOf(item);
        const bool notResponding = std::find(stuck.begin(), stuck.end(), path) != stuck.end()
            || bridgeDriveStuck(path) || (kindOf(item) == SidebarRowKind::Entry && mountWatchdogIsStuckPath(path));
        if (notResponding == badged(item))
            continue;
        const QString name = item->data(0, kDriveNameRole).toString();
        item->setText(0, notResponding ? name + QStringLiteral(" (%1)").arg(QLatin1String(kNotRespondingText)) : name);
        const QByteArray symbol = item->data(0, kSymbolRole).toByteArray();
        item->setIcon(0, iconSymbol(notResponding ? "exclamationmark.triangle" : symbol.constData()));
        item->setToolTip(0, notResponding ? tr("%1 does not respond").arg(decode(path)) : decode(path));
    }
}

std::string SidebarView::pathOf(const QTreeWidgetItem* item)
{
    return item ? item->data(0, kPathRole).toByteArray().toStdString() : std::string();
}

SidebarRowKind SidebarView::kindOf(const QTreeWidgetItem* item)
{
    if (!item)
        return SidebarRowKind::Other;
    const QTreeWidget* tree = item->treeWidget();
    const QTreeWidgetItem* top = tree ? tree->topLevelItem(0) : nullptr;
    if (item == top)
        return SidebarRowKind::Title;
    return item->parent() && item->parent() == top ? SidebarRowKind::Entry : SidebarRowKind::Other;
}

std::unique_ptr<QMenu> SidebarView::menuAt(QPoint pos)
{
    QTreeWidgetItem* item = itemAt(pos);
    if (!item)
        return nullptr;
    auto menu = std::make_unique<QMenu>(this);
    if (const UdisksVolume* volume = volumeOf(item))
        addDiskActions(*menu, *volume);
    if (item->data(0, kTrashRole).toBool()) {
        menu->addAction(tr("Open Trash"), this, &SidebarView::trashChosen);
        menu->addAction(tr("Empty Trash…"), this, &SidebarView::emptyTrashChosen)->setEnabled(m_trashFull);
    } else if (m_menuFill && !item->data(0, kDiskRole).isValid())
        m_menuFill(*menu, pathOf(item), kindOf(item));
    if (menu->isEmpty())
        return nullptr;
    return menu;
}

void SidebarView::contextMenuEvent(QContextMenuEvent* event)
{
    // The menu key opens the menu of the current row; a click, that of the row under it
    // (the event comes through the viewport, in its coordinates).
    const QPoint at = event->reason() == QContextMenuEvent::Keyboard && currentItem()
        ? visualItemRect(currentItem()).center()
        : event->pos();
    // popup, not exec: a reload landing meanwhile rebuilds the rows under the menu.
    std::unique_ptr<QMenu> menu = menuAt(at);
    if (!menu)
        return;
    QMenu* shown = menu.release();
    shown->setAttribute(Qt::WA_DeleteOnClose);
    shown->popup(viewport()->mapToGlobal(at));
}

QTreeWidgetItem* SidebarView::entryAt(QPoint pos) const
{
    QTreeWidgetItem* item = itemAt(pos);
    return kindOf(item) == SidebarRowKind::Entry ? item : nullptr;
}

void SidebarView::dragMoveEvent(QDragMoveEvent* event)
{
    // Rows move only within the top section; the drives are not the file's to order.
    if (event->source() != this || kindOf(currentItem()) != SidebarRowKind::Entry
        || !entryAt(event->position().toPoint())) {
        event->ignore();
        return;
    }
    QTreeWidget::dragMoveEvent(event);
}

void SidebarView::dropEvent(QDropEvent* event)
{
    QTreeWidgetItem* target = entryAt(event->position().toPoint());
    QTreeWidgetItem* dragged = currentItem();
    // The view never moves the rows itself: the file is changed, then read again.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    if (!target || kindOf(dragged) != SidebarRowKind::Entry)
        return;
    QTreeWidgetItem* top = topLevelItem(0);
    moveRow(top->indexOfChild(dragged), top->indexOfChild(target));
}

void SidebarView::moveRow(int from, int to)
{
    QTreeWidgetItem* top = topLevelItem(0);
    if (!top || from == to || from < 0 || to < 0 || from >= top->childCount() || to >= top->childCount())
        return;
    emit rowMoved(pathOf(top->child(from)), pathOf(top->child(to)));
}

QTreeWidgetItem* SidebarView::section(const QString& title)
{
    auto* item = new QTreeWidgetItem(this, {title});
    item->setFlags(Qt::ItemIsEnabled);
    QFont font = item->font(0);
    font.setWeight(QFont::DemiBold);
    font.setPointSizeF(font.pointSizeF() * 0.85);
    item->setFont(0, font);
    item->setForeground(0, palette().color(QPalette::Disabled, QPalette::WindowText));
    item->setExpanded(true);
    return item;
}

QTreeWidgetItem* SidebarView::row(QTreeWidgetItem* parent, const QString& name, const std::string& path,
    const char* symbol)
{
    auto* item = new QTreeWidgetItem(parent, {name});
    item->setData(0, kPathRole, QByteArray::fromStdString(path));
    item->setData(0, kSymbolRole, QByteArray(symbol));
    item->setIcon(0, iconSymbol(symbol));
    item->setToolTip(0, decode(path));
    return item;
}

void SidebarView::reload()
{
    // The sidebar file may be created on first use, its folders are looked up, and
    // probing drives can wait on a slow mount: all of it is read off the main thread, in
    // two separate reads, so that a favourite on a dead mount never keeps the drives
    // (and their "not responding" badges) from showing, nor the other way round.
    const int gen = ++m_generation;
    m_scans->submit(this, [this, gen]() -> std::function<void()> {
        SidebarSection top = bridgeSidebarRead();
        return [this, gen, top] {
            if (gen != m_generation)
                return;
            m_top = top;
            fill(m_top, m_drives);
        };
    });
    // Whether the Trash holds anything: its folders on every mounted volume are looked
    // at, so this is a read of its own too.
    m_trashCheck.submit(this, [this, gen]() -> std::function<void()> {
        const bool full = trashHasItems(trashVolumeTopdirs());
        return [this, gen, full] {
            if (gen != m_generation)
                return;
            setTrashFull(full);
            emit trashStateChanged(full);
        };
    });
    m_scans->submit(this, [this, gen]() -> std::function<void()> {
        std::vector<BridgeDrive> drives = bridgeDrives();
        return [this, gen, drives] {
            if (gen != m_generation)
                return;
            m_drives = drives;
            fill(m_top, m_drives);
        };
    });
}

void SidebarView::fill(const SidebarSection& top, const std::vector<BridgeDrive>& drives)
{
    clear();
    QTreeWidgetItem* places = section(decode(top.title));
    for (const auto& item : top.items)
        row(places, decode(item.name), item.path, item.path == homeDir() ? "house" : "folder")
            ->setData(0, kDriveNameRole, decode(item.name)); // a favourite on a stuck mount is badged too
    QTreeWidgetItem* computer = section(tr("Computer"));
    row(computer, tr("Computer"), "/", "desktopcomputer");
    std::vector<std::string> stuck;
    for (const auto& drive : drives) {
        row(computer, decode(drive.name), drive.path, "externaldrive")->setData(0, kDriveNameRole, decode(drive.name));
        if (!drive.responding)
            stuck.push_back(drive.path);
    }
    if (m_disks)
        for (const UdisksVolume& volume : m_disks->volumes()) {
            if (volume.mounted())
                continue;
            QTreeWidgetItem* disk = row(computer, volume.name, "", "externaldrive");
            disk->setData(0, kDiskRole, volume.device);
            disk->setForeground(0, palette().color(QPalette::Disabled, QPalette::WindowText));
            disk->setToolTip(0, tr("%1 is not mounted: click to mount it").arg(volume.device));
        }
    QTreeWidgetItem* trash = row(computer, tr("Trash"), "", "trash");
    trash->setData(0, kTrashRole, true);
    setTrashFull(m_trashFull);
    updateBadges(stuck);
    expandAll();
    select(m_selected);
}

void SidebarView::select(const std::string& location)
{
    m_selected = location;
    clearSelection();
    for (QTreeWidgetItemIterator it(this); *it; ++it) {
        if (!location.empty() && pathOf(*it) == location) {
            (*it)->setSelected(true);
            setCurrentItem(*it, 0, QItemSelectionModel::NoUpdate);
            return;
        }
    }
}

// ---- the Trash and the drives of the disk service

QTreeWidgetItem* SidebarView::trashRow() const
{
    for (QTreeWidgetItemIterator it(const_cast<SidebarView*>(this)); *it; ++it)
        if ((*it)->data(0, kTrashRole).toBool())
            return *it;
    return nullptr;
}

void SidebarView::setTrashFull(bool full)
{
    m_trashFull = full;
    if (QTreeWidgetItem* trash = trashRow()) {
        trash->setIcon(0, QIcon::fromTheme(full ? QStringLiteral("user-trash-full") : QStringLiteral("user-trash"),
                              iconSymbol("trash")));
        trash->setToolTip(0, full ? tr("The Trash holds items") : tr("The Trash is empty"));
    }
}

QTreeWidgetItem* SidebarView::diskRow(const QString& device) const
{
    for (QTreeWidgetItemIterator it(const_cast<SidebarView*>(this)); *it; ++it)
        if ((*it)->data(0, kDiskRole).toString() == device)
            return *it;
    return nullptr;
}

void SidebarView::setDisks(UdisksClient* disks)
{
    m_disks = disks;
    if (disks)
        connect(disks, &UdisksClient::changed, this, [this] { fill(m_top, m_drives); });
    fill(m_top, m_drives);
}

const UdisksVolume* SidebarView::volumeOf(const QTreeWidgetItem* item) const
{
    if (!m_disks || !item)
        return nullptr;
    const QString device = item->data(0, kDiskRole).toString();
    const QString path = decode(pathOf(item));
    for (const UdisksVolume& volume : m_disks->volumes())
        if ((!device.isEmpty() && volume.device == device) || (!path.isEmpty() && volume.mountPoints.contains(path)))
            return &volume;
    return nullptr;
}

void SidebarView::addDiskActions(QMenu& menu, const UdisksVolume& volume)
{
    const UdisksVolume copy = volume; // the list may be read again before a click
    if (volume.mounted())
        menu.addAction(tr("Unmount"), this, [this, copy] { runDisk(UdisksAction::Unmount, copy); });
    else
        menu.addAction(tr("Mount"), this, [this, copy] { runDisk(UdisksAction::Mount, copy); });
    if (volume.ejectable)
        menu.addAction(tr("Eject"), this, [this, copy] { runDisk(UdisksAction::Eject, copy); });
    if (volume.canPowerOff)
        menu.addAction(tr("Power Off"), this, [this, copy] { runDisk(UdisksAction::PowerOff, copy); });
    menu.addSeparator();
}

void SidebarView::runDisk(UdisksAction action, const UdisksVolume& volume)
{
    if (!m_disks)
        return;
    QPointer<SidebarView> self(this);
    m_disks->run(action, volume, [self, action](QString error, QString mountPoint) {
        if (!self)
            return;
        if (!error.isEmpty()) {
            emit self->diskFailed(error);
            return;
        }
        self->reload(); // the mount table has changed
        if (action == UdisksAction::Mount && !mountPoint.isEmpty())
            emit self->locationChosen(QFile::encodeName(mountPoint).toStdString());
    });
}
