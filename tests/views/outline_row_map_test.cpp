// The outline's row map against a brute-force walk of the model: after every change
// (expand, collapse, rows inserted, removed or moved under any parent, a reorder, a
// row gone in a layout change, a reset) each visible row maps to the model's row the
// walk finds there and back, and the map's own invariant holds.

#include "support/test_env.h"
#include "views/outline_input.h"
#include "views/outline_row_map.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QTest>

#include <functional>

namespace {

// A tree of names, parsed from "a(a1 a2(x y)) b": names starting with '#' are section
// headers (not selectable). An index carries its parent item.
class TreeModel : public QAbstractItemModel {
public:
    struct Item {
        QString name;
        Item* up = nullptr;
        std::vector<std::unique_ptr<Item>> kids;
    };

    explicit TreeModel(const QString& outline) { parse(outline, m_root); }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override
    {
        const Item* item = itemOf(parent);
        if (!item || row < 0 || row >= int(item->kids.size()) || column < 0 || column > 1)
            return {};
        return createIndex(row, column, const_cast<Item*>(item));
    }
    QModelIndex parent(const QModelIndex& index) const override
    {
        auto* up = static_cast<Item*>(index.internalPointer());
        if (!index.isValid() || up == &m_root || !up->up)
            return {};
        return createIndex(rowIn(up), 0, up->up);
    }
    int rowCount(const QModelIndex& parent = {}) const override
    {
        const Item* item = itemOf(parent);
        return item && parent.column() <= 0 ? int(item->kids.size()) : 0;
    }
    int columnCount(const QModelIndex& = {}) const override { return 2; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return role == Qt::DisplayRole && itemOf(index) ? QVariant(itemOf(index)->name) : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        if (data(index, Qt::DisplayRole).toString().startsWith('#'))
            return Qt::ItemIsEnabled;
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    }

    QModelIndex named(const QString& name) const { return name.isEmpty() ? QModelIndex() : search(name, {}); }

    void insert(const QString& parent, int row, const QStringList& names)
    {
        Item* item = itemOf(named(parent));
        beginInsertRows(named(parent), row, row + int(names.size()) - 1);
        for (const QString& name : names) {
            auto kid = std::make_unique<Item>();
            kid->name = name;
            kid->up = item;
            item->kids.insert(item->kids.begin() + row++, std::move(kid));
        }
        endInsertRows();
    }
    void remove(const QString& parent, int first, int last)
    {
        Item* item = itemOf(named(parent));
        beginRemoveRows(named(parent), first, last);
        for (int row = first; row <= last; ++row)
            m_gone.push_back(std::move(item->kids[size_t(row)])); // stale indexes may still name it
        item->kids.erase(item->kids.begin() + first, item->kids.begin() + last + 1);
        endRemoveRows();
    }
    void move(const QString& from, int first, int last, const QString& to, int row)
    {
        Item* source = itemOf(named(from));
        Item* target = itemOf(named(to));
        QVERIFY(beginMoveRows(named(from), first, last, named(to), row));
        std::vector<std::unique_ptr<Item>> moving;
        for (int r = first; r <= last; ++r)
            moving.push_back(std::move(source->kids[size_t(r)]));
        source->kids.erase(source->kids.begin() + first, source->kids.begin() + last + 1);
        if (source == target && row > last)
            row -= last - first + 1;
        for (auto& item : moving) {
            item->up = target;
            target->kids.insert(target->kids.begin() + row++, std::move(item));
        }
        endMoveRows();
    }
    // A layout change under `parent`: its rows reversed, or the row `gone` dropped
    // (the way a folder read again drops a deleted entry; indexes inside it are left as
    // they were, pointing at an item no longer in the tree).
    void relayout(const QString& parent, const QString& gone = {})
    {
        Item* item = itemOf(named(parent));
        emit layoutAboutToBeChanged();
        const int count = int(item->kids.size());
        const int goneRow = gone.isEmpty() ? -1 : named(gone).row();
        QModelIndexList from, to;
        for (const QModelIndex& index : persistentIndexList()) {
            if (index.internalPointer() != item)
                continue;
            from << index;
            if (goneRow < 0)
                to << createIndex(count - 1 - index.row(), index.column(), item);
            else if (index.row() == goneRow)
                to << QModelIndex();
            else
                to << createIndex(index.row() - (index.row() > goneRow), index.column(), item);
        }
        if (goneRow < 0) {
            std::reverse(item->kids.begin(), item->kids.end());
        } else {
            m_gone.push_back(std::move(item->kids[size_t(goneRow)]));
            item->kids.erase(item->kids.begin() + goneRow);
        }
        changePersistentIndexList(from, to);
        emit layoutChanged();
    }
    void resetTo(const QString& outline)
    {
        beginResetModel();
        for (auto& kid : m_root.kids)
            m_gone.push_back(std::move(kid));
        m_root.kids.clear();
        parse(outline, m_root);
        endResetModel();
    }

private:
    const Item* itemOf(const QModelIndex& index) const
    {
        if (!index.isValid())
            return &m_root;
        const auto* up = static_cast<const Item*>(index.internalPointer());
        return size_t(index.row()) < up->kids.size() ? up->kids[size_t(index.row())].get() : nullptr;
    }
    Item* itemOf(const QModelIndex& index) { return const_cast<Item*>(std::as_const(*this).itemOf(index)); }
    static int rowIn(const Item* item)
    {
        for (size_t i = 0; i < item->up->kids.size(); ++i)
            if (item->up->kids[i].get() == item)
                return int(i);
        return -1;
    }
    QModelIndex search(const QString& name, const QModelIndex& parent) const
    {
        for (int row = 0; row < rowCount(parent); ++row) {
            const QModelIndex at = index(row, 0, parent);
            if (at.data().toString() == name)
                return at;
            if (QModelIndex deeper = search(name, at); deeper.isValid())
                return deeper;
        }
        return {};
    }
    static void parse(const QString& outline, Item& into)
    {
        int at = 0;
        parseInto(outline, at, into);
    }
    static void parseInto(const QString& outline, int& at, Item& into)
    {
        while (at < outline.size() && outline[at] != ')') {
            if (outline[at] == ' ') {
                ++at;
                continue;
            }
            auto item = std::make_unique<Item>();
            item->up = &into;
            while (at < outline.size() && !QStringLiteral(" ()").contains(outline[at]))
                item->name += outline[at++];
            if (at < outline.size() && outline[at] == '(') {
                parseInto(outline, ++at, *item);
                ++at; // ')'
            }
            into.kids.push_back(std::move(item));
        }
    }

    Item m_root;
    std::vector<std::unique_ptr<Item>> m_gone;
};

// The map follows the model as the outline view makes it.
void follow(TreeModel& model, OutlineRowMap& map)
{
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, &model,
        [&map](const QModelIndex& parent, int first, int last) { map.rowsInserted(parent, first, last); });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &model,
        [&map](const QModelIndex& parent, int first, int last) { map.rowsRemoved(parent, first, last); });
    QObject::connect(&model, &QAbstractItemModel::rowsMoved, &model, [&map] { map.layoutChanged(); });
    QObject::connect(&model, &QAbstractItemModel::layoutChanged, &model, [&map] { map.layoutChanged(); });
    QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [&map] { map.reset(); });
}

// The visible rows by walking the whole model.
void walk(const TreeModel& model, const OutlineRowMap& map, const QModelIndex& parent, int depth,
    std::vector<std::pair<QModelIndex, int>>& out)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        out.emplace_back(index, depth);
        if (map.isExpanded(index))
            walk(model, map, index, depth + 1, out);
    }
}

// The names shown, after checking every row both ways against the walk.
QString shown(const TreeModel& model, const OutlineRowMap& map)
{
    if (!map.isConsistent())
        return QStringLiteral("<inconsistent>");
    std::vector<std::pair<QModelIndex, int>> rows;
    walk(model, map, {}, 0, rows);
    if (int(rows.size()) != map.rowCount())
        return QStringLiteral("<%1 rows, the walk finds %2>").arg(map.rowCount()).arg(rows.size());
    QStringList names;
    for (int v = 0; v < map.rowCount(); ++v) {
        const auto& [index, depth] = rows[size_t(v)];
        const OutlineRowMap::Place place = map.at(v);
        int foundDepth = -1;
        if (place.parent != index.parent() || place.row != index.row() || place.depth != depth
            || place.expanded != map.isExpanded(index) || map.visualRow(index.siblingAtColumn(1), &foundDepth) != v
            || foundDepth != depth)
            return QStringLiteral("<row %1 differs>").arg(v);
        names << index.data().toString();
    }
    if (map.at(map.rowCount()).valid() || map.at(-1).valid())
        return QStringLiteral("<rows past the end>");
    return names.join(' ');
}

const QString kTree = QStringLiteral("a(a1 a2(x y) a3) b c(c1 c2) d");

} // namespace

class OutlineRowMapTest : public QObject {
    Q_OBJECT
private slots:
    void changesKeepTheOrder()
    {
        using Change = std::function<void(TreeModel&, OutlineRowMap&)>;
        const struct {
            const char* name;
            QStringList expanded; // in this order
            Change change;
            QString after;
            int expandedAfter;
        } cases[] = {
            {"nothing expanded", {}, {}, "a b c d", 0},
            {"a folder", {"a"}, {}, "a a1 a2 a3 b c d", 1},
            {"nested", {"a", "a2", "c"}, {}, "a a1 a2 x y a3 b c c1 c2 d", 3},
            {"inside a collapsed folder: refused", {"a2"}, {}, "a b c d", 0},
            {"an empty folder", {"b"}, {}, "a b c d", 1},
            {"collapse forgets the descendants", {"a", "a2", "c"},
                [](TreeModel& m, OutlineRowMap& map) {
                    QVERIFY(map.collapse(m.named("a")));
                    QVERIFY(!map.collapse(m.named("a")));
                    QVERIFY(map.expand(m.named("a")));
                },
                "a a1 a2 a3 b c c1 c2 d", 2},
            {"rows inserted at the top", {"a", "c"}, [](TreeModel& m, OutlineRowMap&) { m.insert({}, 0, {"n"}); },
                "n a a1 a2 a3 b c c1 c2 d", 2},
            {"rows inserted inside", {"a", "a2"},
                [](TreeModel& m, OutlineRowMap&) { m.insert("a", 1, {"n1", "n2"}); },
                "a a1 n1 n2 a2 x y a3 b c d", 2},
            {"rows inserted in a collapsed folder", {"a"},
                [](TreeModel& m, OutlineRowMap& map) {
                    m.insert("c", 2, {"c3"});
                    QVERIFY(map.expand(m.named("c")));
                },
                "a a1 a2 a3 b c c1 c2 c3 d", 2},
            {"rows arrive in an expanded empty folder", {"b"},
                [](TreeModel& m, OutlineRowMap&) { m.insert("b", 0, {"b1", "b2"}); }, "a b b1 b2 c d", 1},
            {"expanded rows removed", {"a", "a2", "c"}, [](TreeModel& m, OutlineRowMap&) { m.remove({}, 0, 1); },
                "c c1 c2 d", 1},
            {"rows removed inside", {"a", "a2", "c"}, [](TreeModel& m, OutlineRowMap&) { m.remove("a", 0, 0); },
                "a a2 x y a3 b c c1 c2 d", 3},
            {"a folder moved down its level", {"a", "c"}, [](TreeModel& m, OutlineRowMap&) { m.move({}, 0, 0, {}, 3); },
                "b c c1 c2 a a1 a2 a3 d", 2},
            {"a folder moved into another", {"a", "a2", "c"},
                [](TreeModel& m, OutlineRowMap&) { m.move("a", 1, 1, "c", 0); }, "a a1 a3 b c a2 x y c1 c2 d", 3},
            {"a row moved into a collapsed folder", {"a"}, [](TreeModel& m, OutlineRowMap&) { m.move("a", 0, 0, "b", 0); },
                "a a2 a3 b c d", 1},
            {"reordered", {"a", "c"}, [](TreeModel& m, OutlineRowMap&) { m.relayout({}); }, "d c c1 c2 b a a1 a2 a3", 2},
            {"reordered inside", {"a", "a2"}, [](TreeModel& m, OutlineRowMap&) { m.relayout("a"); },
                "a a3 a2 x y a1 b c d", 2},
            {"an expanded folder gone in a layout change", {"a", "a2", "c"},
                [](TreeModel& m, OutlineRowMap&) { m.relayout({}, "a"); }, "b c c1 c2 d", 1},
            {"reset", {"a", "c"}, [](TreeModel& m, OutlineRowMap&) { m.resetTo("p q(r)"); }, "p q", 0},
        };
        for (const auto& c : cases) {
            TreeModel model(kTree);
            OutlineRowMap map(&model);
            follow(model, map);
            for (const QString& name : c.expanded) {
                map.expand(model.named(name));
                QVERIFY2(map.isConsistent(), c.name);
            }
            if (c.change)
                c.change(model, map);
            QCOMPARE(shown(model, map), c.after);
            QVERIFY2(map.expandedCount() == c.expandedAfter, c.name);
        }
    }

    void keysMoveAlongTheVisibleRows()
    {
        TreeModel model(kTree);
        OutlineRowMap map(&model);
        QVERIFY(map.expand(model.named("a"))); // a a1 a2 a3 b c d
        using Folder = OutlineMove::Folder;
        const struct {
            int from;
            OutlineKey key;
            bool folder;
            int to;
            Folder change;
        } cases[] = {
            {-1, OutlineKey::Down, false, 0, Folder::Keep}, {-1, OutlineKey::End, false, 6, Folder::Keep},
            {0, OutlineKey::Up, true, 0, Folder::Keep}, {6, OutlineKey::Down, false, 6, Folder::Keep},
            {1, OutlineKey::PageDown, false, 4, Folder::Keep}, {5, OutlineKey::PageUp, true, 2, Folder::Keep},
            {0, OutlineKey::Right, true, 1, Folder::Keep},    // expanded: to the first child
            {5, OutlineKey::Right, true, 5, Folder::Expand},  // c opens
            {2, OutlineKey::Right, true, 2, Folder::Expand},  // a2 opens
            {4, OutlineKey::Right, false, 4, Folder::Keep},   // a file
            {0, OutlineKey::Left, true, 0, Folder::Collapse}, // a closes
            {3, OutlineKey::Left, false, 0, Folder::Keep},    // a3: to its folder
            {4, OutlineKey::Left, true, 4, Folder::Keep},     // top level
        };
        for (const auto& c : cases) {
            const OutlineMove move = outlineKeyMove(map, c.from, c.key, 3, c.folder);
            QCOMPARE(move.visual, c.to);
            QVERIFY(move.folder == c.change);
        }
    }

    void typeAheadGoesOnSliceBySlice()
    {
        TreeModel model(QStringLiteral("#Head(hx) beta alpha(apple) Bravo zed"));
        OutlineRowMap map(&model);
        for (const char* name : {"#Head", "alpha"})
            QVERIFY(map.expand(model.named(name)));
        QCOMPARE(shown(model, map), QStringLiteral("#Head hx beta alpha apple Bravo zed"));
        const struct {
            const char* prefix;
            int start;
            int budget;
            int found;
        } cases[] = {
            {"b", 0, 100, 2}, {"b", 3, 100, 5}, {"BR", 0, 1, 5}, {"a", 5, 1, 3}, {"ap", 0, 2, 4},
            {"h", 0, 100, 1}, // the header passed over
            {"q", 2, 1, -1},
        };
        for (const auto& c : cases) {
            OutlineSearch search{QString::fromUtf8(c.prefix), c.start};
            int slices = 0;
            while (!search.finished(map) && slices < 100) {
                outlineSearchOn(search, map, model, c.budget);
                ++slices;
            }
            QVERIFY2(search.found == c.found, c.prefix);
            QVERIFY(search.searched <= map.rowCount());
        }
    }

    void selectionIsOneRangePerRun()
    {
        TreeModel model(QStringLiteral("#h1(h) #h2 a(a1 a2) b c d"));
        OutlineRowMap map(&model);
        for (const char* name : {"#h1", "a"})
            QVERIFY(map.expand(model.named(name)));
        QCOMPARE(shown(model, map), QStringLiteral("#h1 h #h2 a a1 a2 b c d"));
        const struct {
            int from, to;
            QString ranges;
        } cases[] = {
            {0, 8, "h|a|a1-a2|b-d"}, // the headers left out
            {4, 7, "a1-a2|b-c"},
            {2, 2, ""},
            {7, 20, "c-d"},
        };
        for (const auto& c : cases) {
            QStringList ranges;
            for (const QItemSelectionRange& range : map.selection(c.from, c.to, 1)) {
                QVERIFY(range.right() == 1 && range.left() == 0);
                const QString top = range.topLeft().data().toString();
                const QString bottom = model.index(range.bottom(), 0, range.parent()).data().toString();
                ranges << (top == bottom ? top : top + '-' + bottom);
            }
            QCOMPARE(ranges.join('|'), c.ranges);
        }
    }

    void aMillionRowsCostNothingPerRow()
    {
        // A flat model of a million rows: the map answers without looking at the rows.
        class Flat : public QAbstractTableModel {
        public:
            int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 1000000; }
            int columnCount(const QModelIndex& = {}) const override { return 4; }
            QVariant data(const QModelIndex&, int) const override { return {}; }
        } flat;
        OutlineRowMap map(&flat);
        QVERIFY(map.expand(flat.index(500000, 0)));
        QCOMPARE(map.rowCount(), 1000000);
        QCOMPARE(map.at(999999).row, 999999);
        QCOMPARE(map.visualRow(flat.index(750000, 2)), 750000);
        const QItemSelection all = map.selection(0, 999999, 3);
        QCOMPARE(all.size(), 2); // up to the expanded row, then the rest
        QCOMPARE(all[1].bottom(), 999999);
        QVERIFY(map.isConsistent());
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QCoreApplication app(argc, argv);
    OutlineRowMapTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "outline_row_map_test.moc"