// Making an application the default for a type in mimeapps.list: a table of texts before
// and after, and the atomic write that refuses to replace what it could not read.

#include "fs/file_io.h"
#include "fs/mime_apps_edit.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <unistd.h>

TEST(MimeAppsEdit, TextsTable)
{
    struct Case {
        const char* what;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {"an empty file gets both groups", "",
         "[Default Applications]\ntext/plain=new.desktop;\n\n[Added Associations]\ntext/plain=new.desktop;\n"},
        {"the old default stays after the new one, other keys and comments stay",
         "# mine\n[Default Applications]\nimage/png=viewer.desktop;\ntext/plain=old.desktop;\n\n"
         "[Added Associations]\ntext/plain=old.desktop;new.desktop;\n",
         "# mine\n[Default Applications]\nimage/png=viewer.desktop;\ntext/plain=new.desktop;old.desktop;\n\n"
         "[Added Associations]\ntext/plain=new.desktop;old.desktop;\n"},
        {"a key written with spaces, no final newline",
         "[Default Applications]\ntext/plain = old.desktop",
         "[Default Applications]\ntext/plain=new.desktop;old.desktop;\n\n[Added Associations]\ntext/plain=new.desktop;\n"},
        {"a removed association is taken back, its key dropped when empty",
         "[Removed Associations]\ntext/plain=new.desktop;\nimage/png=new.desktop;\n",
         "[Removed Associations]\nimage/png=new.desktop;\n\n[Default Applications]\ntext/plain=new.desktop;\n\n"
         "[Added Associations]\ntext/plain=new.desktop;\n"},
        {"a new key goes at the end of its group, before the blank line",
         "[Default Applications]\nimage/png=viewer.desktop;\n\n[Other]\nx=y\n",
         "[Default Applications]\nimage/png=viewer.desktop;\ntext/plain=new.desktop;\n\n[Other]\nx=y\n\n"
         "[Added Associations]\ntext/plain=new.desktop;\n"},
        {"another type's group of the same prefix is not taken for it",
         "[Default Applications]\ntext/plain2=a.desktop;\n",
         "[Default Applications]\ntext/plain2=a.desktop;\ntext/plain=new.desktop;\n\n"
         "[Added Associations]\ntext/plain=new.desktop;\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string after = mimeAppsWithDefault(c.before, "text/plain", "new.desktop");
        EXPECT_EQ(after, c.after);
        EXPECT_EQ(mimeAppsWithDefault(after, "text/plain", "new.desktop"), after); // once is enough
    }
}

TEST(MimeAppsEdit, WritesAtomicallyAndNeverOverWhatItCouldNotRead)
{
    TempTree tree;
    const std::string list = tree.path("config/mimeapps.list");
    ASSERT_EQ(mimeAppsSetDefault(list, "text/plain", "a.desktop"), 0); // made, with its folder
    EXPECT_EQ(fileReadAll(list).value_or(""), mimeAppsWithDefault("", "text/plain", "a.desktop"));
    ASSERT_EQ(mimeAppsSetDefault(list, "text/plain", "b.desktop"), 0);
    EXPECT_NE(fileReadAll(list).value_or("").find("text/plain=b.desktop;a.desktop;"), std::string::npos);

    tree.dir("folder/mimeapps.list"); // not a file: left alone
    EXPECT_EQ(mimeAppsSetDefault(tree.path("folder/mimeapps.list"), "text/plain", "a.desktop"), EINVAL);
    tree.file("locked/mimeapps.list", "[Default Applications]\n");
    tree.chmod("locked/mimeapps.list", 0);
    if (::geteuid() != 0) {
        EXPECT_EQ(mimeAppsSetDefault(tree.path("locked/mimeapps.list"), "text/plain", "a.desktop"), EACCES);
        tree.chmod("locked/mimeapps.list", 0644);
        EXPECT_EQ(fileReadAll(tree.path("locked/mimeapps.list")).value_or(""), "[Default Applications]\n");
    }
}
