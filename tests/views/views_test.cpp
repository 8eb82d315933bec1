// The list and column sources: rows with favourites and recent folders above the
// folder's own, headers never selectable, children read lazily in the background, and
// size texts refreshed when sizes arrive.

#include "../window/gui_test_main.h"
#include "fs/fmt.h"
#include "fs/folder_diff.h"
#include "support/temp_tree.h"
#include "views/column_view.h"
#include "views/content_view.h"
#include "views/list_size_cell.h"
#include "views/list_view.h"
#include "views/row_info_cache.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_notifier.h"

#include <QAccessible>
#include <QApplication>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QUrl>

#include <filesystem>

namespace {

DirNodePtr scanned(const std::string& path)
{
    return Scanner(BrondelSettings{}).scan(path, 1);
}

QStringList texts(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    QStringList out;
    for (int row = 0; row < model.rowCount(parent); ++row)
        out << model.index(row, 0, parent).data().toString();
    return out;
}

// A folder with five children and two favourites sections of three entries each, the
// second followed by the Recent section.
struct Fixture {
    TempTree tree;
    TestContext t;
    DirNodePtr root;

    Fixture()
    {
        // Folder sizes arrive in the background at their own pace: rows here show file
        // sizes only, so their texts do not depend on when a walk ends.
        t.settings.infoOn["folder-size"] = false;
        for (const char* name : {"a", "b", "c"})
            tree.dir(std::string("root/") + name);
        tree.file("root/d.txt", "12345");
        tree.file("root/e.txt");
        tree.file("root/a/inner.txt");
        root = scanned(tree.path("root"));
        t.headers = {testHeader("Work", "pinned:/Work", {"/w1", "/w2", "/w3"}, 0.58),
            testHeader("Play", "pinned:/Play", {"/p1", "/p2", "/p3"}),
            testHeader("Recent", "pinned://Recent", {"/r1"}, 0.1)};
    }
};

// Counts the row texts the browser asks for.
class CountingColumns : public ColumnSource {
public:
    CountingColumns(DirNodePtr root, const BrowserContext& context)
        : ColumnSource(std::move(root), {}, context)
    {
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role == Qt::DisplayRole)
            ++texts;
        return ColumnSource::data(index, role);
    }
    mutable int texts = 0;
};

// A list that counts the size texts the view asks for.
class CountingList : public ListSource {
public:
    using ListSource::ListSource;
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role == Qt::DisplayRole && index.column() == ListSource::Size)
            ++sizeTexts;
        return ListSource::data(index, role);
    }
    mutable int sizeTexts = 0;
};

// The list of the fixture's folder, shown with a viewport `width` wide.
std::unique_ptr<BrondelOutlineView> shownList(Fixture& f, const ContentHooks& hooks, int width)
{
    auto view = std::make_unique<BrondelOutlineView>(new ListSource(f.root, {}, f.t.context), f.t.context, hooks);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->resize(width + 2 * view->frameWidth(), 300);
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get()))
        return nullptr;
    return view;
}

// The outline of `source`, shown 600 x 400.
std::unique_ptr<BrondelOutlineView> shownOutline(ListSource* source, TestContext& t, const ContentHooks& hooks = {})
{
    auto view = std::make_unique<BrondelOutlineView>(source, t.context, hooks);
    view->resize(600, 400);
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get()))
        return nullptr;
    return view;
}

// The names on the outline's visible rows, top to bottom.
QString shownNames(const BrondelOutlineView& view)
{
    QStringList names;
    for (const QModelIndex& index : view.visibleRows())
        names << index.data().toString();
    return names.join(' ');
}

} // namespace

class ViewsTest : public QObject {
    Q_OBJECT
private slots:
    void columnRootListsHeadersEntriesThenChildren()
    {
        Fixture f;
        ColumnSource source(f.root, f.t.headers, f.t.context);
        QStringList rows = texts(source);
        QCOMPARE(rows.size(), 2 + 6 + 2 + 5); // headers with entries, recent, children
        QCOMPARE(rows.mid(0, 4), (QStringList{"Work", "w1", "w2", "w3"}));
        QCOMPARE(rows[8], QStringLiteral("Recent"));
        QCOMPARE(rows[9], QStringLiteral("r1"));
        QCOMPARE(rows.mid(10, 3), (QStringList{"a", "b", "c"}));
        QCOMPARE(rows[13], QStringLiteral("d.txt  (5 B)")); // name, two spaces, info
        QVERIFY(!source.hasChildren(source.index(0, 0))); // a header is a leaf here
        QVERIFY(!source.hasChildren(source.index(13, 0))); // so is a file
        QVERIFY(source.hasChildren(source.index(10, 0)));   // a folder, not yet read
    }

    void listRootShowsHeadersAsGroupRows()
    {
        Fixture f;
        ListSource source(f.root, f.t.headers, f.t.context);
        QStringList rows = texts(source);
        QCOMPARE(rows, (QStringList{"Work", "Play", "Recent", "a", "b", "c", "d.txt", "e.txt"}));
        QModelIndex work = source.index(0, 0);
        QCOMPARE(texts(source, work), (QStringList{"w1", "w2", "w3"}));
        QCOMPARE(source.index(3, ListSource::Kind).data().toString(), QStringLiteral("Folder"));
        QCOMPARE(source.index(6, ListSource::Size).data().toString(), QStringLiteral("5 B"));
        QVERIFY(!source.index(0, ListSource::Date).data().isValid()); // headers span the row
        QColor tint = work.data(Qt::ForegroundRole).value<QColor>();
        QCOMPARE(tint.hueF(), 0.58f);
    }

    void headersAreNeverSelectable()
    {
        Fixture f;
        auto* source = new ListSource(f.root, f.t.headers, f.t.context);
        BrondelOutlineView view(source, f.t.context, {});
        view.resize(600, 400);
        view.show();
        view.selectAll();
        const QModelIndexList selected = view.selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 5); // the folder's own rows only
        for (const QModelIndex& index : selected)
            QVERIFY(!source->nodeAt(index)->isSectionHeader);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(source->index(0, 0)).center());
        QVERIFY(!view.selectionModel()->isSelected(source->index(0, 0)));

        auto* columns = new ColumnSource(f.root, f.t.headers, f.t.context);
        BrondelBrowser browser(columns, f.t.context, {});
        browser.resize(600, 400);
        browser.show();
        browser.selectAll();
        for (const QModelIndex& index : browser.selectionModel()->selectedIndexes())
            QVERIFY(!columns->nodeAt(index)->isSectionHeader);
    }

    void childrenArriveFromTheBackground()
    {
        Fixture f;
        ListSource source(f.root, {}, f.t.context);
        QModelIndex a = source.index(0, 0);
        QCOMPARE(source.nodeAt(a)->name, std::string("a"));
        QVERIFY(source.hasChildren(a));
        QCOMPARE(source.rowCount(a), 0);
        QVERIFY(source.canFetchMore(a));
        source.fetchMore(a);
        source.fetchMore(a); // asked twice, read once
        QCOMPARE(f.t.scans.count(), size_t(1));
        QSignalSpy inserted(&source, &QAbstractItemModel::rowsInserted);
        f.t.scans.finishAll();
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(texts(source, a), QStringList{"inner.txt"});
        QVERIFY(source.nodeAt(a)->childrenLoaded);
        QVERIFY(!source.canFetchMore(a));

        // An empty folder expands to no rows, but still shows its disclosure first.
        QModelIndex b = source.index(1, 0);
        QVERIFY(source.hasChildren(b));
        source.fetchMore(b);
        f.t.scans.finishAll();
        QCOMPARE(source.rowCount(b), 0);
    }

    void expandingInTheOutlineReadsTheFolder()
    {
        Fixture f;
        auto* source = new ListSource(f.root, {}, f.t.context);
        BrondelOutlineView view(source, f.t.context, {});
        view.show();
        view.expand(source->index(0, 0));
        QTRY_COMPARE(f.t.scans.count(), size_t(1));
        f.t.scans.finishAll();
        QCOMPARE(source->rowCount(source->index(0, 0)), 1);
    }

    void namesComeFirstThenSizesAndTheSortBySize()
    {
        Fixture f;
        f.t.settings.sortBy = "size";
        DirNodePtr root = ScanService::scanListing(f.tree.path("root"), f.t.settings);
        ListSource source(root, {}, f.t.context);
        // Shown at once in name order (folders first), the sizes still being read.
        QCOMPARE(texts(source), (QStringList{"a", "b", "c", "d.txt", "e.txt"}));
        QVERIFY(source.sortPending());
        QCOMPARE(source.headerData(ListSource::Size, Qt::Horizontal, Qt::DisplayRole).toString(),
            QStringLiteral("Size \u2026"));
        QPersistentModelIndex e = source.index(4, 0);
        QSignalSpy reordered(&source, &QAbstractItemModel::layoutChanged);
        QTRY_VERIFY(!source.metaPending());
        // Then by size, smallest first, in one reorder; a kept index follows its row.
        QCOMPARE(reordered.count(), 1);
        QCOMPARE(texts(source), (QStringList{"a", "b", "c", "e.txt", "d.txt"}));
        QCOMPARE(e.row(), 3);
        QCOMPARE(source.index(4, ListSource::Size).data().toString(), QStringLiteral("5 B"));
        QVERIFY(!source.index(4, ListSource::Date).data().toString().isEmpty());
        QCOMPARE(source.headerData(ListSource::Size, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Size"));
        QCOMPARE(source.nodeAt(source.index(4, 0))->path, f.tree.path("root/d.txt"));
    }

    void aSortChangedWhileSizesArriveStillSorts()
    {
        // The order is made again with the settings of the moment: a key changed to one
        // the folder was not shown for (kind) is sorted by too.
        Fixture f;
        f.t.settings.sortBy = "size";
        DirNodePtr root = ScanService::scanListing(f.tree.path("root"), f.t.settings);
        ListSource source(root, {}, f.t.context);
        QCOMPARE(source.rowCount(), 5);
        QVERIFY(source.sortPending());
        f.t.settings.sortBy = "kind";
        f.t.settings.ascending = false;
        QTRY_VERIFY(!source.metaPending());
        QCOMPARE(texts(source), (QStringList{"a", "b", "c", "d.txt", "e.txt"})); // ties by name
    }

    void sizeTextsRefreshWhenSizesArrive()
    {
        Fixture f;
        // The list draws its rows again (no per-row notification: a million rows would be
        // a million of them), asking for every visible size text.
        auto* source = new CountingList(f.root, {}, f.t.context);
        BrondelOutlineView view(source, f.t.context, {});
        view.resize(600, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QTRY_VERIFY(source->sizeTexts > 0);
        QTest::qWait(50);
        source->sizeTexts = 0;
        emit InfoNotifier::instance().brondelInfoChanged();
        QTRY_VERIFY(source->sizeTexts >= 5);

        // The columns redraw their rows, asking for every row text again.
        auto* columns = new CountingColumns(f.root, f.t.context);
        BrondelBrowser browser(columns, f.t.context, {});
        browser.resize(600, 400);
        browser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&browser));
        QTRY_VERIFY(columns->texts > 0);
        QTest::qWait(50);
        columns->texts = 0;
        emit InfoNotifier::instance().brondelInfoChanged();
        QTRY_VERIFY(columns->texts >= 5);
    }

    void realFolderSizesReachTheVisibleRows()
    {
        TempTree tree;
        tree.sized("root/big/one.bin", 3000);
        tree.sized("root/big/deeper/two.bin", 4000);
        TestContext t; // every info module on
        auto* source = new CountingList(scanned(tree.path("root")), {}, t.context);
        BrondelOutlineView view(source, t.context, {});
        view.resize(600, 400);
        view.show(); // drawing the row asks for the size, which starts the walk
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        // The row's text is computed in the background and announced; so is the walk's end,
        // which makes the view ask again for the rows on screen.
        const QModelIndex big = source->index(0, ListSource::Size);
        QTRY_VERIFY_WITH_TIMEOUT(source->sizeTexts > 1, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(FolderSizes::shared().size(tree.path("root/big")).has_value(), 10000);
        auto size = FolderSizes::shared().size(tree.path("root/big"));
        QVERIFY(*size >= 7000);
        QTRY_COMPARE(big.data().toString(), QString::fromStdString(fmtHuman(*size)));
    }

    void sizeCellOfAFileAndAHeader()
    {
        Fixture f;
        SizeCellContent file = listSizeCellFill(*f.root->children[3], f.t.settings);
        QVERIFY(!file.fraction);
        QCOMPARE(file.text, QStringLiteral("5 B"));
        SizeCellContent header = listSizeCellFill(*f.t.headers[0], f.t.settings);
        QVERIFY(header.text.isEmpty());
    }

    void doubleClickOpensFoldersAndFiles()
    {
        Fixture f;
        std::vector<std::string> folders, files;
        ContentHooks hooks{[&](const std::string& p) { folders.push_back(p); },
            [&](const std::string& p) { files.push_back(p); }, {}, {}, {}};
        auto* source = new ListSource(f.root, f.t.headers, f.t.context);
        BrondelOutlineView view(source, f.t.context, hooks);
        emit view.activated(source->index(3, 0));
        emit view.activated(source->index(6, 0));
        emit view.activated(source->index(0, 0)); // a header: nothing
        QCOMPARE(folders, std::vector<std::string>{f.tree.path("root/a")});
        QCOMPARE(files, std::vector<std::string>{f.tree.path("root/d.txt")});
    }

    void nameTakesTheSpareWidthAndWidthsSurviveARebuild()
    {
        // Viewport width, what Name gets at least and the other columns at most.
        const int cases[][3] = {{1400, 900, 190}, {700, 220, 190}, {380, 180, 90}};
        Fixture f;
        ContentHooks hooks;
        hooks.listWidths = std::make_shared<ListColumnWidths>();
        for (const auto& [width, nameAtLeast, othersAtMost] : cases) {
            auto view = shownList(f, hooks, width);
            QHeaderView* header = view->header();
            QVERIFY2(header->sectionSize(ListSource::Name) >= nameAtLeast, qPrintable(QString::number(width)));
            int total = 0;
            for (int column = 0; column < ListSource::ColumnCount; ++column) {
                total += header->sectionSize(column);
                QVERIFY(column == ListSource::Name || header->sectionSize(column) <= othersAtMost);
            }
            QCOMPARE(total, width); // no empty space, nothing cut off at the right
        }
        // Widths the user dragged: a view built again (on navigation) keeps them.
        auto view = shownList(f, hooks, 900);
        view->header()->resizeSection(ListSource::Kind, 160);
        view->header()->resizeSection(ListSource::Name, view->header()->sectionSize(ListSource::Name) + 40);
        view = shownList(f, hooks, 900);
        QCOMPARE(view->header()->sectionSize(ListSource::Kind), 160);
        QCOMPARE(view->header()->sectionSize(ListSource::Date), 170 - 40); // Name's border moved into Date
    }

    void headerShowsTheSortAndReportsClicks()
    {
        Fixture f;
        f.t.settings.sortBy = "size";
        f.t.settings.ascending = false;
        std::vector<std::string> keys;
        ContentHooks hooks;
        hooks.sortBy = [&](const std::string& key) { keys.push_back(key); };
        auto view = shownList(f, hooks, 900);
        QHeaderView* header = view->header();
        QVERIFY(header->isSortIndicatorShown());
        QCOMPARE(header->sortIndicatorSection(), int(ListSource::Size));
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
        for (int column : {ListSource::Kind, ListSource::Name, ListSource::Date})
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                QPoint(header->sectionViewportPosition(column) + 10, header->height() / 2));
        QCOMPARE(keys, (std::vector<std::string>{"kind", "name", "date"}));

        // A folder read names first: the header says its sizes are still coming, beside
        // the indicator, until the order by size is made.
        auto* pending = new ListSource(ScanService::scanListing(f.tree.path("root"), f.t.settings), {}, f.t.context);
        BrondelOutlineView reading(pending, f.t.context, hooks);
        QCOMPARE(pending->headerData(ListSource::Size, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Size \u2026"));
        QCOMPARE(reading.header()->sortIndicatorSection(), int(ListSource::Size));
        QTRY_COMPARE(pending->headerData(ListSource::Size, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Size"));
    }

    void outlineExpandsByArrowAndKeys()
    {
        // Rows open in place below their folder, by a click on the arrow or by the keys,
        // and close again; Left on a child goes to its folder.
        Fixture f;
        auto* source = new ListSource(f.root, f.t.headers, f.t.context);
        auto shown = shownOutline(source, f.t);
        QVERIFY(shown);
        BrondelOutlineView& view = *shown;
        const QModelIndex work = source->index(0, 0);
        QVERIFY(view.visualRect(work).width() > view.header()->length() / 2); // a group row spans the columns
        const QRect arrow = view.visualRect(work);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, QPoint(arrow.left() - view.indentation() / 2, arrow.center().y()));
        QCOMPARE(shownNames(view), QStringLiteral("Work w1 w2 w3 Play Recent a b c d.txt e.txt"));
        QVERIFY(!view.selectionModel()->hasSelection()); // the arrow selects nothing

        const QModelIndex a = source->index(3, 0);
        view.setFocus();
        view.setCurrentIndex(a);
        QTest::keyClick(&view, Qt::Key_Right); // opens, reading the folder
        f.t.scans.finishAll();
        QTRY_COMPARE(shownNames(view), QStringLiteral("Work w1 w2 w3 Play Recent a inner.txt b c d.txt e.txt"));
        QTest::keyClick(&view, Qt::Key_Right); // to its first child
        QCOMPARE(view.currentIndex().data().toString(), QStringLiteral("inner.txt"));
        QTest::keyClick(&view, Qt::Key_Left); // to the folder
        QCOMPARE(view.currentIndex(), a);
        QTest::keyClick(&view, Qt::Key_Left); // closes it
        QCOMPARE(shownNames(view), QStringLiteral("Work w1 w2 w3 Play Recent a b c d.txt e.txt"));
        QTest::keyClick(&view, Qt::Key_End);
        QCOMPARE(view.currentIndex().data().toString(), QStringLiteral("e.txt"));
        view.keyboardSearch(QStringLiteral("w"));
        QCOMPARE(view.currentIndex().data().toString(), QStringLiteral("w1")); // passing the header Work
        QCOMPARE(view.selectionModel()->selectedRows().size(), 1);
        QTest::keyClick(&view, Qt::Key_Down);
        QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
        QCOMPARE(view.selectionModel()->selectedRows().size(), 2);
    }

    void outlineSelectsRangesNotRows()
    {
        // A Shift range or a rubber band over many rows is one selection range per run
        // of rows under one parent, however many rows it covers.
        TempTree tree;
        for (int i = 0; i < 2000; ++i)
            tree.file("root/f" + std::to_string(10000 + i));
        tree.dir("root/a");
        tree.file("root/a/inner.txt");
        TestContext t;
        auto* source = new ListSource(scanned(tree.path("root")), {}, t.context);
        auto shown = shownOutline(source, t);
        QVERIFY(shown);
        BrondelOutlineView& view = *shown;
        QCOMPARE(source->index(0, 0).data().toString(), QStringLiteral("a"));
        view.expand(source->index(0, 0));
        t.scans.finishAll();
        QTRY_COMPARE(view.rowMap().rowCount(), 2002);
        const QModelIndex first = source->index(1, 0);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(first).center());
        const QModelIndex last = source->index(2000, 0);
        view.scrollTo(last);
        QVERIFY(view.viewport()->rect().contains(view.visualRect(last).center()));
        QCOMPARE(view.indexAt(view.visualRect(last).center()), last);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, view.visualRect(last).center());
        QCOMPARE(view.selectionModel()->selection().size(), 1);
        QCOMPARE(view.selectionModel()->selectedRows().size(), 2000);

        view.scrollTo(source->index(0, 0));
        view.selectAll(); // the folder, its child, and the files after it
        QCOMPARE(view.selectionModel()->selection().size(), 3);
        QVERIFY(view.selectionModel()->isSelected(source->index(0, 0, source->index(0, 0))));
    }

    void outlineOpensAFolderHoveredDuringADrag()
    {
        Fixture f;
        ContentHooks hooks;
        hooks.drop = [](std::vector<std::string>, std::string) {};
        auto* source = new ListSource(f.root, {}, f.t.context);
        auto shown = shownOutline(source, f.t, hooks);
        QVERIFY(shown);
        BrondelOutlineView& view = *shown;
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(f.tree.path("root/e.txt")))});
        const QPoint over = view.visualRect(source->index(1, 0)).center(); // folder "b"
        QDragEnterEvent enter(over, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &enter);
        QDragMoveEvent move(over, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &move);
        QVERIFY(!view.isExpanded(source->index(1, 0)));
        QTRY_VERIFY_WITH_TIMEOUT(view.isExpanded(source->index(1, 0)), 3000);
        QDragLeaveEvent leave;
        QApplication::sendEvent(view.viewport(), &leave);
    }

    void outlineTellsAssistiveTechnologyItsRows()
    {
        Fixture f;
        auto* source = new ListSource(f.root, f.t.headers, f.t.context);
        auto shown = shownOutline(source, f.t);
        QVERIFY(shown);
        BrondelOutlineView& view = *shown;
        QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&view);
        QVERIFY(tree && tree->tableInterface());
        QCOMPARE(tree->role(), QAccessible::Tree);
        QAccessibleTableInterface* table = tree->tableInterface();
        QCOMPARE(table->rowCount(), 8);
        QCOMPARE(table->columnCount(), int(ListSource::ColumnCount));
        QCOMPARE(tree->child(0)->text(QAccessible::Name), QStringLiteral("Name")); // the header first
        QCOMPARE(tree->child(0)->role(), QAccessible::ColumnHeader);
        QAccessibleInterface* a = table->cellAt(3, 0);
        QCOMPARE(a->text(QAccessible::Name), QStringLiteral("a"));
        QCOMPARE(tree->indexOfChild(a), 4 * int(ListSource::ColumnCount));
        QVERIFY(a->state().expandable && a->state().collapsed);
        QCOMPARE(table->cellAt(6, ListSource::Size)->text(QAccessible::Name), QStringLiteral("5 B"));
        view.expand(source->index(0, 0));
        QCOMPARE(table->rowCount(), 11);
        QAccessibleInterface* work = table->cellAt(0, 0);
        QVERIFY(work->state().expanded && !work->state().selectable);
        view.selectionModel()->select(source->index(4, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QCOMPARE(table->selectedRows(), QList<int>{7}); // "b", below the three entries of Work
        QVERIFY(table->cellAt(7, 1)->tableCellInterface()->isSelected());
    }
    void outlineKeepsOpenedFoldersWhenTheFolderChanges()
    {
        // The shown folder read again: rows come and go in one layout change, and the
        // opened folder stays open around its row, the selection following its rows.
        Fixture f;
        DirNodePtr before = ScanService::scanListing(f.tree.path("root"), f.t.settings);
        auto* source = new ListSource(before, {}, f.t.context);
        auto shown = shownOutline(source, f.t);
        QVERIFY(shown);
        BrondelOutlineView& view = *shown;
        view.expand(source->index(1, 0)); // b, empty
        view.expand(source->index(0, 0)); // a
        f.t.scans.finishAll();
        QTRY_COMPARE(shownNames(view), QStringLiteral("a inner.txt b c d.txt e.txt"));
        view.selectionModel()->select(source->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        f.tree.file("root/b0.txt");
        std::filesystem::remove(f.tree.path("root/c"));
        DirNodePtr fresh = ScanService::scanListing(f.tree.path("root"), f.t.settings);
        QVERIFY(contentViewApplyFresh(&view, fresh, folderDiff(before->store->root(), fresh->store->root())));
        QCOMPARE(shownNames(view), QStringLiteral("a inner.txt b b0.txt d.txt e.txt"));
        QVERIFY(view.rowMap().isConsistent());
        QCOMPARE(view.rowMap().expandedCount(), 2);
        const QModelIndexList selected = view.selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(selected[0].data().toString(), QStringLiteral("d.txt"));

        // Gone with its folder: an opened folder whose row left drops out with its rows.
        std::filesystem::remove_all(f.tree.path("root/a"));
        DirNodePtr after = ScanService::scanListing(f.tree.path("root"), f.t.settings);
        QVERIFY(contentViewApplyFresh(&view, after, folderDiff(fresh->store->root(), after->store->root())));
        QCOMPARE(shownNames(view), QStringLiteral("b b0.txt d.txt e.txt"));
        QVERIFY(view.rowMap().isConsistent());
        QCOMPARE(view.rowMap().expandedCount(), 1);
    }
};

BRONDEL_GUI_TEST_MAIN(ViewsTest)
#include "views_test.moc"
