#include "config/config_file.h"
#include "config/config_file_fixture.h"
#include "config/pinned_file.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

class PinnedFileTest : public ConfigFileTest {
protected:
    PinnedFileTest() : ConfigFileTest("BRONDEL_PINNED", "conf/pinned.toml") {}
    void put(const std::string& text) { ASSERT_TRUE(fileWriteAtomic(m_path, text)); }
};

const std::string kHeader(kPinnedDefaultHeader);

TEST_F(PinnedFileTest, WritesTheFixedLayoutAndReadsItBack)
{
    std::vector<PinnedSec> secs = {
        {"Work", {"~/Projects", "/srv/a#b", "/data/caf\xe9"}, 0.58}, // "#" and a Latin-1 byte kept
        {"Empty", {}, std::nullopt},
        {"", {"/x"}, 1.0},
    };
    ASSERT_TRUE(pinnedWrite(kHeader, secs));
    EXPECT_EQ(text(), kHeader
                  + "\n[[section]]\ntitle = \"Work\"\ncolor = 0.58\npaths = [\n  \"~/Projects\",\n  \"/srv/a#b\",\n"
                    "  \"/data/caf\xe9\",\n]\n"
                    "\n[[section]]\ntitle = \"Empty\"\npaths = [\n]\n"
                    "\n[[section]]\ntitle = \"\"\ncolor = 1\npaths = [\n  \"/x\",\n]\n");
    EXPECT_EQ(pinnedRead(), (PinnedFile{kHeader, secs}));
}

TEST_F(PinnedFileTest, ReadsHandEditedLinesLeniently)
{
    PinnedFile file = pinnedParse("# mine\r\n\n# two\n\n\n  [[section]]  \n"
                                  "title = Bare\n"
                                  "color = blue\n"
                                  "# \"/commented\"\n"
                                  "\"~/Music\", \"~/Movies\"\n"
                                  "\"/unpaired\n"
                                  "junk line\n"
                                  "[[section]]\n"
                                  "title = \"B\" \"ignored\"\n"
                                  "color = 0.3\n"
                                  "color = 0.3\r\n" // the "\r" stays: not a number, colour absent
                                  "title = \"C\"\n"
                                  "  \"/dup\",\n  \"/dup\",\n");
    EXPECT_EQ(file.header, "# mine\r\n\n# two\n");
    ASSERT_EQ(file.secs.size(), 2u);
    EXPECT_EQ(file.secs[0], (PinnedSec{"", {"~/Music", "~/Movies"}, std::nullopt}));
    EXPECT_EQ(file.secs[1], (PinnedSec{"C", {"/dup", "/dup"}, std::nullopt}));
    EXPECT_EQ(pinnedParse("title = \"x\"\ncolor = 0.3\n[[section]]\ncolor = 0.3").secs[0].color, 0.3);
}

TEST_F(PinnedFileTest, MissingFileGivesTheDefaultHeaderAndFirstEditWritesIt)
{
    EXPECT_EQ(pinnedRead(), (PinnedFile{kHeader, {}}));
    EXPECT_EQ(pinnedSectionTitles(), std::vector<std::string>{"Favorites"});
    EXPECT_EQ(text(), "<missing>");
    EXPECT_TRUE(pinnedAdd(m_home + "/Projects", "Favorites"));
    EXPECT_EQ(text(), kHeader + "\n[[section]]\ntitle = \"Favorites\"\npaths = [\n  \"~/Projects\",\n]\n");
}

// The header survives every edit, with exactly one blank line before the sections.
TEST_F(PinnedFileTest, HeaderIsKeptAcrossEdits)
{
    const std::pair<const char*, const char*> cases[] = {
        {"# one\n# two\n\n\n[[section]]\ntitle = \"A\"\n# dropped\n", "# one\n# two\n\n[[section]]\ntitle = \"A\"\npaths"},
        {"[[section]]\ntitle = \"A\"\n", "\n\n[[section]]\ntitle = \"A\"\n"},
        {"", "\n\n[[section]]\ntitle = \"Z\"\n"},
        // CR-LF lines never match "[[section]]": the whole file is header.
        {"[[section]]\r\ntitle = \"A\"\r\n", "[[section]]\r\ntitle = \"A\"\n\n[[section]]\ntitle = \"Z\"\n"},
    };
    for (auto [before, after] : cases) {
        put(before);
        EXPECT_TRUE(pinnedAddSection("Z"));
        EXPECT_TRUE(text().starts_with(after)) << text();
    }
}

TEST_F(PinnedFileTest, AddPinsOnceAnywhereAndAbbreviatesTheHome)
{
    put(kHeader + "\n[[section]]\ntitle = \"Work\"\npaths = [\n  \"~/Projects\",\n]\n"
        "\n[[section]]\ntitle = \"Mixed\"\npaths = [\n]\n");
    EXPECT_FALSE(pinnedAdd(m_home + "/Projects", "Mixed"));
    EXPECT_TRUE(pinnedAdd(m_home, "Mixed"));       // the home itself stays absolute
    EXPECT_TRUE(pinnedAdd("/srv/x", "New"));       // a new section at the end
    EXPECT_FALSE(pinnedAddSection("Work"));
    EXPECT_TRUE(pinnedAddSection("work"));         // titles are case-sensitive
    PinnedFile file = pinnedRead();
    ASSERT_EQ(file.secs.size(), 4u);
    EXPECT_EQ(file.secs[1].paths, std::vector<std::string>{m_home});
    EXPECT_EQ(file.secs[2], (PinnedSec{"New", {"/srv/x"}, std::nullopt}));
    EXPECT_EQ(pinnedSectionOf(m_home + "/Projects"), "Work");
    EXPECT_EQ(pinnedSectionOf("/elsewhere"), std::nullopt);
    EXPECT_EQ(pinnedSectionTitles(), (std::vector<std::string>{"Favorites", "Work", "Mixed", "New", "work"}));
}

TEST_F(PinnedFileTest, RemoveShiftAndSectionEdits)
{
    put("\n[[section]]\ntitle = \"A\"\ncolor = 0.5\npaths = [\n  \"/a1\",\n  \"~/a2\",\n  \"/a1\",\n]\n"
        "[[section]]\ntitle = \"B\"\npaths = [\n  \"/b1\",\n]\n"
        "[[section]]\ntitle = \"Favorites\"\n");
    const std::string before = text();
    pinnedShift("/a1", -1);                    // top path up
    pinnedShift("/b1", +1);                    // bottom path down: no move into another section
    pinnedShift("/none", 1);
    pinnedShiftSection("A", -1);
    pinnedRenameSection("A", "");
    pinnedRenameSection("missing", "X");
    pinnedSetColor("missing", 0.1);
    EXPECT_EQ(text(), before);

    EXPECT_FALSE(pinnedRemove("/nothing"));
    EXPECT_TRUE(pinnedRemove("/a1"));          // both hand-written duplicates go
    pinnedShift(m_home + "/a2", 0);
    pinnedShiftSection("B", -1);
    pinnedSetColor("A", std::nullopt);
    pinnedSetColor("B", 0.08);
    pinnedRenameSection("A", "B");             // merge: B's paths, then A's
    pinnedRenameSection("Favorites", "Favs");
    EXPECT_EQ(pinnedRead().secs, (std::vector<PinnedSec>{{"B", {"/b1", "~/a2"}, 0.08}, {"Favs", {}, std::nullopt}}));
    EXPECT_TRUE(pinnedRemoveSection("Favs"));
    EXPECT_FALSE(pinnedRemoveSection("Favs"));
}

// Two processes pinning into the same file at once: edits may be lost (last writer
// wins), but every read sees a whole file.
TEST_F(PinnedFileTest, ConcurrentWritersNeverLeaveATornFile)
{
    constexpr int kWriters = 2, kRounds = 40;
    pid_t pids[kWriters];
    for (int w = 0; w < kWriters; ++w) {
        pids[w] = ::fork();
        ASSERT_GE(pids[w], 0);
        if (pids[w] == 0) {
            for (int i = 0; i < kRounds; ++i)
                pinnedAdd("/w" + std::to_string(w) + "/" + std::to_string(i), "Favorites");
            ::_exit(0);
        }
    }
    auto checkWhole = [&] {
        auto raw = fileReadAll(m_path);
        if (!raw)
            return; // not written yet
        PinnedFile file = pinnedParse(*raw);
        ASSERT_EQ(file.header, kHeader) << *raw;
        ASSERT_EQ(file.secs.size(), 1u) << *raw;
        ASSERT_TRUE(raw->ends_with("]\n")) << *raw;
        ASSERT_EQ(pinnedFormat(file.header, file.secs), *raw);
    };
    for (int w = 0; w < kWriters; ++w) {
        int status = 0;
        while (::waitpid(pids[w], &status, WNOHANG) == 0)
            checkWhole();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    checkWhole();
    size_t count = pinnedRead().secs.at(0).paths.size();
    EXPECT_GE(count, 1u);
    EXPECT_LE(count, size_t(kWriters * kRounds));
}

} // namespace

TEST_F(PinnedFileTest, PathsAndTitlesThatCannotBeStoredAreRefused)
{
    put("# mine\n");
    configNoticesTake();
    const std::string quoted = m_tree.dir("a \"b\" c"), broken = m_tree.dir("one\ntwo");
    EXPECT_FALSE(pinnedAdd(quoted, "Favorites"));
    EXPECT_FALSE(pinnedAdd(broken, "Favorites"));
    EXPECT_FALSE(pinnedAdd(m_tree.root(), "My \"best\""));
    EXPECT_FALSE(pinnedAddSection("Two\nlines"));
    pinnedRenameSection("Favorites", "A \"B\"");
    EXPECT_EQ(text(), "# mine\n"); // nothing written that would read back differently
    EXPECT_EQ(configNoticesTake(),
        (std::vector<std::string>{
            "\u201c" + quoted + "\u201d was not added to the favorites: its path holds a double quote, which pinned.toml cannot store.",
            "\u201c" + broken + "\u201d was not added to the favorites: its path holds a line break, which pinned.toml cannot store.",
            "The section title \u201cMy \"best\"\u201d holds a double quote, which pinned.toml cannot store; the favorites were left as they are.",
            "The section title \u201cTwo\nlines\u201d holds a line break, which pinned.toml cannot store; the favorites were left as they are.",
            "The section title \u201cA \"B\"\u201d holds a double quote, which pinned.toml cannot store; the favorites were left as they are.",
        }));
}

TEST(PinnedLossy, FlagsWhatARewriteWouldDrop)
{
    const std::pair<const char*, bool> cases[] = {
        {"# header \"quoted\" [[section]\n", false}, // the header is kept as it stands
        {"\n[[section]]\ntitle = \"W\"\ncolor = 0.5\npaths = [\n  \"/a\", \"/b\",\n]\n# note\n", false},
        {"[[section]]\npaths = []\n", false},
        {"[[section]]\ntitle = \"W\"\n[[section]\ntitle = \"P\"\n", true}, // mistyped header
        {"[[section]]\ntitle = \"W\n", true},                              // unclosed title
        {"[[section]]\ntitle = W\n", true},
        {"[[section]]\ntitle = \"W\"\ntitle = \"X\"\n", true},
        {"[[section]]\ncolor = blue\n", true},
        {"[[section]]\n  \"/a\n", true},      // unpaired quote
        {"[[section]]\n  \"/a\" junk\n", true}, // text outside the quotes
    };
    for (const auto& [text, lossy] : cases)
        EXPECT_EQ(pinnedLossy(text), lossy) << text;
    EXPECT_FALSE(pinnedLossy(pinnedFormat(std::string(kPinnedDefaultHeader), {{"A", {"/x", "~/y"}, 0.25}, {"", {}, {}}})));
}
