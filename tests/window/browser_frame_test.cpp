// The top-level window: commands reach the active pane; panes split, close, move and
// share their space equally; the menu's cable toggle; every toolbar and menu icon.

#include "actions/menu_setup.h"
#include "gui_test_main.h"
#include "support/temp_tree.h"
#include "window/app_delegate.h"
#include "window/browser_frame.h"
#include "window/browser_toolbar.h"
#include "window/pane_header.h"
#include "window/pane_view.h"
#include "services/theme_icons.h"

#include <QMenuBar>
#include <QSplitter>
#include <QToolButton>

namespace {

std::unique_ptr<BrowserFrame> frameAt(TestContext& t, const std::string& path)
{
    auto root = DirNode::make();
    root->path = path;
    root->name = "start";
    root->isDir = true;
    auto frame = std::make_unique<BrowserFrame>(root, RootKind::Folder, t.context);
    frame->setAttribute(Qt::WA_DeleteOnClose, false);
    return frame;
}

QList<int> lengths(QSplitter* splitter)
{
    QList<int> out;
    for (int i = 0; i < splitter->count(); ++i) {
        QWidget* w = splitter->widget(i);
        out << (splitter->orientation() == Qt::Horizontal ? w->width() : w->height());
    }
    return out;
}

bool nearlyEqual(const QList<int>& values)
{
    for (int v : values)
        if (std::abs(v - values.first()) > 2)
            return false;
    return true;
}

} // namespace

class BrowserFrameTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { iconsInstallTheme(); }

    void commandsGoToTheActivePane()
    {
        TempTree tree;
        const std::string a = tree.dir("a"), b = tree.dir("b");
        TestContext t;
        auto frame = frameAt(t, tree.root());
        BrondelWindow* first = frame->activePane();
        BrondelWindow* second = frame->splitPane(first, Axis::SideBySide);
        QCOMPARE(frame->activePane(), second);
        frame->navigateTo(a);
        QCOMPARE(second->currentLocation(), a);
        QCOMPARE(first->currentLocation(), tree.root());
        frame->switchMode(ViewMode::Column);
        QCOMPARE(second->currentMode(), ViewMode::Column);
        QCOMPARE(first->currentMode(), ViewMode::List);
        QCOMPARE(frame->toolbar()->selectedMode(), ViewMode::Column);

        frame->setActivePane(first);
        QCOMPARE(frame->toolbar()->selectedMode(), ViewMode::List); // the segment follows
        frame->navigateTo(b);
        frame->goBack();
        QCOMPARE(first->currentLocation(), tree.root());
        QCOMPARE(second->currentLocation(), a);
        t.scans.finishAll();
        QCOMPARE(frame->windowTitle(), first->title());
    }

    void splitCloseAndEqualise()
    {
        TestContext t;
        auto frame = frameAt(t, "/tmp");
        frame->resize(1200, 700);
        frame->show();
        BrondelWindow* one = frame->activePane();
        frame->closePane(one); // the last pane stays
        QCOMPARE(frame->panes().size(), size_t(1));

        BrondelWindow* two = frame->splitPane(one, Axis::SideBySide);
        BrondelWindow* three = frame->splitPane(two, Axis::SideBySide);
        auto* row = qobject_cast<QSplitter*>(frame->paneViewOf(one)->parentWidget());
        QVERIFY(row);
        QCOMPARE(row->count(), 3); // same axis: one splitter, in order
        QCOMPARE(row->indexOf(frame->paneViewOf(two)), 1);
        QTRY_VERIFY(nearlyEqual(lengths(row)));

        BrondelWindow* below = frame->splitPane(two, Axis::Stacked);
        auto* column = qobject_cast<QSplitter*>(frame->paneViewOf(below)->parentWidget());
        QCOMPARE(splitterAxis(column), Axis::Stacked);
        QCOMPARE(column->parentWidget(), row);
        QCOMPARE(frame->panes().size(), size_t(4));
        QCOMPARE(frame->paneArea()->paneViews().size(), 4);

        frame->setActivePane(below);
        frame->closeActivePane();
        QCOMPARE(frame->panes().size(), size_t(3));
        QVERIFY(frame->activePane() != below);
        // The stacked splitter with one child left gave its place back to it.
        QCOMPARE(frame->paneViewOf(two)->parentWidget(), row);
        Q_UNUSED(three);
    }

    void movePaneByZones()
    {
        TestContext t;
        auto frame = frameAt(t, "/tmp");
        frame->resize(1200, 700);
        frame->show();
        BrondelWindow* a = frame->activePane();
        BrondelWindow* b = frame->splitPane(a, Axis::SideBySide);
        BrondelWindow* c = frame->splitPane(b, Axis::SideBySide);
        PaneView *va = frame->paneViewOf(a), *vb = frame->paneViewOf(b), *vc = frame->paneViewOf(c);
        auto* row = qobject_cast<QSplitter*>(va->parentWidget());

        frame->movePane(va, va, DropZone::Right); // onto itself: nothing
        QCOMPARE(row->indexOf(va), 0);

        frame->movePane(va, vb, DropZone::Right); // right after b in the same row
        QCOMPARE(row->indexOf(vb), 0);
        QCOMPARE(row->indexOf(va), 1);
        QCOMPARE(row->indexOf(vc), 2);
        QCOMPARE(frame->activePane(), a);
        QTRY_VERIFY(nearlyEqual(lengths(row)));

        frame->movePane(vc, vb, DropZone::Center); // a swap
        QCOMPARE(row->indexOf(vc), 0);
        QCOMPARE(row->indexOf(vb), 2);

        frame->movePane(vb, vc, DropZone::Top); // a new stacked split, b above c
        auto* column = qobject_cast<QSplitter*>(vc->parentWidget());
        QCOMPARE(splitterAxis(column), Axis::Stacked);
        QCOMPARE(column->indexOf(vb), 0);
        QCOMPARE(column->indexOf(vc), 1);
        QCOMPARE(frame->paneArea()->paneViews().size(), 3);
    }

    void headerDragShorterThanThresholdDoesNotMove()
    {
        TestContext t;
        auto frame = frameAt(t, "/tmp");
        frame->resize(1000, 600);
        frame->show();
        BrondelWindow* a = frame->activePane();
        frame->splitPane(a, Axis::SideBySide);
        PaneHeader* header = frame->paneViewOf(a)->header();
        QSignalSpy moves(header, &PaneHeader::dragMoved);
        QTest::mousePress(header, Qt::LeftButton, {}, QPoint(40, 5));
        QTest::mouseMove(header, QPoint(44, 8)); // 5 pixels
        QTest::mouseRelease(header, Qt::LeftButton, {}, QPoint(44, 8));
        QCOMPARE(moves.count(), 0);
        QCOMPARE(frame->paneArea()->paneViews().first()->host(), a);
    }

    void linkToggleFromTheMenu()
    {
        TempTree tree;
        const std::string sub = tree.dir("sub");
        TestContext t;
        auto frame = frameAt(t, tree.root());
        BrondelWindow* a = frame->activePane();
        frame->linkToggleActive(); // one pane: nothing
        QVERIFY(frame->cables().empty());
        BrondelWindow* b = frame->splitPane(a, Axis::SideBySide);
        b->navigateLocal(sub);
        frame->linkToggleActive(); // b is last: it links to the first pane
        QCOMPARE(frame->cables().from(a), b);
        QCOMPARE(a->currentLocation(), sub); // the new TO pane goes where FROM is
        QCOMPARE(frame->linkRole(b), QStringLiteral("FROM"));
        frame->linkToggleActive();
        QVERIFY(frame->cables().empty());

        frame->link(a, b);
        frame->closePane(b); // closing removes its cables
        QVERIFY(frame->cables().empty());
    }

    void backAndForwardFollowTheActivePane()
    {
        TempTree tree;
        const std::string a = tree.dir("a");
        TestContext t;
        auto frame = frameAt(t, tree.root());
        QAction* back = frame->toolbar()->item("back");
        QAction* forward = frame->toolbar()->item("forward");
        auto state = [&] { return std::pair{back->isEnabled(), forward->isEnabled()}; };
        QCOMPARE(state(), std::pair(false, false));
        frame->navigateTo(a);
        QCOMPARE(state(), std::pair(true, false));
        frame->goBack();
        QCOMPARE(state(), std::pair(false, true));
        BrondelWindow* first = frame->activePane();
        BrondelWindow* second = frame->splitPane(first, Axis::SideBySide); // a fresh history
        QCOMPARE(state(), std::pair(false, false));
        frame->setActivePane(first);
        QCOMPARE(state(), std::pair(false, true));
        second->navigateLocal(a); // another pane's steps leave the buttons alone
        QCOMPARE(state(), std::pair(false, true));
        frame->goForward();
        QCOMPARE(state(), std::pair(true, false));
    }

    void cardsChangedRefreshesEveryPaneOfEveryWindow()
    {
        TestContext t;
        auto one = frameAt(t, "/tmp");
        auto two = frameAt(t, "/tmp");
        two->splitPane(two->activePane(), Axis::Stacked);

        BrondelSettings settings;
        AppDelegate delegate({}, RootChoice::Paths, ViewMode::List, settings); // no launch windows
        std::function<void()> cardsChanged;
        delegate.setCardsObserver([&](std::function<void()> callback, QObject* owner) {
            cardsChanged = std::move(callback);
            return owner == &delegate;
        });
        delegate.applicationDidFinishLaunching();
        QVERIFY(cardsChanged);
        QCOMPARE(t.scans.count(), size_t(0));
        cardsChanged();
        QCOMPARE(t.scans.count(), size_t(3)); // one reload per pane
    }

    void enabledArrowsLookEnabled()
    {
        // An enabled arrow is drawn in a dark ink: a pale one reads as a disabled button.
        auto ink = [](const QIcon& icon) {
            const QImage image = icon.pixmap(16, 16).toImage();
            double dark = 0, cover = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x) {
                    const QColor c = image.pixelColor(x, y);
                    dark += c.alphaF() * (1.0 - c.lightnessF());
                    cover += c.alphaF();
                }
            return cover > 0 ? dark / cover : 0.0;
        };
        for (const char* symbol : {"chevron.left", "chevron.right", "arrow.up"}) {
            QVERIFY2(ink(iconSymbol(symbol)) > 0.6, symbol);
        }
    }

    void everyToolbarAndMenuIconIsDrawn()
    {
        TestContext t;
        auto frame = frameAt(t, "/tmp");
        MenuSetup::install(frame.get());
        int checked = 0;
        for (QAction* action : frame->toolbar()->actions()) {
            if (action->isSeparator() || action->text().isEmpty())
                continue;
            QVERIFY2(!action->icon().isNull(), qPrintable(action->text()));
            QVERIFY2(!action->icon().pixmap(16, 16).isNull(), qPrintable(action->text()));
            ++checked;
        }
        for (const char* id : {"back", "forward", "split", "info", "trash"})
            QVERIFY2(frame->toolbar()->item(id), id);
        for (QAction* menu : frame->menuBar()->actions())
            for (QAction* action : menu->menu()->actions()) {
                if (action->isSeparator())
                    continue;
                QVERIFY2(!action->icon().pixmap(16, 16).isNull(), qPrintable(action->text()));
                ++checked;
            }
        for (PaneHeader* header : frame->findChildren<PaneHeader*>())
            for (QToolButton* button : header->findChildren<QToolButton*>())
                QVERIFY(!button->icon().pixmap(16, 16).isNull());
        QVERIFY(checked > 20);
    }

    void shortcutsOfTheMenus()
    {
        TestContext t;
        auto frame = frameAt(t, "/tmp");
        MenuSetup::install(frame.get());
        QMap<QString, QString> keys;
        for (QAction* menu : frame->menuBar()->actions())
            for (QAction* action : menu->menu()->actions())
                keys[action->text()] = action->shortcut().toString(QKeySequence::PortableText);
        QCOMPARE(keys["as Icons"], QStringLiteral("Ctrl+1"));
        QCOMPARE(keys["as Peek"], QStringLiteral("Ctrl+4"));
        QCOMPARE(keys["Back"], QStringLiteral("Ctrl+["));
        QCOMPARE(keys["Forward"], QStringLiteral("Ctrl+]"));
        QCOMPARE(keys["Enclosing Folder"], QStringLiteral("Ctrl+Up"));
        QCOMPARE(keys["Computer"], QStringLiteral("Ctrl+Shift+C"));
        QCOMPARE(keys["Split View Right"], QStringLiteral("Ctrl+D"));
        QCOMPARE(keys["Split View Down"], QStringLiteral("Ctrl+Shift+D"));
        QCOMPARE(keys["Close Split"], QStringLiteral("Ctrl+Shift+W"));
        QCOMPARE(keys["Link Panes (Cable)"], QStringLiteral("Ctrl+Alt+L"));
        QCOMPARE(keys["Refresh"], QStringLiteral("Ctrl+R"));

        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));
        frame->activateWindow();
        QTest::keyClick(frame.get(), Qt::Key_3, Qt::ControlModifier);
        QCOMPARE(frame->activePane()->currentMode(), ViewMode::Column);
        QTest::keyClick(frame.get(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(frame->panes().size(), size_t(2));
    }
};

BRONDEL_GUI_TEST_MAIN(BrowserFrameTest)
#include "browser_frame_test.moc"
