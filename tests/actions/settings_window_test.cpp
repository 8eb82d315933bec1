// The Settings window: every control changes one setting live and writes only that key
// to the file, read afresh, so a hand edit of another key stays; titles the file cannot
// hold are refused in place; one window at a time.

#include "../window/gui_test_main.h"
#include "actions/management_windows.h"
#include "actions/settings_window.h"
#include "config/settings_file.h"
#include "sizes/info_module.h"
#include "window/browser_frame.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

#include <memory>

namespace {

SettingsWindow* openWindow()
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<SettingsWindow*>(w); window && window->isVisible())
            return window;
    return nullptr;
}

} // namespace

class SettingsWindowTest : public QObject {
    Q_OBJECT
private slots:
    void eachControlChangesOnlyItsKey()
    {
        TestContext t;
        auto frame = testFrame(t, "/tmp");
        settingsWindowShow(frame.get(), t.context);
        SettingsWindow* window = openWindow();
        QVERIFY(window);
        settingsWindowShow(frame.get(), t.context); // a second request raises the same one
        QCOMPARE(openWindow(), window);

        const std::string module = InfoModules::all().front()->key();
        struct Step {
            const char* what;
            std::function<void()> act;
            std::function<void(BrondelSettings&)> expect;
        };
        const bool hidden = Settings::current().showHidden;
        const bool moduleOn = window->infoBox(module)->isChecked();
        const Step steps[] = {
            {"hidden", [&] { window->hiddenBox()->click(); }, [&](BrondelSettings& s) { s.showHidden = !hidden; }},
            {"sort", [&] { window->sortBox()->setCurrentIndex(3); }, [](BrondelSettings& s) { s.sortBy = "kind"; }},
            {"recent count", [&] { window->recentCountBox()->setValue(12); },
                [](BrondelSettings& s) { s.recentCount = 12; }},
            {"title",
                [&] {
                    window->titleEdit("favorites")->setText(QStringLiteral("Pinned"));
                    emit window->titleEdit("favorites")->editingFinished();
                },
                [](BrondelSettings& s) { s.favoritesTitle = "Pinned"; }},
            {"info", [&] { window->infoBox(module)->click(); },
                [&](BrondelSettings& s) { s.infoOn[module] = !moduleOn; }},
        };
        for (const Step& step : steps) {
            // Meanwhile a hand edit changes another key in the file.
            BrondelSettings theirs = settingsLoad();
            theirs.recentTitle = std::string("Lately ") + step.what;
            QVERIFY(settingsSave(theirs));
            const size_t scans = t.scans.count();
            step.act();
            step.expect(theirs);
            QTRY_COMPARE(settingsLoad(), theirs);
            QTRY_VERIFY2(t.scans.count() > scans, step.what); // every window shows it at once
        }
        QCOMPARE(Settings::current().sortBy, std::string("kind"));
        QCOMPARE(Settings::current().favoritesTitle, std::string("Pinned"));
    }

    void titlesTheFileCannotHoldAreRefused()
    {
        TestContext t;
        SettingsWindow window(t.context);
        const std::string before = Settings::current().drivesTitle;
        for (const QString& typed : {QStringLiteral("Say \"hi\""), QStringLiteral("   ")}) {
            window.titleEdit("drives")->setText(typed);
            emit window.titleEdit("drives")->editingFinished();
            QVERIFY(!window.errorText().isEmpty());
            QCOMPARE(window.titleEdit("drives")->text(), QString::fromStdString(before));
            QCOMPARE(Settings::current().drivesTitle, before);
        }
    }
};

BRONDEL_GUI_TEST_MAIN(SettingsWindowTest)
#include "settings_window_test.moc"
