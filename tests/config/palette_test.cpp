#include "config/config_file.h"
#include "config/config_file_fixture.h"
#include "config/config_text.h"
#include "config/palette.h"

#include <filesystem>
#include <iterator>

namespace {

class PaletteTest : public ConfigFileTest {
protected:
    PaletteTest() : ConfigFileTest("BRONDEL_PALETTE", "colors/palette.toml") {}
};

size_t entries(const std::string& dir)
{
    return size_t(std::distance(std::filesystem::directory_iterator(dir), std::filesystem::directory_iterator()));
}

PinnedSec sec(const std::string& title, std::optional<double> color = std::nullopt) { return {title, {}, color}; }

TEST_F(PaletteTest, MissingFileIsWrittenWithTheDefaultsAndRead)
{
    Palette palette = pinnedPalette();
    EXPECT_EQ(text(), kPaletteDefaultText);
    EXPECT_EQ(palette.size(), 8u);
    EXPECT_EQ(palette.back(), (PaletteEntry{"Red", 0.0}));
}

TEST_F(PaletteTest, LenientLinesAndTheBlueFallback)
{
    EXPECT_EQ(paletteParse("Gray = none\n# Cyan = 0.5\nnoequals\n  Mint=0.45  \nMint = 2\nX = 0.1 # c\nY = 0.2\r\n"),
              (Palette{{"Mint", 0.45}, {"Mint", 2}}));
    fileWriteAtomic(m_path, "# only comments\n");
    EXPECT_EQ(pinnedPalette(), (Palette{{"Blue", 0.58}}));
    fileWriteAtomic(m_path, "Odd = 0.5\n\xff\n"); // not UTF-8: unreadable
    EXPECT_EQ(pinnedPalette(), (Palette{{"Blue", 0.58}}));
}

TEST_F(PaletteTest, AssignsUnusedPaletteHuesInFileOrder)
{
    const Palette palette = paletteParse(kPaletteDefaultText);
    auto hues = pinnedAssignHues({sec("A"), sec("B"), sec("C")}, palette);
    EXPECT_EQ(hues, (std::map<std::string, double>{{"A", 0.58}, {"B", 0.08}, {"C", 0.33}}));

    hues = pinnedAssignHues({sec("A", 0.58), sec("B"), sec("C", 0.33), sec("B", 0.9), sec("D")}, palette);
    EXPECT_EQ(hues, (std::map<std::string, double>{{"A", 0.58}, {"B", 0.08}, {"C", 0.33}, {"D", 0.75}}));

    std::vector<PinnedSec> nine;
    for (int i = 1; i <= 9; ++i)
        nine.push_back(sec("S" + std::to_string(i)));
    hues = pinnedAssignHues(nine, palette);
    EXPECT_EQ(hues["S8"], 0.0);
    EXPECT_EQ(hues["S9"], palette[paletteTitleHash("S9") % 8].hue);
}

TEST_F(PaletteTest, TitleHashIsFnv1aOverScalarValues)
{
    EXPECT_EQ(paletteTitleHash(""), 2166136261u);
    EXPECT_EQ(paletteTitleHash("a"), 0xe40c292cu);
    EXPECT_EQ(paletteTitleHash("foobar"), 0xbf9cf968u);
    // "é" is one scalar value (0xE9), not its two UTF-8 bytes.
    EXPECT_EQ(paletteTitleHash("\xc3\xa9"), (2166136261u ^ 0xE9u) * 16777619u);
    EXPECT_EQ(paletteTitleHash("\xff"), paletteTitleHash("\xef\xbf\xbd")); // malformed byte = U+FFFD
}

TEST(ConfigNumbers, DecimalParseAndShortestForm)
{
    EXPECT_EQ(configParseDouble("+.5"), 0.5);
    for (const char* junk : {"", "+", "0.5x", " 0.5", "inf", "nan", "+-1", "0x1p3", "1,5"})
        EXPECT_EQ(configParseDouble(junk), std::nullopt) << junk;
    for (double hue : {0.1 + 0.2, 1e-7})
        EXPECT_EQ(configParseDouble(configFormatDouble(hue)), hue);
}

TEST_F(PaletteTest, WriteReadsBackAndKeepsWhatItCannotRead)
{
    // The default file rewritten unchanged keeps no backup: "0.0" reading back as 0 is no loss.
    pinnedPalette();
    const Palette edited{{"Blue", 0.58}, {" Sea ", 0.52}, {"Red", 0.0}};
    ASSERT_TRUE(paletteWrite(edited));
    EXPECT_EQ(pinnedPalette(), (Palette{{"Blue", 0.58}, {"Sea", 0.52}, {"Red", 0.0}}));
    EXPECT_FALSE(paletteLossy(text()));
    EXPECT_EQ(entries(m_tree.path("colors")), 1u);

    struct Case {
        const char* name;
        bool storable;
    };
    for (const Case& c : {Case{"A=B", false}, Case{"# x", false}, Case{"Two\nLines", false}, Case{"  ", false},
             Case{"Ok #1", true}}) {
        EXPECT_EQ(paletteUnstorableName(c.name).has_value(), !c.storable) << c.name;
        EXPECT_EQ(paletteWrite({{c.name, 0.1}}), c.storable) << c.name;
    }

    // A hand comment or a malformed line is kept in a backup before the rewrite.
    fileWriteAtomic(m_path, "# head\nBlue = 0.58\n# mine\nGray = none\n");
    EXPECT_TRUE(paletteLossy(text()));
    ASSERT_TRUE(paletteWrite({{"Blue", 0.6}}));
    EXPECT_EQ(entries(m_tree.path("colors")), 2u);
}

} // namespace
