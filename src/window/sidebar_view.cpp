#include "window/sidebar_view.h"

#include "fs/paths.h"
#include "window/core_bridge.h"
#include "window/scan_service.h"
#include "window/theme_icons.h"

#include <QFile>
#include <QHeaderView>

namespace {

constexpr int kPathRole = Qt::UserRole + 1;

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
    connect(this, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        std::string path = pathOf(item);
        if (!path.empty())
            emit locationChosen(path);
    });
    reload();
}

std::string SidebarView::pathOf(const QTreeWidgetItem* item)
{
    return item ? item->data(0, kPathRole).toByteArray().toStdString() : std::string();
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
    item->setIcon(0, iconSymbol(symbol));
    item->setToolTip(0, decode(path));
    return item;
}

void SidebarView::reload()
{
    // The sidebar file may be created on first use and probing drives can wait on a
    // slow mount: both are read off the main thread.
    const int gen = ++m_generation;
    m_scans->submit(this, [this, gen]() -> std::function<void()> {
        SidebarSection top = bridgeSidebarRead();
        std::vector<BridgeDrive> drives = bridgeDrives();
        return [this, gen, top, drives] {
            if (gen == m_generation)
                fill(top, drives);
        };
    });
}

void SidebarView::fill(const SidebarSection& top, const std::vector<BridgeDrive>& drives)
{
    clear();
    QTreeWidgetItem* places = section(decode(top.title));
    for (const auto& item : top.items)
        row(places, decode(item.name), item.path, item.path == homeDir() ? "house" : "folder");
    QTreeWidgetItem* computer = section(QStringLiteral("Computer"));
    row(computer, QStringLiteral("Computer"), "/", "desktopcomputer");
    for (const auto& drive : drives)
        row(computer, decode(drive.name), drive.path, "externaldrive");
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
