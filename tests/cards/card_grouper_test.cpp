#include "cards/card_grouper.h"
#include "cards/lab_group_kind.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

// Central European time with its daylight-saving rule, spelt out so that no time zone
// database is needed.
class LocalTime : public ::testing::Test {
protected:
    void SetUp() override
    {
        ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        ::tzset();
    }
    void TearDown() override
    {
        ::unsetenv("TZ");
        ::tzset();
    }
    static int64_t at(int year, int month, int day, int hour, int minute)
    {
        std::tm tm{};
        tm.tm_year = year - 1900;
        tm.tm_mon = month - 1;
        tm.tm_mday = day;
        tm.tm_hour = hour;
        tm.tm_min = minute;
        tm.tm_isdst = -1;
        return int64_t(std::mktime(&tm));
    }
};

DirNodePtr node(const std::string& name, bool isDir = false, std::optional<int64_t> date = std::nullopt)
{
    auto n = DirNode::make();
    n->name = name;
    n->path = "/data/" + name;
    n->isDir = isDir;
    n->dateModified = date;
    return n;
}

std::vector<std::string> titles(const std::vector<CardGroup>& groups)
{
    std::vector<std::string> out;
    for (const auto& g : groups)
        out.push_back(g.title + ":" + std::to_string(g.nodes.size()));
    return out;
}

TEST_F(LocalTime, DateBucketsCountCalendarDays)
{
    const int64_t now = at(2024, 3, 15, 0, 1);
    struct Case {
        std::optional<int64_t> date;
        int bucket;
    };
    const Case cases[] = {
        {at(2024, 3, 15, 0, 0), 0},    {at(2024, 3, 16, 9, 0), 0},  // tomorrow counts as today
        {at(2030, 1, 1, 0, 0), 0},     {at(2024, 3, 14, 23, 59), 1}, // two minutes ago, but yesterday
        {at(2024, 3, 14, 0, 0), 1},    {at(2024, 3, 13, 23, 59), 2}, {at(2024, 3, 8, 0, 0), 2},
        {at(2024, 3, 7, 23, 59), 3},   {at(2024, 2, 14, 0, 0), 3},  {at(2024, 2, 13, 23, 0), 4},
        {std::nullopt, 4},
    };
    for (const Case& k : cases)
        EXPECT_EQ(cardDateBucket(k.date, now), k.bucket) << (k.date ? *k.date : -1);
}

TEST_F(LocalTime, DateBucketsFollowTheLocalDayAcrossDaylightSaving)
{
    // 31 March 2024 had 23 hours here: 00:30 that day is yesterday at 00:30 on 1 April.
    EXPECT_EQ(cardDateBucket(at(2024, 3, 31, 0, 30), at(2024, 4, 1, 0, 30)), 1);
    // The same instants in UTC+14 fall on other days: still one day apart, never zero.
    ::setenv("TZ", "UTC-14", 1);
    ::tzset();
    EXPECT_EQ(cardDateBucket(at(2024, 3, 31, 23, 0), at(2024, 4, 1, 0, 30)), 1);
}

TEST_F(LocalTime, DateGrouperEmitsNonEmptyBucketsInOrder)
{
    const int64_t now = at(2024, 6, 1, 12, 0);
    const auto& date = cardGrouperFor("date");
    auto groups = date.group({node("a", false, std::nullopt), node("b", false, at(2024, 5, 31, 8, 0)),
                              node("c", false, at(2024, 6, 1, 1, 0)), node("d", false, at(2024, 5, 31, 20, 0))},
                             now);
    EXPECT_EQ(titles(groups), (std::vector<std::string>{"Today:1", "Yesterday:2", "Earlier:1"}));
    EXPECT_EQ(groups[1].nodes[0]->name, "b"); // incoming order kept
    EXPECT_DOUBLE_EQ(*groups[0].hue, 0.6);
    EXPECT_DOUBLE_EQ(*groups[1].hue, 0.5);
    EXPECT_DOUBLE_EQ(*groups[2].hue, 0.2);
    EXPECT_TRUE(date.group({}, now).empty());
    EXPECT_EQ(date.titles(), (std::vector<std::string>{"Today", "Yesterday", "Previous 7 Days", "Previous 30 Days",
                                                       "Earlier"}));
}

TEST(CardGrouper, RegistryAndFallback)
{
    std::vector<std::string> keys;
    for (const auto& g : cardGroupers())
        keys.push_back(g->key());
    EXPECT_EQ(keys, (std::vector<std::string>{"none", "date", "kind"}));
    // "none" and an unknown key both give one untitled group, also for no nodes.
    for (const char* key : {"none", "bogus", ""}) {
        auto groups = cardGrouperFor(key).group({}, 0);
        ASSERT_EQ(groups.size(), 1u) << key;
        EXPECT_EQ(groups[0].title, "");
        EXPECT_FALSE(groups[0].hue);
    }
    EXPECT_EQ(cardGrouperFor("bogus").key(), "");
}

TEST(LabGroupKind, ClassifiesByTypeOfExtension)
{
    struct Case {
        const char* name;
        bool isDir;
        const char* kind;
    };
    const Case cases[] = {
        {"Photos.app", true, "Apps"},      {"Photos", true, "Folders"},     {"holiday.png", true, "Folders"},
        {"notes.txt", false, "Documents"}, {"movie.mov", false, "Media"},   {"song.MP3", false, "Media"},
        {"x.zip", false, "Archives"},      {"README", false, "Other"},      {"data.xyz123", false, "Other"},
        {"report.pdf", false, "Documents"}, {"photo.JPG", false, "Images"}, {"logo.svg", false, "Images"},
        {"backup.tar.gz", false, "Archives"}, {"src.tgz", false, "Archives"}, {"disk.iso", false, "Archives"},
        {"pkg.deb", false, "Archives"},     {"tool.AppImage", false, "Apps"}, {"setup.exe", false, "Apps"},
        {"editor.desktop", false, "Apps"},  {"run.sh", false, "Documents"},   {"data.json", false, "Documents"},
        {".bashrc", false, "Other"},        {"trailing.", false, "Other"},
    };
    for (const Case& k : cases)
        EXPECT_EQ(labGroupKindOf(k.isDir, "/x/" + std::string(k.name)).title(), k.kind) << k.name;
    EXPECT_EQ(labGroup(false, std::nullopt), "Other");
    EXPECT_EQ(labGroup(true, std::nullopt), "Folders");
}

TEST(LabGroupKind, KindGrouperUsesRegistryOrder)
{
    std::vector<std::string> kinds;
    for (const auto& k : labGroupKinds())
        kinds.push_back(k->title());
    const std::vector<std::string> expect{"Drives", "Folders", "Apps", "Images", "Media", "Documents", "Archives",
                                          "Other"};
    EXPECT_EQ(kinds, expect);
    const auto& kind = cardGrouperFor("kind");
    EXPECT_EQ(kind.titles(), expect);
    auto groups = kind.group({node("b.zip"), node("z.txt"), node("Music", true), node("a.txt"), node("noext")}, 0);
    EXPECT_EQ(titles(groups), (std::vector<std::string>{"Folders:1", "Documents:2", "Archives:1", "Other:1"}));
    EXPECT_EQ(groups[1].nodes[0]->name, "z.txt");
    EXPECT_DOUBLE_EQ(*groups[0].hue, 0.58);
    EXPECT_FALSE(groups[3].hue);
    EXPECT_TRUE(kind.group({}, 0).empty());
}

} // namespace
