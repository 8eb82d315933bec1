#include "fs/fmt.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

TEST(Fmt, HumanSizes)
{
    const int64_t KB = 1024, MB = KB * KB, GB = MB * KB, TB = GB * KB;
    struct Case {
        int64_t bytes;
        const char* text;
    } cases[] = {
        {0, "0 B"},           {1023, "1023 B"},        {1024, "1.0 KB"},         {1536, "1.5 KB"},
        {GB, "1.0 GB"},       {TB * 1024, "1024.0 TB"}, {-1, "-1 B"},            {1048575, "1024.0 KB"},
        {MB * 5 / 2, "2.5 MB"}, {INT64_MAX, "8388608.0 TB"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fmtHuman(c.bytes), c.text) << c.bytes;
    EXPECT_EQ(fmtHuman(INT64_MIN), std::to_string(INT64_MIN) + " B");
}

TEST(Fmt, DisplayLengthCountsUtf16Units)
{
    EXPECT_EQ(fmtDisplayLength("abc"), 3u);
    EXPECT_EQ(fmtDisplayLength("caf\u00e9"), 4u);
    EXPECT_EQ(fmtDisplayLength("\U0001F600"), 2u); // outside the BMP: a surrogate pair
    EXPECT_EQ(fmtDisplayLength("bad\xff\xfe"), 5u); // each malformed byte is one U+FFFD
    EXPECT_EQ(fmtDisplayLength("trunc\xe6\x97"), 7u);
    std::string out;
    fmtAppendPadded(out, "\u00e9", 3);
    EXPECT_EQ(out, "\u00e9  ");
    out.clear();
    fmtAppendPadded(out, "toolong", 3);
    EXPECT_EQ(out, "toolong");
}

TEST(Fmt, DatesUseTheLocaleAndZone)
{
    // Formatted in the process's zone; the formatter is created once, so the zone is
    // fixed before its first use in this process.
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    std::string text = dateFmt(1795303200); // 2026-11-21 23:20:00 UTC
    EXPECT_NE(text.find("Nov 21, 2026"), std::string::npos) << text;
    EXPECT_NE(text.find("11:20"), std::string::npos) << text;
}
