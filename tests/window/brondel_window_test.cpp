// A pane's navigation: histories, Enclosing Folder, loads superseded by newer ones, the
// dimming of slow loads, following along cables, and refresh.

#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "sizes/folder_sizes.h"
#include "fs/sys_calls.h"
#include "views/content_view.h"
#include "views/node_tree_model.h"
#include "window/brondel_window.h"
#include "fs/volume.h"

#include <QAbstractItemView>
#include <QScreen>
#include <QWindow>

#include <atomic>
#include <mutex>
#include <thread>

#include <QLabel>
#include <QPushButton>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTimer>

#include <memory>

namespace {

std::unique_ptr<BrondelWindow> paneAt(TestContext& t, const std::string& path)
{
    auto root = DirNode::make();
    root->path = path;
    root->name = path;
    root->isDir = true;
    return std::make_unique<BrondelWindow>(root, RootKind::Folder, t.context);
}

std::vector<std::string> names(const DirNodePtr& node)
{
    return entryNames(node);
}

// Folders named "locked" refuse to open with this errno.
int g_lockedErrno = 0;

int openatLocked(int dirfd, const char* path, int flags, mode_t mode)
{
    const char* slash = std::strrchr(path, '/');
    if (std::strcmp(slash ? slash + 1 : path, "locked") == 0) {
        errno = g_lockedErrno;
        return -1;
    }
    return sysCallsReal().openat(dirfd, path, flags, mode);
}

// The text shown in place of the rows, or empty when the pane shows rows.
QString shownError(const BrondelWindow& pane)
{
    auto* label = qobject_cast<QLabel*>(pane.contentView());
    if (!label && pane.contentView()) // a folder that is gone says so above a way out
        label = pane.contentView()->findChild<QLabel*>(QStringLiteral("readError"));
    return label ? label->text() : QString();
}

} // namespace

class BrondelWindowTest : public QObject {
    Q_OBJECT
private slots:
    void historyRules()
    {
        TempTree tree;
        const std::string a = tree.dir("A"), b = tree.dir("B"), c = tree.dir("C");
        TestContext t;
        auto pane = paneAt(t, a);
        pane->navigateLocal(a); // already there: nothing
        QCOMPARE(t.scans.count(), size_t(0));
        QVERIFY(pane->navHistory().empty());

        pane->goBack(); // empty history: nothing
        QCOMPARE(pane->currentLocation(), a);

        pane->navigateLocal(b);
        pane->navigateLocal(c);
        QCOMPARE(pane->navHistory(), (std::vector<std::string>{a, b}));
        pane->goBack();
        QCOMPARE(pane->currentLocation(), b);
        QCOMPARE(pane->forwardHistory(), std::vector<std::string>{c});
        pane->goForward();
        QCOMPARE(pane->currentLocation(), c);
        pane->goBack();
        pane->navigateLocal(a); // a new step forgets Forward
        QVERIFY(pane->forwardHistory().empty());
        QCOMPARE(pane->navHistory(), (std::vector<std::string>{a, b}));
        QCOMPARE(pane->title(), QStringLiteral("A"));
    }

    void enclosingFolder()
    {
        TempTree tree;
        const std::string deep = tree.dir("x/y");
        TestContext t;
        auto pane = paneAt(t, deep);
        pane->goUp();
        QCOMPARE(pane->currentLocation(), tree.path("x"));

        auto top = paneAt(t, "/tmp");
        top->goUp(); // the parent is the file-system root: the Computer root instead
        QVERIFY(top->isComputerRoot());
        QCOMPARE(top->currentLocation(), std::string("/"));
        const size_t before = top->navHistory().size();
        top->goUp(); // from the Computer root: nothing
        QCOMPARE(top->navHistory().size(), before);
        QTRY_COMPARE(top->title(), QStringLiteral("TestComputer"));
        QCOMPARE(top->rootNode()->path, std::string("/"));
    }

    void enclosingFolderOfADriveIsTheComputerOnceTheCheckIsIn()
    {
        // A mount point whose parent is not "/": only the background check knows it is a
        // drive; until its answer is in, Enclosing Folder goes to the parent.
        const std::string drive = "/dev/shm";
        if (!driveSpace(drive))
            QSKIP("no mount at /dev/shm here");
        TestContext t;
        auto pane = paneAt(t, "/tmp");
        pane->navigateLocal(drive);
        QVERIFY(!pane->rootIsDrive());
        QTRY_VERIFY(pane->rootIsDrive());
        pane->goUp();
        QVERIFY(pane->isComputerRoot());

        auto early = paneAt(t, "/tmp");
        early->navigateLocal(drive);
        early->goUp(); // the check has not answered yet
        QCOMPARE(early->currentLocation(), std::string("/dev"));
    }

    void recentsAndFavouritesAreReadAndWrittenOffTheUiThread()
    {
        TempTree tree;
        const std::string a = tree.dir("a"), b = tree.dir("b"), c = tree.dir("c");
        TestContext t;
        std::mutex lock;
        std::vector<std::string> noted;
        std::atomic<int> onUiThread{0};
        const auto ui = std::this_thread::get_id();
        t.context.recentsNote = [&](const std::string& path) {
            onUiThread += std::this_thread::get_id() == ui;
            std::lock_guard guard(lock);
            noted.push_back(path);
        };
        t.headers = {testHeader("Work", "pinned:/Work", {a})};
        t.context.pinnedNodes = [&] {
            onUiThread += std::this_thread::get_id() == ui;
            return t.headers;
        };
        auto pane = paneAt(t, tree.root());
        for (const auto& path : {a, b, c})
            pane->navigateLocal(path);
        t.scans.finishAll();
        QTRY_COMPARE(pane->headers().size(), size_t(1)); // they arrive on their own
        {
            std::lock_guard guard(lock);
            QCOMPARE(noted, (std::vector<std::string>{a, b, c})); // in the order shown
        }
        QCOMPARE(onUiThread.load(), 0);
        // The view shows them: the header row, then its entry, above the folder's rows.
        auto* view = qobject_cast<QAbstractItemView*>(pane->contentView());
        QVERIFY(view);
        QCOMPARE(view->model()->index(0, 0).data().toString(), QStringLiteral("Work"));

        pane->rebuildMode(ViewMode::Column); // a mode switch reads nothing
        QCOMPARE(onUiThread.load(), 0);
    }

    void staleScanNeverShows()
    {
        TempTree tree;
        tree.file("slow/old.txt");
        tree.file("fast/new.txt");
        TestContext t;
        auto pane = paneAt(t, tree.root());
        pane->navigateLocal(tree.path("slow"));
        pane->navigateLocal(tree.path("fast"));
        QCOMPARE(t.scans.count(), size_t(2));
        t.scans.finish(1); // the fast one lands first
        QCOMPARE(names(pane->rootNode()), std::vector<std::string>{"new.txt"});
        QVERIFY(!pane->scanPendingGen());
        t.scans.finish(0); // the slow one arrives late and is dropped
        QCOMPARE(names(pane->rootNode()), std::vector<std::string>{"new.txt"});
        QCOMPARE(pane->currentLocation(), tree.path("fast"));
    }

    void dimsOnlyWhenStillLoading()
    {
        TempTree tree;
        tree.dir("quick");
        tree.dir("slow");
        TestContext t;
        auto pane = paneAt(t, tree.root());

        pane->navigateLocal(tree.path("quick"));
        t.scans.finish(0); // within 0.12 s
        t.fireDeferred();
        QVERIFY(!pane->isDimmed());

        pane->navigateLocal(tree.path("slow"));
        QVERIFY(!pane->isDimmed()); // not before the check
        t.fireDeferred();
        QVERIFY(pane->isDimmed());
        t.scans.finish(1);
        QVERIFY(!pane->isDimmed());
    }

    void dimmingIsSeenOnScreenAndLiftedOnArrival_data()
    {
        QTest::addColumn<bool>("animated");
        QTest::newRow("at once") << false;
        QTest::newRow("faded") << true;
    }

    void dimmingIsSeenOnScreenAndLiftedOnArrival()
    {
        QFETCH(bool, animated);
        TempTree tree;
        for (int i = 0; i < 12; ++i)
            tree.file("folder/file " + std::to_string(i) + ".txt", "text");
        TestContext t;
        t.context.animate = animated;
        auto pane = paneAt(t, tree.path("folder"));
        pane->resize(700, 400);
        pane->show();
        QVERIFY(QTest::qWaitForWindowExposed(pane.get()));
        pane->reload();
        t.scans.finishAll();
        // The names show first; the sizes and dates follow: the comparison waits for them.
        QTRY_VERIFY([&] {
            auto* view = qobject_cast<QAbstractItemView*>(pane->contentView());
            auto* model = view ? qobject_cast<NodeTreeModel*>(view->model()) : nullptr;
            return model && !model->metaPending();
        }());
        QCoreApplication::processEvents();
        // How far the pane stands out from the window's ground: dimmed to half opacity,
        // every pixel is halfway to the ground.
        auto ink = [&] {
            // What the screen shows (the backing store), not a fresh rendering of the widget.
            QCoreApplication::processEvents();
            const QImage image = pane->screen()->grabWindow(pane->windowHandle()->winId()).toImage();
            const int ground = qGray(pane->palette().color(QPalette::Window).rgb());
            qint64 sum = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    sum += std::abs(qGray(image.pixel(x, y)) - ground);
            return sum;
        };
        const qint64 shown = ink();
        QVERIFY(shown > 0);

        pane->reload(); // a read that takes its time
        t.fireDeferred();
        QVERIFY(pane->isDimmed());
        QTest::qWait(animated ? 400 : 0);
        auto halfAsStrong = [&] {
            const qint64 dimmed = ink();
            return dimmed > shown * 4 / 10 && dimmed < shown * 6 / 10;
        };
        QVERIFY(halfAsStrong());
        pane->rebuildMode(ViewMode::List); // a view built while the load is on its way
        QVERIFY(halfAsStrong());

        t.scans.finishAll();
        QCoreApplication::processEvents();
        QTRY_COMPARE(ink(), shown);
    }

    void supersededLoadIsNotDimmedLater()
    {
        TempTree tree;
        tree.dir("one");
        tree.dir("two");
        TestContext t;
        auto pane = paneAt(t, tree.root());
        pane->navigateLocal(tree.path("one"));
        pane->navigateLocal(tree.path("two"));
        t.scans.finish(1);
        t.fireDeferred(); // both checks run: neither belongs to a pending load
        QVERIFY(!pane->isDimmed());
    }

    void closedPaneIgnoresLateResults()
    {
        TempTree tree;
        tree.dir("d");
        TestContext t;
        auto pane = paneAt(t, tree.root());
        pane->navigateLocal(tree.path("d"));
        QCOMPARE(t.deferred.size(), size_t(1)); // the dimming check
        pane.reset();
        // Both the read and the dimming check were tied to the pane: neither runs.
        t.scans.finish(0);
        QCOMPARE(t.scans.delivered(), size_t(0));
        QCOMPARE(t.fireDeferred(), size_t(0));
    }

    void toPanesFollowAlongChains()
    {
        TempTree tree;
        const std::string a = tree.dir("a"), b = tree.dir("b");
        TestContext t;
        BrondelWindow::Cables cables;
        cables.onLinked([](BrondelWindow* from, BrondelWindow* to) { to->navigateLocal(from->currentLocation()); });
        auto p1 = paneAt(t, tree.root()), p2 = paneAt(t, tree.root()), p3 = paneAt(t, b);
        for (auto* p : {p1.get(), p2.get(), p3.get()})
            p->setCables(&cables);
        QVERIFY(cables.link(p1.get(), p2.get()));
        QVERIFY(cables.link(p2.get(), p3.get()));
        QCOMPARE(p3->currentLocation(), tree.root()); // follows its new FROM at once

        p1->navigateLocal(a); // FROM moves: the chain follows
        QCOMPARE(p2->currentLocation(), a);
        QCOMPARE(p3->currentLocation(), a);
        QCOMPARE(p3->navHistory().back(), tree.root());

        p1->openFolder(b); // opening sends the folder down, FROM stays
        QCOMPARE(p1->currentLocation(), a);
        QCOMPARE(p2->currentLocation(), b);
        QCOMPARE(p3->currentLocation(), b);

        cables.setMirror(p2.get(), true); // now FROM enters too
        p1->openFolder(tree.root());
        QCOMPARE(p1->currentLocation(), tree.root());
        QCOMPARE(p2->currentLocation(), tree.root());
        p1->setCables(nullptr);
        p2->setCables(nullptr);
        p3->setCables(nullptr);
    }

    void refreshRescansWithoutHistory()
    {
        TempTree tree;
        tree.file("f/one.txt");
        TestContext t;
        auto pane = paneAt(t, tree.path("f"));
        pane->refresh();
        t.scans.finishAll();
        QCOMPARE(names(pane->rootNode()), std::vector<std::string>{"one.txt"});
        tree.file("f/two.txt");
        pane->refresh();
        t.scans.finishAll();
        QCOMPARE(names(pane->rootNode()).size(), size_t(2));
        QVERIFY(pane->navHistory().empty());
    }

    void refreshForgetsFolderSizesUnderTheRoot()
    {
        TempTree tree;
        tree.sized("f/sub/a.bin", 1000);
        tree.sized("elsewhere/b.bin", 1000);
        FolderSizes& sizes = FolderSizes::shared();
        const std::string sub = tree.path("f/sub"), elsewhere = tree.path("elsewhere");
        sizes.cachedOrWalk(sub);
        sizes.cachedOrWalk(elsewhere);
        TestContext t;
        auto pane = paneAt(t, tree.path("f"));
        pane->refresh();
        QVERIFY(!sizes.size(sub)); // asked anew (and walked again)
        QVERIFY(sizes.size(elsewhere));
    }

    void unreadableFolderSaysWhy()
    {
        TempTree tree;
        tree.dir("locked");
        tree.file("gone/a.txt");
        tree.file("fine/b.txt");
        TestContext t;
        auto pane = paneAt(t, tree.root());
        SysCalls calls = sysCallsReal();
        calls.openat = openatLocked;
        SysCallsOverride override(calls);
        struct Case {
            int error;
            QString shown;
        };
        const Case cases[] = {
            {EACCES, QStringLiteral("Permission denied")},
            {EPERM, QStringLiteral("Permission denied")},
            {EIO, QString::fromLocal8Bit(std::strerror(EIO))},
        };
        for (const Case& c : cases) {
            g_lockedErrno = c.error;
            pane->refresh();
            pane->navigateLocal(tree.path("locked"));
            t.scans.finishAll();
            QCOMPARE(shownError(*pane), c.shown);
            for (ViewMode mode : {ViewMode::Column, ViewMode::Icon, ViewMode::List}) {
                pane->rebuildMode(mode);
                QCOMPARE(shownError(*pane), c.shown);
            }
            pane->goBack();
            t.scans.finishAll();
        }

        pane->navigateLocal(tree.path("gone"));
        t.scans.finishAll();
        QCOMPARE(names(pane->rootNode()), std::vector<std::string>{"a.txt"});
        QVERIFY(shownError(*pane).isEmpty());
        QCOMPARE(std::rename(tree.path("gone").c_str(), tree.path("moved").c_str()), 0); // gone from outside
        pane->refresh();
        t.scans.finishAll();
        QCOMPARE(shownError(*pane), QStringLiteral("No such folder"));
        // It offers the folder that held it.
        auto* up = pane->contentView()->findChild<QPushButton*>(QStringLiteral("goUp"));
        QVERIFY(up);
        QStringList texts;
        for (QLabel* label : pane->contentView()->findChildren<QLabel*>())
            texts << label->text();
        QVERIFY2(texts.join('|').contains(QStringLiteral("“gone” is no longer here")), qPrintable(texts.join('|')));
        up->click();
        QCOMPARE(pane->currentLocation(), tree.root());
        t.scans.finishAll();
        QVERIFY(shownError(*pane).isEmpty());

        pane->navigateLocal(tree.path("fine"));
        t.scans.finishAll();
        QVERIFY(shownError(*pane).isEmpty()); // rows again
    }

    void modeChangeRebuildsWithoutRescan()
    {
        TestContext t;
        auto pane = paneAt(t, "/tmp");
        QSignalSpy spy(pane.get(), &BrondelWindow::modeChanged);
        pane->rebuildMode(ViewMode::Column);
        QCOMPARE(pane->currentMode(), ViewMode::Column);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(t.scans.count(), size_t(0));
        QVERIFY(pane->contentView());
    }

    // A context menu must not run a nested event loop: the pane may rebuild its view
    // while the menu is open (a folder read lands, a mode key), and the view whose
    // handler opened the menu would be deleted under it. The ASan build checks that
    // nothing touches the old view; here the handler must have returned before the
    // rebuild, and the menu of the old view closes with it.
    void rebuildWhileContextMenuIsOpen_data()
    {
        QTest::addColumn<ViewMode>("mode");
        QTest::newRow("list") << ViewMode::List;
        QTest::newRow("column") << ViewMode::Column;
        QTest::newRow("icon") << ViewMode::Icon;
    }
    void rebuildWhileContextMenuIsOpen()
    {
        QFETCH(ViewMode, mode);
        TempTree tree;
        tree.dir("d");
        TestContext t;
        auto pane = paneAt(t, tree.root());
        pane->rebuildMode(mode);
        pane->resize(600, 400);
        pane->show();
        QVERIFY(QTest::qWaitForWindowExposed(pane.get()));
        QPointer<QWidget> oldView = pane->contentView();
        auto* items = qobject_cast<QAbstractScrollArea*>(contentViewFocus(oldView)); // item views and the icon view
        QVERIFY(items);

        bool inHandler = false, rebuiltInHandler = false, menuWasOpen = false;
        QTimer::singleShot(0, pane.get(), [&] {
            rebuiltInHandler = inHandler;
            menuWasOpen = QApplication::activePopupWidget() != nullptr;
            pane->rebuildMode(mode);
            // Closes a menu still running its own loop, so a failing run ends.
            QTimer::singleShot(50, [] {
                if (QWidget* popup = QApplication::activePopupWidget())
                    popup->close();
            });
        });
        const QPoint pos(5, items->viewport()->height() - 3);
        inHandler = true;
        if (items->contextMenuPolicy() == Qt::CustomContextMenu) {
            emit items->customContextMenuRequested(pos);
        } else {
            QContextMenuEvent event(QContextMenuEvent::Mouse, pos, items->viewport()->mapToGlobal(pos));
            QCoreApplication::sendEvent(items->viewport(), &event);
        }
        inHandler = false;
        QVERIFY(QApplication::activePopupWidget());
        QTRY_VERIFY(oldView.isNull());
        QVERIFY(menuWasOpen);
        QVERIFY(!rebuiltInHandler);
        QTRY_VERIFY(!QApplication::activePopupWidget()); // the old view's menu went with it
        QVERIFY(pane->contentView());
        QCOMPARE(pane->currentMode(), mode);
    }

    // A shown folder follows changes other programs make, in list and column mode:
    // new rows appear and removed ones go without a refresh, the selected row and an
    // opened folder's rows stay, a row renamed away leaves the selection.
    void liveFolderKeepsSelectionAndOpenedFolders()
    {
        for (ViewMode mode : {ViewMode::List, ViewMode::Column}) {
            TempTree tree;
            tree.file("a.txt", "a");
            tree.file("c.txt", "ccc");
            tree.file("d.txt", "d");
            tree.file("sub/inner.txt");
            TestContext t;
            auto pane = paneAt(t, tree.root());
            pane->rebuildMode(mode);
            pane->showLocation(tree.root());
            t.scans.finishAll();
            QVERIFY(contentViewSelect(pane->contentView(), tree.path("c.txt")));
            auto* items = qobject_cast<QAbstractItemView*>(pane->contentView());
            QVERIFY(items);
            auto* model = const_cast<NodeTreeModel*>(contentModel(items));
            const QModelIndex sub = model->indexOfPath(tree.path("sub"));
            QVERIFY(sub.isValid());
            model->fetchMore(sub);
            t.scans.finishAll();
            QCOMPARE(model->rowCount(sub), 1);
            QSignalSpy changed(pane.get(), &BrondelWindow::contentsChanged);

            tree.file("b.txt");
            tree.file("e.txt");
            QVERIFY(std::remove(tree.path("a.txt").c_str()) == 0);
            const auto shown = [&] {
                std::vector<std::string> rows;
                for (int row = 0; row < model->rowCount(); ++row)
                    rows.push_back(model->nodeAt(model->index(row, 0))->name);
                return rows;
            };
            const std::vector<std::string> want{"sub", "b.txt", "c.txt", "d.txt", "e.txt"};
            QTRY_VERIFY_WITH_TIMEOUT(shown() == want, 10000);
            QCOMPARE(contentViewSelection(pane->contentView()), std::vector<std::string>{tree.path("c.txt")});
            QCOMPARE(items->currentIndex(), model->indexOfPath(tree.path("c.txt")));
            const QModelIndex subNow = model->indexOfPath(tree.path("sub"));
            QCOMPARE(model->rowCount(subNow), 1); // still open, not read again
            QCOMPARE(pane->rootNode()->store->root().childCount, 5u);
            QVERIFY(changed.count() >= 1);
            QCOMPARE(contentViewFocus(pane->contentView()) != nullptr, true);

            QVERIFY(std::rename(tree.path("c.txt").c_str(), tree.path("z.txt").c_str()) == 0);
            QTRY_VERIFY_WITH_TIMEOUT(model->indexOfPath(tree.path("z.txt")).isValid(), 10000);
            QVERIFY(contentViewSelection(pane->contentView()).empty());
            QVERIFY(!model->indexOfPath(tree.path("c.txt")).isValid());
        }
    }

    // A change that comes after the folder was read but before the read is shown is not
    // lost: the watch was in place before the read, and the notice it gave meanwhile
    // reads the folder again once the first read is shown.
    void aChangeWhileTheReadIsOnItsWayShows()
    {
        // Reads in two steps the test controls: the folder read, then the hand-over.
        class TwoStepScans : public ScanService {
        public:
            void scan(const std::string& path, const BrondelSettings&, QObject*, Done done,
                std::function<void()> before) override
            {
                m_path = path;
                m_done = std::move(done);
                m_before = std::move(before);
            }
            void read()
            {
                if (m_before)
                    m_before();
                m_root = ScanService::scanListing(m_path, BrondelSettings{});
            }
            void deliver() { m_done(m_root); }

        private:
            std::string m_path;
            Done m_done;
            std::function<void()> m_before;
            DirNodePtr m_root;
        };
        TempTree tree;
        tree.file("a.txt");
        TestContext t;
        TwoStepScans scans;
        t.context.scans = &scans;
        auto pane = paneAt(t, tree.root());
        pane->rebuildMode(ViewMode::List);
        pane->showLocation(tree.root());
        scans.read();
        tree.file("b.txt");
        QTest::qWait(400); // the notice arrives and its burst ends while the read is held
        scans.deliver();
        auto* items = qobject_cast<QAbstractItemView*>(pane->contentView());
        QVERIFY(items);
        const NodeTreeModel* model = contentModel(items);
        QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(), 2, 10000);
        QVERIFY(model->indexOfPath(tree.path("b.txt")).isValid());
    }
};

BRONDEL_GUI_TEST_MAIN(BrondelWindowTest)
#include "brondel_window_test.moc"
