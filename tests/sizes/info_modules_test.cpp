#include "sizes/info_module.h"

#include "fs/fmt.h"
#include "fs/volume.h"
#include "sizes/folder_sizes.h"
#include "sizes/info_notifier.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

namespace {

const InfoModule& module(const std::string& key)
{
    for (const auto& m : InfoModules::all())
        if (m->key() == key)
            return *m;
    throw std::runtime_error("no module " + key);
}

DirNode folderNode(const std::string& path)
{
    DirNode node;
    node.path = path;
    node.isDir = true;
    return node;
}

std::vector<std::string> keys(const std::vector<const InfoModule*>& modules)
{
    std::vector<std::string> out;
    for (const auto* m : modules)
        out.push_back(m->key());
    return out;
}

} // namespace

TEST(InfoModules, RegistryOrderAndWhatIsOn)
{
    std::vector<std::pair<std::string, std::string>> listed;
    for (const auto& m : InfoModules::all())
        listed.emplace_back(m->key(), m->title());
    EXPECT_EQ(listed, (std::vector<std::pair<std::string, std::string>>{
                          {"drive-space", "Drive Space"}, {"file-size", "File Sizes"}, {"folder-size", "Folder Sizes"}}));

    BrondelSettings settings;
    EXPECT_EQ(keys(InfoModules::enabled(settings)), (std::vector<std::string>{"drive-space", "file-size", "folder-size"}));
    settings.infoOn = {{"folder-size", false}, {"drive-space", true}, {"gone", false}};
    EXPECT_EQ(keys(InfoModules::enabled(settings)), (std::vector<std::string>{"drive-space", "file-size"}));
}

TEST(InfoModules, ADriveIsDescribedByItsSpaceNotItsSize)
{
    // /proc is a mount of its own whose file system reports no blocks at all.
    const auto proc = driveSpace("/proc");
    if (!proc || proc->totalBytes != 0)
        GTEST_SKIP() << "no empty pseudo file system mounted at /proc here";
    const DirNode node = folderNode("/proc");
    const InfoModule& drive = module("drive-space");
    EXPECT_EQ(drive.text(node), "0 B free of 0 B");
    EXPECT_EQ(drive.fraction(node), 0.0);
    EXPECT_EQ(drive.pair(node), std::make_pair(std::string("0 B used"), std::string("0 B")));
    EXPECT_EQ(module("folder-size").text(node), std::nullopt);
    EXPECT_EQ(module("folder-size").text(folderNode("/")), std::nullopt);
    // Only folders can be volume roots: a file node is never looked up.
    DirNode file = folderNode("/proc");
    file.isDir = false;
    EXPECT_EQ(drive.text(file), std::nullopt);
}

TEST(InfoModules, AFolderShowsAnEllipsisUntilItsSizeArrives)
{
    static int argc = 1;
    static char name[] = "info_modules_test";
    static char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    TempTree t;
    t.sized("big", 3 * 1024 * 1024);
    const DirNode node = folderNode(t.root());
    const InfoModule& folder = module("folder-size");
    FolderSizes::shared().setMode(SizeMode::Background);

    EXPECT_EQ(module("drive-space").text(node), std::nullopt);
    EXPECT_EQ(module("drive-space").fraction(node), std::nullopt);
    EXPECT_EQ(folder.text(node), "\u2026");
    QEventLoop loop;
    QObject::connect(&InfoNotifier::instance(), &InfoNotifier::brondelInfoChanged, &loop, &QEventLoop::quit);
    QTimer::singleShot(std::chrono::seconds(20), &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(folder.text(node), "3.0 MB");

    DirNode file;
    file.path = t.path("big");
    EXPECT_EQ(folder.text(file), std::nullopt);
}

TEST(InfoModules, ACommandLineListingMeasuresItsFoldersTogether)
{
    TempTree t;
    t.sized("a/x", 2048);
    t.sized("b/y", 10);
    DirNodePtr a = std::make_shared<DirNode>(folderNode(t.path("a")));
    DirNodePtr b = std::make_shared<DirNode>(folderNode(t.path("b")));
    FolderSizes::shared().setMode(SizeMode::Synchronous);
    module("folder-size").prepare({a, b});
    t.sized("a/later", 1000000); // measured before: the cached figure stands
    EXPECT_EQ(module("folder-size").text(*a), "2.0 KB");
    EXPECT_EQ(module("folder-size").text(*b), "10 B");
    FolderSizes::shared().setMode(SizeMode::Background);
}
