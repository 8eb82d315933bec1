// The Properties window: facts read in the background, a folder's size arriving from
// the walker, permission boxes that change the mode on disk, a refusal shown in the
// window with the boxes put back, and one window per item.

#include "../window/gui_test_main.h"
#include "actions/properties_window.h"
#include "fs/fmt.h"
#include "fs/sys_calls.h"
#include "support/temp_tree.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <cerrno>
#include <memory>
#include <sys/stat.h>

namespace {

struct Context {
    ScanService scans{2};
    ScanService edits{1};
    BrondelSettings settings;
    BrowserContext context;
    Context()
    {
        context.scans = &scans;
        context.edits = &edits;
        context.settings = &settings;
    }
};

unsigned modeOf(const std::string& path)
{
    struct stat st{};
    return ::stat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

// A file of `mode` under a fresh tree, and its Properties window.
struct Opened {
    Context c;
    TempTree tree;
    QObject owner;
    std::string path;
    std::unique_ptr<PropertiesWindow> window;

    Opened(const std::string& name, unsigned mode, const std::string& content = {})
        : path(tree.file(name, content))
    {
        tree.chmod(name, mode);
        window = std::make_unique<PropertiesWindow>(path, c.context, &owner);
    }
};

int refuseChmod(const char*, mode_t)
{
    errno = EPERM;
    return -1;
}

} // namespace

class PropertiesWindowTest : public QObject {
    Q_OBJECT
private slots:
    void showsTheFactsOfAFile()
    {
        Opened o("notes.txt", 0640, "twelve bytes");
        PropertiesWindow& window = *o.window;
        QTRY_VERIFY(window.loaded());
        QCOMPARE(window.field("name")->text(), QStringLiteral("notes.txt"));
        QCOMPARE(window.field("kind")->text(), QStringLiteral("text/plain"));
        QCOMPARE(window.field("size")->text(), QString::fromStdString(fmtHuman(12)));
        QCOMPARE(window.field("location")->text(), QString::fromStdString(o.tree.root()));
        QCOMPARE(window.field("mode")->text(), QStringLiteral("rw-r-----  (640)"));
        struct Box {
            PermWho who;
            PermBit bit;
            bool checked;
        } boxes[] = {
            {PermWho::Owner, PermBit::Read, true},    {PermWho::Owner, PermBit::Write, true},
            {PermWho::Owner, PermBit::Execute, false}, {PermWho::Group, PermBit::Read, true},
            {PermWho::Group, PermBit::Write, false},  {PermWho::Others, PermBit::Read, false},
        };
        for (const Box& b : boxes) {
            QCOMPARE(window.permBox(b.who, b.bit)->isChecked(), b.checked);
            QVERIFY(window.permBox(b.who, b.bit)->isEnabled()); // the test's own file
        }
        QCOMPARE(window.ownerField()->text(), QString::fromStdString(window.props().owner));
        QCOMPARE(window.groupBox()->currentText(), QString::fromStdString(window.props().group));
    }

    void aFolderSizeArrivesFromTheWalker()
    {
        Context c;
        TempTree tree;
        tree.sized("big/a", 3000);
        tree.sized("big/sub/b", 5000);
        QObject owner;
        PropertiesWindow window(tree.path("big"), c.context, &owner);
        QTRY_VERIFY(window.loaded());
        QTRY_COMPARE_WITH_TIMEOUT(window.field("size")->text(), QString::fromStdString(fmtHuman(8000)), 15000);
    }

    void aBoxChangesTheModeOnDisk()
    {
        Opened o("run.sh", 0644);
        PropertiesWindow& window = *o.window;
        QTRY_VERIFY(window.loaded());
        window.permBox(PermWho::Owner, PermBit::Execute)->click();
        QTRY_COMPARE(modeOf(o.path), 0744u);
        QTRY_COMPARE(window.props().mode, 0744u);
        QCOMPARE(window.field("mode")->text(), QStringLiteral("rwxr--r--  (744)"));
        QVERIFY(window.errorLabel()->isHidden());
    }

    void aRefusalIsShownAndTheBoxesPutBack()
    {
        Opened o("locked", 0600);
        PropertiesWindow& window = *o.window;
        QTRY_VERIFY(window.loaded());
        SysCalls calls = sysCallsReal();
        calls.chmod = refuseChmod;
        SysCallsOverride override(calls);
        QCheckBox* box = window.permBox(PermWho::Group, PermBit::Read);
        box->click();
        QTRY_VERIFY(!window.errorLabel()->isHidden());
        QVERIFY2(window.errorLabel()->text().contains(QStringLiteral("not permitted")),
                 qPrintable(window.errorLabel()->text()));
        QTRY_VERIFY(!box->isChecked()); // read again: the mode did not change
        QCOMPARE(modeOf(o.path), 0600u);
    }

    // A folder shown again is the same window; the owner going closes them all.
    void oneWindowPerItemLivingWithItsOwner()
    {
        Context c;
        TempTree tree;
        const std::string a = tree.file("a"), b = tree.file("b");
        auto owner = std::make_unique<QObject>();
        auto count = [] {
            int n = 0;
            for (QWidget* w : QApplication::topLevelWidgets())
                n += qobject_cast<PropertiesWindow*>(w) != nullptr;
            return n;
        };
        const int before = count();
        propertiesShow({a, b}, c.context, owner.get());
        propertiesShow({a}, c.context, owner.get());
        QCOMPARE(count(), before + 2);
        owner.reset();
        QCOMPARE(count(), before);
    }
};

BRONDEL_GUI_TEST_MAIN(PropertiesWindowTest)
#include "properties_window_test.moc"
