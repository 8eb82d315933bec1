#include "fs/collation.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

TEST(Collation, NumericCaseInsensitiveAccentSensitive)
{
    const NameCollator& c = NameCollator::forThread();
    EXPECT_LT(c.compare("file2", "file10"), 0);
    EXPECT_LT(c.compare("apple", "Banana"), 0);
    EXPECT_EQ(c.compare("README", "readme"), 0);
    EXPECT_NE(c.compare("resume", "r\u00e9sum\u00e9"), 0);
    EXPECT_LT(c.compare("a", "\u00e4b"), 0);
    EXPECT_NE(c.compare("bad\xff", "bad"), 0); // malformed bytes still take part
    EXPECT_LT(c.sortKey("file2"), c.sortKey("file10"));
    EXPECT_EQ(c.sortKey("Photo"), c.sortKey("photo"));
}

// The fast ASCII comparison must give ICU's answer for every pair, or sorting a folder
// would depend on which path a folder happened to take.
TEST(Collation, AsciiTableAgreesWithIcu)
{
    const NameCollator& c = NameCollator::forThread();
    if (!c.hasAsciiFastPath())
        GTEST_SKIP() << "tailored locale: ICU compares every name";
    const std::string alphabet = std::string("aAbBzZ09123 _-.,;:!?'\"()[]{}@*/\\&#%`^+<=>|~$\t\x01\x7f");
    std::mt19937 rng(7);
    auto randomName = [&] {
        std::string s;
        size_t len = rng() % 7;
        for (size_t i = 0; i < len; ++i)
            s += alphabet[rng() % alphabet.size()];
        return s;
    };
    auto sign = [](int v) { return (v > 0) - (v < 0); };
    const char* pairs[][2] = {{"a01", "a1"}, {"a0", "a"}, {"x-1", "x_1"}, {"file 2", "file2"},
                              {"007", "7"},   {"a10b", "a9c"}, {"", "\x01"}, {"1.10", "1.9"}};
    for (auto& p : pairs)
        EXPECT_EQ(sign(c.compareAscii(p[0], p[1])), sign(c.sortKey(p[0]).compare(c.sortKey(p[1]))))
            << p[0] << " vs " << p[1];
    int mismatches = 0;
    for (int i = 0; i < 100000 && mismatches < 5; ++i) {
        std::string a = randomName(), b = randomName();
        int expected = sign(c.sortKey(a).compare(c.sortKey(b)));
        if (sign(c.compareAscii(a, b)) != expected || sign(c.asciiKey(a).compare(c.asciiKey(b))) != expected) {
            ADD_FAILURE() << "'" << a << "' vs '" << b << "'";
            ++mismatches;
        }
    }
}

// ICU compares a digit run by value in segments of at most 254 digits; runs around that
// length (names may be 255 bytes) must order as ICU orders them, by both fast forms.
TEST(Collation, LongDigitRunsOrderAsIcuSplitsThem)
{
    const NameCollator& c = NameCollator::forThread();
    if (!c.hasAsciiFastPath())
        GTEST_SKIP() << "tailored locale: ICU compares every name";
    auto sign = [](int v) { return (v > 0) - (v < 0); };
    std::vector<std::string> names;
    for (size_t length : {1, 2, 253, 254, 255})
        for (const char* tail : {"", "x", "0", "5", "-"}) {
            names.push_back("1" + std::string(length - 1, '0') + tail);
            names.push_back(std::string(length, '9') + tail);
            names.push_back(std::string(length, '0') + tail);
            names.push_back("0" + std::string(length - 1, '9') + tail);
        }
    names.push_back(std::string(254, '1') + "000");
    names.push_back(std::string(254, '1') + "0001");
    names.push_back("a" + std::string(254, '7'));
    for (const std::string& a : names)
        for (const std::string& b : names) {
            const int expected = sign(c.sortKey(a).compare(c.sortKey(b)));
            EXPECT_EQ(sign(c.compareAscii(a, b)), expected) << a.size() << " " << a << " vs " << b;
            EXPECT_EQ(sign(c.asciiKey(a).compare(c.asciiKey(b))), expected) << a << " vs " << b;
        }
}
