// The groupers: none, by age in calendar days, by kind.

#include "cards/card_grouper.h"
#include "cards/lab_group_kind.h"

#include <array>
#include <chrono>
#include <ctime>
#include <map>

namespace {

class GrouperNone : public CardGrouper {
public:
    std::string key() const override { return "none"; }
    std::string title() const override { return "None"; }
    int64_t order() const override { return 10; }
};

const std::array<const char*, 5> kDateTitles = {"Today", "Yesterday", "Previous 7 Days", "Previous 30 Days",
                                                "Earlier"};

class GrouperDate : public CardGrouper {
public:
    std::string key() const override { return "date"; }
    std::string title() const override { return "Date"; }
    int64_t order() const override { return 20; }
    std::vector<std::string> titles() const override { return {kDateTitles.begin(), kDateTitles.end()}; }
    std::vector<CardGroup> group(const std::vector<DirNodePtr>& nodes, int64_t now) const override
    {
        ::tzset(); // follow a change of the time zone since the last grouping
        std::array<std::vector<DirNodePtr>, kDateTitles.size()> buckets;
        for (const auto& node : nodes)
            buckets[size_t(cardDateBucket(node->dateModified, now))].push_back(node);
        std::vector<CardGroup> groups;
        for (size_t b = 0; b < buckets.size(); ++b)
            if (!buckets[b].empty())
                groups.push_back({kDateTitles[b], 0.6 - 0.1 * double(b), std::move(buckets[b])});
        return groups;
    }
};

class GrouperKind : public CardGrouper {
public:
    std::string key() const override { return "kind"; }
    std::string title() const override { return "Kind"; }
    int64_t order() const override { return 30; }
    std::vector<std::string> titles() const override
    {
        std::vector<std::string> out;
        for (const auto& kind : labGroupKinds())
            out.push_back(kind->title());
        return out;
    }
    std::vector<CardGroup> group(const std::vector<DirNodePtr>& nodes, int64_t) const override
    {
        std::map<const LabGroupKind*, std::vector<DirNodePtr>> byKind;
        for (const auto& node : nodes)
            byKind[&labGroupKindOf(node->isDir, node->path)].push_back(node);
        std::vector<CardGroup> groups;
        for (const auto& kind : labGroupKinds())
            if (auto it = byKind.find(kind.get()); it != byKind.end())
                groups.push_back({kind->title(), kind->hue(), std::move(it->second)});
        return groups;
    }
};

// Days since 1970-01-01 of the calendar day that `seconds` falls on in local time.
std::optional<int64_t> localDay(int64_t seconds)
{
    const std::time_t t = std::time_t(seconds);
    std::tm tm{};
    if (!::localtime_r(&t, &tm))
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(tm.tm_year + 1900),
                                           std::chrono::month(unsigned(tm.tm_mon + 1)),
                                           std::chrono::day(unsigned(tm.tm_mday))};
    return std::chrono::sys_days(date).time_since_epoch().count();
}

} // namespace

BRONDEL_REGISTER(CardGrouper, GrouperNone)
BRONDEL_REGISTER(CardGrouper, GrouperDate)
BRONDEL_REGISTER(CardGrouper, GrouperKind)

const std::vector<std::unique_ptr<CardGrouper>>& cardGroupers()
{
    return Registry<CardGrouper>::all();
}

const CardGrouper& cardGrouperFor(const std::string& key)
{
    for (const auto& grouper : cardGroupers())
        if (grouper->key() == key)
            return *grouper;
    static const CardGrouper base;
    return base;
}

int cardDateBucket(std::optional<int64_t> date, int64_t now)
{
    if (!date)
        return 4;
    auto today = localDay(now), day = localDay(*date);
    if (!today || !day)
        return 4;
    const int64_t days = *today - *day;
    if (days < 1)
        return 0;
    if (days == 1)
        return 1;
    if (days <= 7)
        return 2;
    if (days <= 30)
        return 3;
    return 4;
}
