#pragma once

#include "app/cli_output.h"
#include "app/launch_args.h"
#include "cards/card_menu.h"

#include <cstddef>
#include <vector>

// "cards" and "card": one handler for both words. With no arguments it lists the cards;
// otherwise `<key> menu` prints the card's menu and `<key> set <field> <value>` changes
// one option.
struct CLICards {
    static int run(const Args& args, CliOut& out);
    static int runCards(const Args& args, CliOut& out) { return run(args, out); }
    static int runCard(const Args& args, CliOut& out) { return run(args, out); }

    // The menu's text form: one line per item, submenus indented two spaces per level.
    static void printMenu(const std::vector<CardMenuItem>& menu, size_t depth, CliOut& out);
};
