// Peek mode: the style bar follows the saved order and the remembered style, Rearrange
// saves only on Done; every style drills two levels down and back with the keys; a
// large folder ends in a "+ N more" plate; hidden entries never show; plates speak.

#include "../window/gui_test_main.h"
#include "config/config_file.h"
#include "config/lab_variant.h"
#include "config/peek_order.h"
#include "fs/file_io.h"
#include "support/temp_tree.h"
#include "views/peek/peek_mode_view.h"

#include <QAbstractAnimation>
#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QPushButton>
#include <QTabBar>

#include <memory>

namespace {

QStringList tabTexts(const QTabBar* bar)
{
    QStringList out;
    for (int i = 0; bar && i < bar->count(); ++i)
        out << bar->tabText(i);
    return out;
}

QStringList titles(const std::vector<const LabVariant*>& styles)
{
    QStringList out;
    for (const LabVariant* style : styles)
        out << QString::fromStdString(style->title());
    return out;
}

std::optional<std::string> fileText(const std::string& path)
{
    return fileReadAll(path);
}

QStringList plateNames(const PeekPlateGrid* grid)
{
    QStringList out;
    for (int i = 0; grid && i < grid->count(); ++i)
        out << grid->plate(i)->accessibleName();
    return out;
}

// root/{a/{b/{deep.txt}, .secret/, y.txt}, m.txt, .hidden}
struct Tree {
    TempTree tree;
    std::string root;
    Tree()
    {
        tree.file("root/a/b/deep.txt", "x");
        tree.file("root/a/y.txt");
        tree.dir("root/a/.secret");
        tree.file("root/m.txt", "123");
        tree.file("root/.hidden");
        root = tree.path("root");
    }
};

struct Shell {
    TestContext t;
    std::vector<std::string> opened;
    std::vector<std::string> listed;
    int orderChanged = 0;
    std::unique_ptr<PeekModeView> view;

    explicit Shell(const std::string& root)
    {
        PeekSetup setup{root, false, t.context, {}};
        setup.hooks.openFile = [this](const std::string& path) { opened.push_back(path); };
        setup.hooks.showInList = [this](const std::string& path) { listed.push_back(path); };
        setup.hooks.peekOrderChanged = [this] { ++orderChanged; };
        view = std::make_unique<PeekModeView>(setup);
        view->resize(900, 600);
        view->show();
    }
};

// The style `key` shown on `setup`'s folder, its first level loaded (null: no such style).
std::unique_ptr<PeekStyleView> shownStyle(const QString& key, const PeekSetup& setup)
{
    std::unique_ptr<PeekStyleView> style(peekStyleMake(key.toStdString(), setup));
    if (!style)
        return style;
    style->resize(900, 600);
    style->show();
    style->start();
    if (!QTest::qWaitFor([&] { return style->levelCount() == 1; }))
        return nullptr;
    return style;
}

} // namespace

class PeekModeViewTest : public QObject {
    Q_OBJECT
private slots:
    void barFollowsTheOrderAndTheRememberedStyle_data()
    {
        QTest::addColumn<QStringList>("saved");
        QTest::addColumn<QString>("remembered");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("selected");
        QTest::newRow("defaults") << QStringList{} << QString() << "Columns Drill" << "Columns Drill";
        QTest::newRow("saved first") << QStringList{"Conveyor", "Rail Drill"} << "Rail Drill" << "Conveyor"
                                     << "Rail Drill";
        QTest::newRow("unknown remembered") << QStringList{"Card Stack"} << "Nope" << "Card Stack" << "Card Stack";
    }

    void barFollowsTheOrderAndTheRememberedStyle()
    {
        QFETCH(QStringList, saved);
        QFETCH(QString, remembered);
        QFETCH(QString, first);
        QFETCH(QString, selected);
        std::vector<std::string> names;
        for (const QString& name : saved)
            names.push_back(name.toStdString());
        QVERIFY(peekOrderSave(names));
        peekStyleSetCurrent(remembered.toStdString());
        Tree tree;
        Shell shell(tree.root);
        QTRY_VERIFY(shell.view->bar());
        QCOMPARE(tabTexts(shell.view->bar()), titles(peekOrderedTypes()));
        QCOMPARE(shell.view->bar()->count(), 11);
        QCOMPARE(shell.view->bar()->tabText(0), first);
        QCOMPARE(shell.view->bar()->tabText(shell.view->bar()->currentIndex()), selected);
        QVERIFY(shell.view->styleView());
        QCOMPARE(QString::fromStdString(shell.view->currentStyle()->title()), selected);

        // Another segment: drawn in that style and remembered at once.
        const int other = shell.view->bar()->currentIndex() == 3 ? 4 : 3;
        shell.view->bar()->setCurrentIndex(other);
        const QString title = shell.view->bar()->tabText(other);
        QCOMPARE(QString::fromStdString(shell.view->currentStyle()->title()), title);
        QCOMPARE(shell.view->styleView()->objectName().toStdString(), shell.view->currentStyle()->key());
        shell.t.edits.waitForDone();
        QTRY_COMPARE(peekStyleCurrent(), std::optional(title.toStdString()));
    }

    void rearrangeCancelWritesNothingDoneSavesAndTellsTheMenus()
    {
        const std::string file = peekOrderPath();
        QVERIFY(peekOrderSave({"Peek Tabs"}));
        const std::optional<std::string> before = fileText(file);
        QVERIFY(before);
        Tree tree;
        Shell shell(tree.root);
        QTRY_VERIFY(shell.view->bar());
        const QStringList order = tabTexts(shell.view->bar());
        QCOMPARE(order.first(), "Peek Tabs");

        shell.view->rearrangeEnter();
        QVERIFY(shell.view->rearranging());
        QVERIFY(!shell.view->findChild<QPushButton*>("peekRearrange")->isVisibleTo(shell.view.get()));
        QVERIFY(shell.view->findChild<QPushButton*>("peekDone")->isVisibleTo(shell.view.get()));
        QCOMPARE(tabTexts(shell.view->reorderBar()), order);
        QVERIFY(shell.view->reorderBar()->isMovable());
        shell.view->reorderBar()->moveTab(0, 5);
        shell.view->rearrangeCancel();
        QVERIFY(!shell.view->rearranging());
        QCOMPARE(tabTexts(shell.view->bar()), order);
        QVERIFY(shell.view->findChild<QPushButton*>("peekRearrange")->isVisibleTo(shell.view.get()));
        shell.t.edits.waitForDone();
        QCoreApplication::processEvents();
        QCOMPARE(fileText(file), before);
        QCOMPARE(shell.orderChanged, 0);

        shell.view->rearrangeEnter();
        shell.view->reorderBar()->moveTab(4, 0);
        QStringList expected = order;
        expected.move(4, 0);
        QSignalSpy saved(shell.view.get(), &PeekModeView::orderSaved);
        shell.view->rearrangeDone();
        QTRY_COMPARE(saved.count(), 1);
        std::vector<std::string> names;
        for (const QString& name : expected)
            names.push_back(name.toStdString());
        QCOMPARE(fileText(file), std::optional(peekOrderFormat(names)));
        QCOMPARE(tabTexts(shell.view->bar()), expected);
        QCOMPARE(shell.orderChanged, 1);
        QVERIFY(!shell.view->rearranging());
    }

    void everyStyleDrillsTwoLevelsAndClimbsBack_data()
    {
        QTest::addColumn<QString>("key");
        for (const LabVariant* style : labVariantTypes())
            QTest::newRow(style->key().c_str()) << QString::fromStdString(style->key());
    }

    void everyStyleDrillsTwoLevelsAndClimbsBack()
    {
        QFETCH(QString, key);
        Tree tree;
        TestContext t;
        std::vector<std::string> opened;
        PeekSetup setup{tree.root, false, t.context, {}};
        setup.hooks.openFile = [&opened](const std::string& path) { opened.push_back(path); };
        std::unique_ptr<PeekStyleView> style = shownStyle(key, setup);
        QVERIFY2(style, "every registered style can be drawn and shows its first level");
        QCOMPARE(plateNames(style->grid(0)), (QStringList{"a", "m.txt"}));

        // Down two levels: Enter on the first plate each time.
        QTest::keyClick(style.get(), Qt::Key_Return);
        QTRY_COMPARE(style->currentFolder(), tree.root + "/a");
        QCOMPARE(plateNames(style->grid(style->focusLevel())), (QStringList{"b", "y.txt"}));
        QTest::keyClick(style.get(), Qt::Key_Enter);
        QTRY_COMPARE(style->currentFolder(), tree.root + "/a/b");
        QCOMPARE(style->levelCount(), 3);
        // A file opens in its application and changes nothing here.
        QTest::keyClick(style.get(), Qt::Key_Return);
        QCOMPARE(opened, std::vector<std::string>{tree.root + "/a/b/deep.txt"});
        QCOMPARE(style->currentFolder(), tree.root + "/a/b");

        // Back up: Backspace, then Ctrl+[.
        QTest::keyClick(style.get(), Qt::Key_Backspace);
        QCOMPARE(style->currentFolder(), tree.root + "/a");
        QTest::keyClick(style.get(), Qt::Key_BracketLeft, Qt::ControlModifier);
        QCOMPARE(style->currentFolder(), tree.root);
        QCOMPARE(style->levelCount(), 1);
        QTest::keyClick(style.get(), Qt::Key_Backspace); // nothing above the pane's folder
        QCOMPARE(style->currentFolder(), tree.root);

        // The arrows move the current plate: the second one is a file.
        QTest::keyClick(style.get(), Qt::Key_Right);
        QCOMPARE(style->grid(0)->current(), 1);
        QTest::keyClick(style.get(), Qt::Key_Right); // past the end: stays
        QCOMPARE(style->grid(0)->current(), 1);
        QTest::keyClick(style.get(), Qt::Key_Left);
        QCOMPARE(style->grid(0)->current(), 0);
        // A press on a plate opens it as a click does, and a stale read is dropped.
        style->openItem(0, 0);
        style->climbTo(0); // before the read of "a" arrives
        t.scans.waitForDone();
        QTest::qWait(20);
        QCoreApplication::processEvents();
        QCOMPARE(style->levelCount(), 1);
        QTest::mouseClick(style->grid(0)->plate(0), Qt::LeftButton);
        QTRY_COMPARE(style->currentFolder(), tree.root + "/a");
    }

    void animationFlagsStretchOrSkipTheMotion_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("slow");
        QTest::addColumn<bool>("noAnim");
        QTest::addColumn<int>("longest"); // ms of the longest animation running after Enter; 0: none
        QTest::newRow("card stack") << "card-stack" << false << false << 280;
        QTest::newRow("card stack, slow") << "card-stack" << true << false << 6 * 280;
        QTest::newRow("popover") << "popover-chain" << false << false << 200;
        QTest::newRow("popover, slow") << "popover-chain" << true << false << 6 * 200;
        QTest::newRow("popover, no-anim") << "popover-chain" << false << true << 0;
        QTest::newRow("popover, both") << "popover-chain" << true << true << 0;
    }

    void animationFlagsStretchOrSkipTheMotion()
    {
        QFETCH(QString, key);
        QFETCH(bool, slow);
        QFETCH(bool, noAnim);
        QFETCH(int, longest);
        Tree tree;
        TestContext t;
        t.context.animate = true;
        t.context.peekSlow = slow;
        t.context.peekNoAnim = noAnim;
        std::unique_ptr<PeekStyleView> style = shownStyle(key, {tree.root, false, t.context, {}});
        QVERIFY(style);
        QTest::keyClick(style.get(), Qt::Key_Return);
        QTRY_COMPARE(style->levelCount(), 2);
        int running = 0;
        for (const QAbstractAnimation* animation : style->findChildren<QAbstractAnimation*>())
            running = std::max(running, animation->totalDuration());
        QCOMPARE(running, longest);
        // Escape closes the popover chain's last popover; other styles keep their level.
        QTest::keyClick(style.get(), Qt::Key_Escape);
        QCOMPARE(style->levelCount(), key == "popover-chain" ? 1 : 2);
    }

    void eachStyleHasItsOwnWayBack_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("control"); // what is pressed: a button's text, "tab" or "rail"
        QTest::addColumn<int>("levelsAfter");
        QTest::newRow("breadcrumb") << "zoom-fill" << "root" << 1;
        QTest::newRow("card behind") << "card-stack" << "root" << 1;
        QTest::newRow("rail stop") << "rail-drill" << "rail" << 1;
        QTest::newRow("back button") << "zoom-open" << "\u2039 Back" << 2;
        QTest::newRow("closing a tab") << "peek-tabs" << "tab" << 1;
    }

    void eachStyleHasItsOwnWayBack()
    {
        QFETCH(QString, key);
        QFETCH(QString, control);
        QFETCH(int, levelsAfter);
        Tree tree;
        TestContext t;
        std::unique_ptr<PeekStyleView> style = shownStyle(key, {tree.root, false, t.context, {}});
        QVERIFY(style);
        QTest::keyClick(style.get(), Qt::Key_Return);
        QTRY_COMPARE(style->levelCount(), 2);
        QTest::keyClick(style.get(), Qt::Key_Return);
        QTRY_COMPARE(style->levelCount(), 3);
        if (control == "tab") {
            auto* tabs = style->findChild<QTabBar*>();
            QCOMPARE(tabTexts(tabs), (QStringList{"root", "a", "b"}));
            tabs->setCurrentIndex(0); // switching keeps every tab open
            QCOMPARE(style->currentFolder(), tree.root);
            QCOMPARE(style->levelCount(), 3);
            tabs->setCurrentIndex(2);
            emit tabs->tabCloseRequested(1); // closing one closes those after it
            QCOMPARE(tabTexts(tabs), QStringList{"root"});
        } else if (control == "rail") {
            PeekPlate* stop = nullptr;
            for (PeekPlate* plate : style->findChildren<PeekPlate*>())
                if (plate->accessibleName() == "root" && plate->height() == PeekPlate::kSmallHeight)
                    stop = plate;
            QVERIFY(stop);
            stop->click();
        } else {
            // Waited for: a style may show its control once the level's animation ends.
            auto find = [&]() -> QAbstractButton* {
                QAbstractButton* button = nullptr;
                for (QAbstractButton* candidate : style->findChildren<QAbstractButton*>())
                    if (candidate->text() == control && !candidate->isHidden() && candidate->isEnabled())
                        button = candidate;
                return button;
            };
            QTRY_VERIFY(find() != nullptr);
            find()->click();
        }
        QCOMPARE(style->levelCount(), levelsAfter);
        QCOMPARE(style->currentFolder(), levelsAfter == 1 ? tree.root : tree.root + "/a");

        // In every style a plate of an earlier level opens in place of the deeper ones.
        QTest::keyClick(style.get(), Qt::Key_Return);
        QTRY_COMPARE(style->levelCount(), levelsAfter + 1);
        style->grid(0)->plate(0)->click();
        QTRY_COMPARE(style->currentFolder(), tree.root + "/a");
        QCOMPARE(style->levelCount(), 2);
    }

    void largeFolderEndsInAMorePlateThatOpensTheList()
    {
        TempTree tree;
        for (int i = 0; i < 230; ++i)
            tree.file("big/f" + std::to_string(1000 + i));
        tree.file("big/.dot");
        Shell shell(tree.path("big"));
        QTRY_VERIFY(shell.view->styleView() && shell.view->styleView()->levelCount() == 1);
        PeekPlateGrid* grid = shell.view->styleView()->grid(0);
        QCOMPARE(grid->count(), int(PeekStyleView::kLimit));
        QVERIFY(grid->morePlate());
        QCOMPARE(grid->morePlate()->text(), "+ 30 more");
        QTest::mouseClick(grid->morePlate(), Qt::LeftButton);
        QCOMPARE(shell.listed, std::vector<std::string>{tree.path("big")});
    }

    void platesSpeakTheirNameAndLineAndPress()
    {
        Tree tree;
        Shell shell(tree.root);
        QTRY_VERIFY(shell.view->styleView() && shell.view->styleView()->levelCount() == 1);
        PeekPlate* plate = shell.view->styleView()->grid(0)->plate(1);
        QCOMPARE(plate->accessibleName(), "m.txt");
        QCOMPARE(plate->accessibleDescription(), "3 B");
        QCOMPARE(shell.view->styleView()->grid(0)->plate(0)->accessibleDescription(), "2 items"); // .secret not counted
        QAccessibleInterface* speaker = QAccessible::queryAccessibleInterface(plate);
        QVERIFY(speaker);
        QCOMPARE(speaker->role(), QAccessible::Button);
        QCOMPARE(speaker->text(QAccessible::Name), "m.txt");
        QVERIFY(speaker->actionInterface());
        QVERIFY(speaker->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
        speaker->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(shell.opened, std::vector<std::string>{tree.root + "/m.txt"});
    }

    void aNarrowerViewFlowsThePlatesAgain()
    {
        Tree tree;
        for (int i = 0; i < 9; ++i)
            tree.tree.file("root/n" + std::to_string(i));
        peekStyleSetCurrent("Drill Down");
        Shell shell(tree.root);
        QTRY_VERIFY(shell.view->styleView() && shell.view->styleView()->levelCount() == 1);
        PeekPlateGrid* grid = shell.view->styleView()->grid(0);
        QTRY_VERIFY(grid->columns() >= 4);
        const int wide = grid->columns();
        shell.view->resize(420, 600);
        QTRY_VERIFY(grid->columns() < wide);
        QVERIFY(grid->plate(grid->columns())->y() > grid->plate(0)->y()); // the next row
    }
};

BRONDEL_GUI_TEST_MAIN(PeekModeViewTest)
#include "peek_mode_view_test.moc"
