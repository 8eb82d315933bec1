// The sidebar: the file's section (existing folders only), then the computer; a click
// goes to the row's folder and the shown location is selected.

#include "gui_test_main.h"
#include "window/sidebar_view.h"
#include "../services/fake_udisks.h"

#include <QMenu>

#include <QDir>

class SidebarViewTest : public QObject {
    Q_OBJECT
private slots:
    void rowsClicksAndSelection()
    {
        QDir(QString::fromStdString(testHome())).mkpath(QStringLiteral("Documents"));
        ScanService scans;
        SidebarView sidebar(&scans);
        QTRY_COMPARE(sidebar.topLevelItemCount(), 2);
        QTRY_COMPARE(sidebar.topLevelItem(0)->childCount(), 2); // the file and the drives come apart
        QTreeWidgetItem* places = sidebar.topLevelItem(0);
        QCOMPARE(places->text(0), QStringLiteral("Favorites"));
        QVERIFY(!(places->flags() & Qt::ItemIsSelectable));
        QStringList names;
        for (int i = 0; i < places->childCount(); ++i)
            names << places->child(i)->text(0);
        // "~" and "~/Documents" exist in the test home; Desktop and Downloads do not.
        QCOMPARE(names.size(), 2);
        QCOMPARE(names[1], QStringLiteral("Documents"));
        QTreeWidgetItem* computer = sidebar.topLevelItem(1)->child(0);
        QCOMPARE(SidebarView::pathOf(computer), std::string("/"));

        QSignalSpy chosen(&sidebar, &SidebarView::locationChosen);
        emit sidebar.itemClicked(places->child(1), 0);
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).value<std::string>(), testHome() + "/Documents");
        emit sidebar.itemClicked(places, 0); // a section title goes nowhere
        QCOMPARE(chosen.count(), 1);
        // The keyboard goes there too: Return on the current row.
        sidebar.setCurrentItem(places->child(0));
        QTest::keyClick(sidebar.viewport(), Qt::Key_Return);
        QCOMPARE(chosen.count(), 2);
        QCOMPARE(chosen.at(1).at(0).value<std::string>(), testHome());

        sidebar.select("/");
        QVERIFY(computer->isSelected());
        sidebar.select("/nowhere");
        QVERIFY(sidebar.selectedItems().isEmpty());
    }

    void drivesNotMountedAreOfferedAndMountOnClick()
    {
        FakeUdisksBus bus;
        if (bus.address().isEmpty())
            QSKIP("no dbus-daemon");
        UdisksClient disks(bus.address());
        QTRY_VERIFY(disks.settled());
        ScanService scans;
        SidebarView sidebar(&scans);
        sidebar.setDisks(&disks);
        // Only the unmounted file system of the removable drive gets a row of its own.
        QTRY_VERIFY(sidebar.diskRow(QStringLiteral("/dev/sdb1")));
        QVERIFY(!sidebar.diskRow(QStringLiteral("/dev/sdb2"))); // mounted: a drive row when visible
        QVERIFY(!sidebar.diskRow(QStringLiteral("/dev/sda1"))); // the internal disk
        QTreeWidgetItem* stick = sidebar.diskRow(QStringLiteral("/dev/sdb1"));
        QCOMPARE(stick->text(0), QStringLiteral("PHOTOS"));

        std::unique_ptr<QMenu> menu = sidebar.menuAt(sidebar.visualItemRect(stick).center());
        QVERIFY(menu);
        QStringList items;
        for (QAction* action : menu->actions())
            if (!action->isSeparator())
                items << action->text();
        QCOMPARE(items, (QStringList{"Mount", "Eject", "Power Off"}));

        // A refusal reaches the window as text.
        bus.service.busyMessage = QStringLiteral("target is busy: in use by: rsync (pid 9)");
        QSignalSpy failed(&sidebar, &SidebarView::diskFailed);
        QSignalSpy reread(&disks, &UdisksClient::changed);
        menu->actions().at(1)->trigger(); // Eject
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed.at(0).at(0).toString(), QStringLiteral("The drive is in use by rsync (process 9)."));
        bus.service.busyMessage.clear();
        QTRY_VERIFY(reread.count() >= 1); // the rows are made again after every action
        stick = sidebar.diskRow(QStringLiteral("/dev/sdb1"));
        QVERIFY(stick);

        // A click mounts it, and the window is sent to where it was mounted.
        QSignalSpy chosen(&sidebar, &SidebarView::locationChosen);
        emit sidebar.itemClicked(stick, 0);
        QTRY_COMPARE(chosen.count(), 1);
        QCOMPARE(chosen.at(0).at(0).value<std::string>(), std::string("/media/u/mounted"));
        QTRY_VERIFY(!sidebar.diskRow(QStringLiteral("/dev/sdb1")));
    }
};

BRONDEL_GUI_TEST_MAIN(SidebarViewTest)
#include "sidebar_view_test.moc"
