#pragma once
// The window's sidebar: the top section from the sidebar file, then the computer and the
// mounted drives, each badged "not responding" while its mount does not answer. A click
// goes to the row's folder; the row of the shown location is selected.

#include "window/core_bridge.h"

#include <QTimer>
#include <QTreeWidget>

#include <string>

class ScanService;

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
    // Whether a drive row carries the "not responding" badge.
    static bool badged(const QTreeWidgetItem* item);

signals:
    void locationChosen(const std::string& path);

private:
    void fill(const SidebarSection& top, const std::vector<BridgeDrive>& drives);
    // Badges the drive rows that are in `stuck` or that the watchdog remembers as stuck,
    // and unbadges the others.
    void updateBadges(const std::vector<std::string>& stuck);
    QTreeWidgetItem* section(const QString& title);
    QTreeWidgetItem* row(QTreeWidgetItem* section, const QString& name, const std::string& path, const char* symbol);

    ScanService* m_scans;
    std::string m_selected;
    int m_generation = 0;
    // The two halves as last read (until the first reads land: the defaults, no drives).
    SidebarSection m_top{"Favorites", {}};
    std::vector<BridgeDrive> m_drives;
    QTimer m_badgeCheck;
};
