// What a drop does for each combination of keys and places.

#include "services/drop_action.h"
#include "support/test_env.h"

#include <QCoreApplication>
#include <QTest>

Q_DECLARE_METATYPE(DropChoice)

class DropActionTest : public QObject {
    Q_OBJECT
private slots:
    void choose()
    {
        const DropFacts same{true, false, false};
        const DropFacts other{false, false, false};
        const DropFacts home{true, true, false};
        const DropFacts itself{true, false, true};
        const struct {
            const char* name;
            Qt::KeyboardModifiers keys;
            DropFacts facts;
            DropChoice want;
        } cases[] = {
            {"same device moves", Qt::NoModifier, same, DropChoice::Move},
            {"other device copies", Qt::NoModifier, other, DropChoice::Copy},
            {"ctrl copies on one device", Qt::ControlModifier, same, DropChoice::Copy},
            {"shift moves across devices", Qt::ShiftModifier, other, DropChoice::Move},
            {"alt asks", Qt::AltModifier, other, DropChoice::Ask},
            {"alt wins over ctrl", Qt::AltModifier | Qt::ControlModifier, same, DropChoice::Ask},
            {"ctrl+shift is the default", Qt::ControlModifier | Qt::ShiftModifier, other, DropChoice::Copy},
            {"into its own folder: nothing", Qt::NoModifier, home, DropChoice::None},
            {"shift into its own folder: nothing", Qt::ShiftModifier, home, DropChoice::None},
            {"ctrl into its own folder duplicates", Qt::ControlModifier, home, DropChoice::Copy},
            {"into itself: nothing", Qt::ControlModifier, itself, DropChoice::None},
            {"into itself, alt: nothing", Qt::AltModifier, itself, DropChoice::None},
        };
        for (const auto& c : cases)
            QVERIFY2(dropChoose(c.keys, c.facts) == c.want, c.name);
    }

    void factsOfPaths()
    {
        const struct {
            const char* name;
            std::vector<std::string> sources;
            std::string target;
            bool own;
            bool itself;
        } cases[] = {
            {"elsewhere", {"/a/x", "/a/y"}, "/b", false, false},
            {"same folder", {"/a/x", "/a/y"}, "/a", true, false},
            {"one of two in the target", {"/a/x", "/c/y"}, "/a", false, false},
            {"onto itself", {"/a/x"}, "/a/x", false, true},
            {"below itself", {"/a/x"}, "/a/x/deep", false, true},
            {"a sibling sharing a prefix", {"/a/x"}, "/a/xy", false, false},
            {"nothing dragged", {}, "/a", false, false},
        };
        for (const auto& c : cases) {
            const DropFacts facts = dropFactsOfPaths(c.sources, c.target);
            QVERIFY2(facts.intoOwnFolder == c.own, c.name);
            QVERIFY2(facts.intoItself == c.itself, c.name);
        }
    }
};

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    QCoreApplication app(argc, argv);
    DropActionTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "drop_action_test.moc"
