// The shared thumbnail cache's rules: a file's URI and cache name, which stored
// previews still belong to their file, and how one is written.

#include "cards/thumb_cache.h"

#include "fs/file_io.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>

TEST(ThumbCache, UriAndName)
{
    struct Case {
        std::string path;
        std::string uri;
    };
    const Case cases[] = {
        {"/home/jens/photos/me.png", "file:///home/jens/photos/me.png"},
        {"/tmp/two words.jpg", "file:///tmp/two%20words.jpg"},
        {"/tmp/a#b?c%d.png", "file:///tmp/a%23b%3Fc%25d.png"},
        {"/tmp/caf\xc3\xa9.png", "file:///tmp/caf%C3%A9.png"},
        {"/tmp/raw\xff.png", "file:///tmp/raw%FF.png"}, // not UTF-8: the bytes themselves
    };
    for (const Case& c : cases)
        EXPECT_EQ(thumbUri(c.path), c.uri) << c.path;
    // The standard's own example.
    EXPECT_EQ(thumbFileName("file:///home/jens/photos/me.png"), "c6ee772d9e49320e97ec29a7eb5b1697.png");
    EXPECT_EQ(thumbPath("/c/thumbnails", ThumbSize::Large, "file:///home/jens/photos/me.png"),
        "/c/thumbnails/large/c6ee772d9e49320e97ec29a7eb5b1697.png");
    EXPECT_EQ(thumbFailPath("/c/thumbnails", "brondel", "file:///home/jens/photos/me.png"),
        "/c/thumbnails/fail/brondel/c6ee772d9e49320e97ec29a7eb5b1697.png");
    EXPECT_EQ(thumbSizeFor(48), ThumbSize::Normal);
    EXPECT_EQ(thumbSizeFor(128), ThumbSize::Normal);
    EXPECT_EQ(thumbSizeFor(192), ThumbSize::Large); // 96-point icons on a double-density screen
}

TEST(ThumbCache, Validity)
{
    const std::string uri = "file:///p/a.png";
    struct Case {
        std::map<std::string, std::string> keys;
        bool valid;
    };
    const Case cases[] = {
        {{{"Thumb::URI", uri}, {"Thumb::MTime", "1700000000"}}, true},
        {{{"Thumb::MTime", "1700000000"}}, true},                               // no URI key: the name vouches
        {{{"Thumb::URI", uri}, {"Thumb::MTime", "1700000001"}}, false},         // the file changed since
        {{{"Thumb::URI", "file:///p/b.png"}, {"Thumb::MTime", "1700000000"}}, false}, // another file's
        {{{"Thumb::URI", uri}}, false},                                         // no MTime: cannot tell
        {{{"Thumb::URI", uri}, {"Thumb::MTime", "1700000000.5"}}, false},
        {{{"Thumb::URI", uri}, {"Thumb::MTime", ""}}, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(thumbValid(c.keys, uri, 1700000000), c.valid);
    // What we write reads back as valid.
    EXPECT_TRUE(thumbValid(thumbKeys(uri, 1700000000, 734, "image/png"), uri, 1700000000));
    EXPECT_EQ(thumbKeys(uri, 1, 2, "").count("Thumb::Mime"), 0u);
}

TEST(ThumbCache, WriteIsPrivateAndWhole)
{
    TempTree tree;
    const std::string path = tree.path("cache/thumbnails/normal/x.png");
    ASSERT_TRUE(thumbWrite(path, "first"));
    ASSERT_TRUE(thumbWrite(path, "second")); // replaces
    EXPECT_EQ(fileReadAll(path).value_or(""), "second");
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    // A folder in the way: refused, nothing left beside it.
    tree.dir("cache/thumbnails/normal/y.png");
    EXPECT_FALSE(thumbWrite(tree.path("cache/thumbnails/normal/y.png"), "z"));
}

TEST(ThumbCache, RootFollowsXdgCacheHome)
{
    const char* saved = std::getenv("XDG_CACHE_HOME");
    const std::string keep = saved ? saved : "";
    setenv("XDG_CACHE_HOME", "/somewhere/cache", 1);
    EXPECT_EQ(thumbCacheRoot(), "/somewhere/cache/thumbnails");
    setenv("XDG_CACHE_HOME", "relative", 1); // not absolute: ignored, as the base directory rules say
    EXPECT_EQ(thumbCacheRoot(), std::string(std::getenv("HOME")) + "/.cache/thumbnails");
    setenv("XDG_CACHE_HOME", keep.c_str(), 1);
}
