// File icons by type: the type comes from the name only, each type's icon is made once
// and shared, unknown types get the plain document icon, and a name ending seen for the
// first time is looked up in the background and announced.

#include "../window/gui_test_main.h"
#include "services/file_icons.h"
#include "services/theme_icons.h"

class FileIconsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { iconsInstallTheme(); }

    void typesFromTheNameOnly()
    {
        struct Case {
            const char* name;
            const char* firstIcon; // "" for a type not known
        };
        for (const Case& c : {Case{"photo.png", "image-png"}, Case{"notes.txt", "text-plain"},
                 Case{"PHOTO.PNG", "image-png"}, Case{"backup.tar.gz", "application-x-compressed-tar"},
                 Case{"mystery.zzqq", ""}, Case{"noending", ""}}) {
            const QStringList names = FileIcons::typeIconNames(QString::fromLatin1(c.name));
            QCOMPARE(names.value(0), QString::fromLatin1(c.firstIcon));
        }
        QCOMPARE(FileIcons::endingKey(QStringLiteral("a.tar.gz")), QStringLiteral("tar.gz"));
        QCOMPARE(FileIcons::endingKey(QStringLiteral(".bashrc")), QStringLiteral("/.bashrc"));
        QCOMPARE(FileIcons::endingKey(QStringLiteral("Makefile")), QStringLiteral("/Makefile"));
    }

    void cachedPerTypeAndAnnouncedOnce()
    {
        FileIcons icons;
        QSignalSpy changed(&icons, &FileIcons::changed);
        // Nothing known yet: the plain icon at once, the look-ups in the background.
        for (const char* name : {"a.png", "b.png", "c.txt", "d.zzqq", "e.pdf", "f.mp3", "g.odt", "h.jpg", "i.c"})
            QCOMPARE(icons.iconFor(name).cacheKey(), FileIcons::fallback().cacheKey());
        QVERIFY(changed.wait(5000));
        QTest::qWait(150);
        QVERIFY(changed.count() <= 2); // announced per burst, not per ending

        const QIcon png = icons.iconFor("a.png");
        QCOMPARE(icons.iconFor("other.png").cacheKey(), png.cacheKey()); // another name, same type: same icon
        QVERIFY(png.cacheKey() != FileIcons::fallback().cacheKey());
        QVERIFY(!icons.themeNameFor("a.png").isEmpty());
        QVERIFY(icons.themeNameFor("a.png") != icons.themeNameFor("c.txt"));
        QCOMPARE(icons.iconFor("d.zzqq").cacheKey(), FileIcons::fallback().cacheKey());
        QCOMPARE(icons.themeNameFor("d.zzqq"), QString());
    }
};

BRONDEL_GUI_TEST_MAIN(FileIconsTest)
#include "file_icons_test.moc"
