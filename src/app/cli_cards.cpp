#include "app/cli_cards.h"

#include "cards/card_catalog.h"
#include "cards/card_config.h"
#include "cards/cards_changed.h"
#include "config/settings_file.h"

void CLICards::printMenu(const std::vector<CardMenuItem>& menu, size_t depth, CliOut& out)
{
    std::string indent;
    for (size_t i = 0; i < depth; ++i)
        indent += "  ";
    for (const CardMenuItem& item : menu) {
        if (item.separator)
            out.line(indent + "\u2500\u2500");
        else
            out.line(indent + (item.on ? "\u2713 " : "  ") + item.title);
        if (!item.submenu.empty())
            printMenu(item.submenu, depth + 1, out);
    }
}

int CLICards::run(const Args& args, CliOut& out)
{
    const BrondelSettings& settings = Settings::current();
    const std::vector<CardEntry> cards = cardList(settings);
    if (args.empty()) {
        for (const CardEntry& card : cards)
            out.line(card.key + "  (" + card.family + ")  " + card.title + "  \u2192 " + cardConfigPath(card.key));
        return 0;
    }
    const std::string& key = args[0];
    const auto card = cardFind(cards, key);
    if (!card) {
        out.line("unknown card: " + key);
        return 0;
    }
    if (args.size() >= 2 && args[1] == "menu") {
        printMenu(cardMenu(key, card->family, settings), 0, out);
        return 0;
    }
    if (args.size() == 4 && args[1] == "set") {
        const std::string& field = args[2];
        const std::string& value = args[3];
        CardConfig config = cardConfigLoad(key, card->family);
        if (!cardConfigSet(config, field, value)) {
            out.line("unknown field: " + field);
            return 0;
        }
        cardConfigSave(key, config);
        cardsChangedPost();
        out.line(key + ": " + field + " = " + value);
        return 0;
    }
    out.line("usage: brondel card <key> menu | set <field> <value>");
    return 0;
}
