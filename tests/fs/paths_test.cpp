// Paths typed or chosen as text come back as the bytes on disk, even for names that are
// not UTF-8 (which a QString cannot carry).

#include "fs/paths.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QString>

TEST(Paths, TextOfANameThatIsNotUtf8FindsItsBytes)
{
    TempTree t;
    const std::string latin1 = t.dir("caf\xe9/inner");  // Latin-1 "café": not UTF-8
    const std::string plain = t.dir("plain folder");
    const QString shown = QFile::decodeName(QByteArray::fromStdString(latin1));
    EXPECT_EQ(pathBytesFromText(shown), latin1);
    EXPECT_EQ(pathBytesFromText(QFile::decodeName(QByteArray::fromStdString(plain))), plain);
    // Nothing on disk matches: the text's own encoding, unchanged.
    const QString missing = QFile::decodeName(QByteArray::fromStdString(t.path("nowhere/x")));
    EXPECT_EQ(pathBytesFromText(missing), QFile::encodeName(missing).toStdString());
    EXPECT_EQ(pathBytesFromText(QStringLiteral("relative/x")), "relative/x");
}

TEST(Paths, TakenNamesAndSharedDevices)
{
    TempTree t;
    const std::string file = t.file("a.txt", "x");
    const std::string dangling = t.symlink("gone", t.path("nothing-here"));
    EXPECT_TRUE(pathTaken(file));
    EXPECT_TRUE(pathTaken(dangling)); // a link to nothing still holds its name
    EXPECT_FALSE(pathTaken(t.path("free")));

    EXPECT_TRUE(pathsShareDevice(t.path(""), file));
    EXPECT_TRUE(pathsShareDevice(t.path(""), dangling)); // the link itself, not its target
    EXPECT_FALSE(pathsShareDevice(t.path(""), t.path("free")));
    EXPECT_FALSE(pathsShareDevice("/proc", file)); // another file system
}
