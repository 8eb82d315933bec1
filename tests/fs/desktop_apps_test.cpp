// Which applications open a type, and the command lines that start them, from canned
// desktop entries and association files.

#include "fs/desktop_apps.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

namespace {

DesktopApp appWith(const QString& exec)
{
    DesktopApp app;
    app.id = QStringLiteral("ed.desktop");
    app.name = QStringLiteral("Ed");
    app.icon = QStringLiteral("ed-icon");
    app.path = QStringLiteral("/usr/share/applications/ed.desktop");
    app.exec = exec;
    return app;
}

DesktopApp installed(const QString& id, const QStringList& types = {})
{
    DesktopApp app = appWith(QStringLiteral("x %f"));
    app.id = id;
    app.mimeTypes = types;
    return app;
}

void install(DesktopAppIndex& index, const DesktopApp& app)
{
    index.apps.insert(app.id, app);
    index.appOrder << app.id;
}

} // namespace

TEST(DesktopApps, EntryFieldsEscapesAndRefusals)
{
    const char* text = "# comment\n"
                       "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=Text Editor\n"
                       "Name[de]=Texteditor\n"
                       "Name[de_AT]=Texteditor AT\n"
                       "Exec=ed\\s--new \"%F\"\n"
                       "MimeType=text/plain;text/x-c\\;odd;;\n"
                       "Terminal=true\n"
                       "Icon = ed\n"
                       "[Desktop Action new]\n"
                       "Exec=should-not-win\n"
                       "Name=Other\n";
    auto app = desktopEntryParse(text, QStringLiteral("ed.desktop"), QStringLiteral("de_DE.UTF-8"));
    ASSERT_TRUE(app);
    EXPECT_EQ(app->name, QStringLiteral("Texteditor"));
    EXPECT_EQ(app->exec, QStringLiteral("ed --new \"%F\""));
    EXPECT_EQ(app->mimeTypes, (QStringList{"text/plain", "text/x-c;odd"}));
    EXPECT_TRUE(app->terminal);
    EXPECT_EQ(app->icon, QStringLiteral("ed"));
    EXPECT_EQ(desktopEntryParse(text, "ed.desktop", "de_AT@euro")->name, QStringLiteral("Texteditor AT"));
    EXPECT_EQ(desktopEntryParse(text, "ed.desktop", "C")->name, QStringLiteral("Text Editor"));

    const struct {
        const char* name;
        const char* text;
    } refused[] = {
        {"link", "[Desktop Entry]\nType=Link\nName=x\nExec=x\n"},
        {"hidden", "[Desktop Entry]\nType=Application\nName=x\nExec=x\nHidden=true\n"},
        {"no exec", "[Desktop Entry]\nType=Application\nName=x\n"},
        {"no name", "[Desktop Entry]\nType=Application\nExec=x\n"},
        {"other group", "[Something]\nType=Application\nName=x\nExec=x\n"},
    };
    for (const auto& c : refused)
        EXPECT_FALSE(desktopEntryParse(c.text, "x.desktop", "C")) << c.name;
}

TEST(DesktopApps, ExecFieldCodes)
{
    const QStringList two = {"/home/u/a b.txt", "/home/u/c%.txt"};
    const QString url0 = QStringLiteral("file:///home/u/a%20b.txt");
    const QString url1 = QStringLiteral("file:///home/u/c%25.txt");
    const struct {
        const char* exec;
        QStringList paths;
        std::vector<QStringList> want;
    } cases[] = {
        {"ed %F", two, {{"ed", two[0], two[1]}}},
        {"ed %U", two, {{"ed", url0, url1}}},
        {"ed %f", two, {{"ed", two[0]}, {"ed", two[1]}}},
        {"ed --file=%u", two, {{"ed", "--file=" + url0}, {"ed", "--file=" + url1}}},
        {"ed %f", {}, {{"ed"}}},
        {"ed", two, {{"ed"}}},
        {"\"/opt/my app/ed\" %i --title %c %k 100%%", {}, {{"/opt/my app/ed", "--icon", "ed-icon", "--title", "Ed",
                                                            "/usr/share/applications/ed.desktop", "100%"}}},
        {"sh -c \"echo \\\"\\$1\\\" \\\\\" %F", {"/x"}, {{"sh", "-c", "echo \"$1\" \\", "/x"}}},
        {"ed %d %D %n %N %v %m %F", {"/x"}, {{"ed", "", "", "", "", "", "", "/x"}}},
        {"ed \"unclosed %F", {"/x"}, {}},
    };
    for (const auto& c : cases) {
        const auto got = desktopExecCommands(appWith(c.exec), c.paths);
        EXPECT_EQ(got, c.want) << c.exec;
    }
}

TEST(DesktopApps, AssociationOrder)
{
    DesktopAppIndex index;
    install(index, installed("cached.desktop"));
    install(index, installed("own.desktop", {"text/plain"}));
    install(index, installed("added.desktop"));
    install(index, installed("fav.desktop", {"text/plain"}));
    install(index, installed("gone.desktop", {"text/plain"}));
    install(index, installed("parent.desktop", {"application/octet-stream"}));
    install(index, installed("backagain.desktop"));
    // The user's list, then the system's.
    index.lists.push_back(mimeAppsParse("[Default Applications]\n"
                                        "text/plain=missing.desktop;fav.desktop;\n"
                                        "[Added Associations]\n"
                                        "text/plain=added.desktop;backagain.desktop\n"
                                        "[Removed Associations]\n"
                                        "text/plain=gone.desktop;\n"));
    index.lists.push_back(mimeAppsParse("[Removed Associations]\n"
                                        "text/plain=backagain.desktop;cached.desktop\n"
                                        "[Added Associations]\n"
                                        "text/plain=gone.desktop\n"));
    index.caches.push_back(mimeInfoCacheParse("[MIME Cache]\ntext/plain=cached.desktop;gone.desktop;uninstalled.desktop;\n"));

    const QStringList types = {"text/plain", "application/octet-stream"};
    EXPECT_EQ(desktopAppsFor(index, types),
              (QStringList{"fav.desktop", "added.desktop", "backagain.desktop", "own.desktop", "parent.desktop"}));

    // Without a default list, the first association leads; nothing known, nothing offered.
    index.lists.clear();
    index.caches.clear();
    EXPECT_EQ(desktopAppsFor(index, {"text/plain"}), (QStringList{"own.desktop", "fav.desktop", "gone.desktop"}));
    EXPECT_TRUE(desktopAppsFor(index, {"image/png"}).isEmpty());

    // A default the same list removes is not the default.
    index.lists.push_back(mimeAppsParse("[Default Applications]\ntext/plain=fav.desktop\n"
                                        "[Removed Associations]\ntext/plain=fav.desktop\n"));
    EXPECT_EQ(desktopAppsFor(index, {"text/plain"}).value(0), QStringLiteral("own.desktop"));
}

TEST(DesktopApps, FoldersFromTheEnvironmentValues)
{
    const DesktopAppDirs unset = desktopAppDirsFrom("/h", "", "", "", "");
    EXPECT_EQ(unset.configDirs, (QStringList{"/h/.config", "/etc/xdg"}));
    EXPECT_EQ(unset.dataDirs, (QStringList{"/h/.local/share", "/usr/local/share", "/usr/share"}));
    const DesktopAppDirs set = desktopAppDirsFrom("/h", "/c", "/x:relative:/y/", "/d", "/s1::/s2");
    EXPECT_EQ(set.configDirs, (QStringList{"/c", "/x", "/y"}));
    EXPECT_EQ(set.dataDirs, (QStringList{"/d", "/s1", "/s2"}));
}

TEST(DesktopApps, LoadReadsEntriesSubfoldersAndLists)
{
    TempTree t;
    const std::string entry = "[Desktop Entry]\nType=Application\nExec=run %U\nMimeType=text/plain;\nName=";
    t.file("config/mimeapps.list", "[Default Applications]\ntext/plain=vendor-tool.desktop\n");
    t.file("home/applications/ed.desktop", entry + "Home Ed\n");
    t.file("sys/applications/ed.desktop", entry + "System Ed\n");
    t.file("sys/applications/vendor/tool.desktop", entry + "Tool\n");
    t.file("sys/applications/notes.txt", "not an entry");
    t.file("sys/applications/mimeinfo.cache", "[MIME Cache]\nimage/png=ed.desktop;\n");
    DesktopAppDirs dirs;
    dirs.configDirs << QString::fromStdString(t.path("config"));
    dirs.dataDirs << QString::fromStdString(t.path("home")) << QString::fromStdString(t.path("sys"));
    const DesktopAppIndex index = desktopAppsLoad(dirs, "C");
    ASSERT_EQ(index.apps.size(), 2);
    EXPECT_EQ(index.apps.value("ed.desktop").name, QStringLiteral("Home Ed"));
    EXPECT_EQ(index.apps.value("vendor-tool.desktop").path, QString::fromStdString(t.path("sys/applications/vendor/tool.desktop")));
    EXPECT_EQ(desktopAppsFor(index, {"text/plain"}), (QStringList{"vendor-tool.desktop", "ed.desktop"}));
    EXPECT_EQ(desktopAppsFor(index, {"image/png"}), (QStringList{"ed.desktop"}));
}

TEST(DesktopApps, AMoreImportantFolderComesFirst)
{
    // The system folder's cache names its editor; the user's own entry, in a more
    // important folder and in no cache, still comes before it.
    TempTree t;
    const std::string entry = "[Desktop Entry]\nType=Application\nExec=run %f\nName=";
    t.file("home/applications/mine.desktop", entry + "Mine\nMimeType=text/plain;\n");
    t.file("sys/applications/vim.desktop", entry + "Vim\nMimeType=text/plain;\n");
    t.file("sys/applications/mimeinfo.cache", "[MIME Cache]\ntext/plain=vim.desktop;\n");
    DesktopAppDirs dirs;
    dirs.dataDirs << QString::fromStdString(t.path("home")) << QString::fromStdString(t.path("sys"));
    EXPECT_EQ(desktopAppsFor(desktopAppsLoad(dirs, "C"), {"text/plain"}), (QStringList{"mine.desktop", "vim.desktop"}));
}
