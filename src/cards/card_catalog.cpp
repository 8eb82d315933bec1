#include "cards/card_catalog.h"

#include "cards/card_sections.h"
#include "cards/downloads.h"
#include "fs/volume_list.h"

std::vector<CardEntry> cardListFrom(const std::vector<std::string>& downloadsTitles, const std::string& drivesTitle)
{
    std::vector<CardEntry> cards;
    for (const std::string& title : downloadsTitles)
        cards.push_back({cardKey(title), title, "files"});
    cards.push_back({"drives", drivesTitle, "drives"});
    return cards;
}

std::vector<CardEntry> cardList(const BrondelSettings& settings)
{
    const std::vector<Volume> volumes = VolumeList::mounted();
    std::vector<std::string> titles;
    for (const std::string& folder : downloadsFolders(volumes))
        titles.push_back(downloadsTitle(folder, volumes));
    return cardListFrom(titles, settings.drivesTitle);
}

std::optional<CardEntry> cardFind(const std::vector<CardEntry>& cards, const std::string& key)
{
    for (const CardEntry& card : cards)
        if (card.key == key)
            return card;
    return std::nullopt;
}
