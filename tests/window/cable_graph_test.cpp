// The cable rules between panes, on the plain graph (no widgets).

#include "gui_test_main.h"
#include "window/cable_graph.h"

namespace {
struct P {
    int id;
};
using Graph = CableGraph<P>;
} // namespace

class CableGraphTest : public QObject {
    Q_OBJECT
private slots:
    void refusesSelfDuplicateAndCycles()
    {
        P a{1}, b{2}, c{3};
        Graph g;
        int linked = 0;
        g.onLinked([&](P*, P*) { ++linked; });
        QVERIFY(!g.link(&a, &a));
        QVERIFY(g.link(&a, &b));
        QVERIFY(!g.link(&a, &b)); // twice
        QVERIFY(!g.link(&b, &a)); // back again: a loop
        QVERIFY(g.link(&b, &c));
        QVERIFY(!g.link(&c, &a)); // a loop through a chain
        QCOMPARE(linked, 2);
        QCOMPARE(g.from(&c), &b);
        QCOMPARE(g.from(&b), &a);
        QCOMPARE(g.to(&a), std::vector<P*>{&b});
    }

    void newFromTakesTheToPaneAway()
    {
        P a{1}, b{2}, c{3};
        Graph g;
        std::vector<std::pair<P*, P*>> calls;
        g.onLinked([&](P* from, P* to) { calls.emplace_back(from, to); });
        g.link(&a, &b);
        g.setMirror(&b, true);
        QVERIFY(g.link(&c, &b));
        QVERIFY(g.to(&a).empty());
        QCOMPARE(g.to(&c), std::vector<P*>{&b});
        QCOMPARE(g.from(&b), &c);
        QVERIFY(!g.mirror(&b)); // a new cable starts without mirroring
        QCOMPARE(calls.back(), std::make_pair(&c, &b)); // b is sent to c's location
    }

    void unlinkAllClearsBothEndsAndMirroring()
    {
        P a{1}, b{2}, c{3}, d{4};
        Graph g;
        g.link(&d, &a);
        g.link(&a, &b);
        g.link(&a, &c);
        g.setMirror(&b, true);
        g.setMirror(&a, true);
        g.unlinkAll(&a);
        QVERIFY(g.to(&a).empty());
        QCOMPARE(g.from(&a), nullptr);
        QCOMPARE(g.from(&b), nullptr);
        QCOMPARE(g.from(&c), nullptr);
        QVERIFY(g.to(&d).empty());
        QVERIFY(!g.mirror(&a) && !g.mirror(&b));
        QVERIFY(g.empty());
    }

    void swapReversesOnlyASingleCable()
    {
        P a{1}, b{2}, c{3};
        Graph g;
        g.link(&a, &b);
        QVERIFY(g.swap(&a));
        QCOMPARE(g.from(&a), &b);
        QVERIFY(g.to(&a).empty());
        g.unlinkAll(&b);
        g.link(&a, &b);
        g.link(&a, &c);
        QVERIFY(!g.swap(&a)); // two TO panes
        QCOMPARE(g.to(&a).size(), size_t(2));
        QVERIFY(!g.swap(&c)); // none
    }

    void toggleLinksToTheNextPaneWrapping()
    {
        P a{1}, b{2}, c{3};
        Graph g;
        std::vector<P*> panes{&a, &b, &c};
        QCOMPARE(g.toggle(panes, &c), Graph::Toggle::Linked); // last → first
        QCOMPARE(g.from(&a), &c);
        QCOMPARE(g.toggle(panes, &c), Graph::Toggle::Unlinked);
        QVERIFY(g.empty());
        QCOMPARE(g.toggle({&a}, &a), Graph::Toggle::Nothing);
        P stranger{9};
        QCOMPARE(g.toggle(panes, &stranger), Graph::Toggle::Nothing);
    }

    void removeForgetsAPane()
    {
        P a{1}, b{2}, c{3};
        Graph g;
        g.link(&a, &b);
        g.link(&b, &c);
        g.remove(&b);
        QVERIFY(g.to(&a).empty());
        QCOMPARE(g.from(&c), nullptr);
        QCOMPARE(g.cables().size(), size_t(0));
    }

    void colourIsStableAndSymmetric()
    {
        P a{1}, b{2};
        QCOMPARE(Graph::colorIndex(&a, &b), Graph::colorIndex(&a, &b));
        QCOMPARE(Graph::colorIndex(&a, &b), Graph::colorIndex(&b, &a));
        QVERIFY(Graph::colorIndex(&a, &b) < 5);
    }
};

BRONDEL_GUI_TEST_MAIN(CableGraphTest)
#include "cable_graph_test.moc"
