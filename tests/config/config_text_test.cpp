#include "config/config_text.h"

#include <gtest/gtest.h>

using KV = std::optional<std::pair<std::string, std::string>>;

TEST(ConfigText, SettingsSchemeLines)
{
    struct Case {
        const char* line;
        KV expected;
    } cases[] = {
        {R"(sort_by = "size"   # note)", std::pair{"sort_by", "size"}},
        {"sort_by = size # note", std::pair{"sort_by", "size"}},
        {R"(sort_by = "size)", std::pair{"sort_by", "\"size"}}, // unclosed quote stays
        {"show_hidden=true", std::pair{"show_hidden", "true"}},
        {"show_hidden", std::nullopt},
        {"#show_hidden = true", std::nullopt},
        {"   # indented comment = x", std::nullopt},
        {"[section]", std::nullopt},
        {"a = b = c", std::pair{"a", "b = c"}},
        {R"(t = "a#b" trailing)", std::pair{"t", "a#b"}},
        {R"(t = "back\slash")", std::pair{"t", "back\\slash"}},
        {"flag = true\r", std::pair{"flag", "true\r"}}, // CR-LF files keep the CR
        {"\xc2\xa0key\t=\xe3\x80\x80value ", std::pair{"key", "value"}},
        // U+2009 is a space; a broken sequence whose third byte is ASCII is not.
        {"k = v\xe2\x80\x89", std::pair{"k", "v"}},
        {"k = v\xe2\x80!", std::pair{"k", "v\xe2\x80!"}},
        {"empty =", std::pair{"empty", ""}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(configKeyValue(c.line), c.expected) << c.line;
}

TEST(ConfigText, CardSchemeCutsAtHashFirst)
{
    EXPECT_EQ(configCardKeyValue(R"(title = "A#B")"), (KV{std::pair{"title", "A"}}));
    EXPECT_EQ(configCardKeyValue(R"(layout = ""grid"" )"), (KV{std::pair{"layout", "grid"}}));
    EXPECT_EQ(configCardKeyValue("# only a comment = 1"), std::nullopt);
    EXPECT_EQ(configCardKeyValue("no equals"), std::nullopt);
    // A broken UTF-8 sequence before the closing quote keeps the quote from being trimmed.
    EXPECT_EQ(configCardKeyValue("group = \"kind\" \xe2\x80\"   "), (KV{std::pair{"group", "kind\" \xe2\x80"}}));
}

TEST(ConfigText, QuotedStrings)
{
    using V = std::vector<std::string>;
    EXPECT_EQ(configQuotedStrings(R"("~/My "odd" dir",)"), (V{"~/My ", " dir"}));
    EXPECT_EQ(configQuotedStrings(R"(  "a", "b#c"  )"), (V{"a", "b#c"}));
    EXPECT_EQ(configQuotedStrings(R"("a", "unpaired)"), (V{"a"}));
    EXPECT_EQ(configQuotedStrings(R"("")"), (V{""}));
    EXPECT_EQ(configQuotedStrings("no quotes"), V{});
}

TEST(ConfigText, IntegersAndBooleans)
{
    EXPECT_EQ(configParseInt("+12"), 12);
    EXPECT_EQ(configParseInt("-3"), -3);
    EXPECT_EQ(configParseInt("-9223372036854775808"), INT64_MIN);
    for (const char* bad : {"", "7x", "+", "-", "1 ", " 1", "++1", "9223372036854775808", "0x10", "1.5"})
        EXPECT_EQ(configParseInt(bad), std::nullopt) << bad;
    EXPECT_TRUE(configBool("true"));
    for (const char* no : {"TRUE", "True", "", "yes", "1", "true\r"})
        EXPECT_FALSE(configBool(no)) << no;
}

TEST(ConfigText, LinesAndUtf8)
{
    EXPECT_EQ(configSplitLines("a\r\nb\n").size(), 3u);
    EXPECT_EQ(configSplitLines("a\r\nb\n")[0], "a\r");
    EXPECT_TRUE(configIsUtf8("caf\xc3\xa9 \xf0\x9f\x98\x80"));
    for (const char* bad : {"\xff", "\xc3", "\xe6\x97", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80"})
        EXPECT_FALSE(configIsUtf8(bad)) << bad;
}
