#include "app/cli_router.h"

#include "app/cli_cards.h"
#include "app/cli_info.h"
#include "app/cli_infos.h"
#include "app/cli_list.h"
#include "app/cli_peek_styles.h"
#include "app/cli_search.h"
#include "app/cli_trash.h"
#include "app/cli_volumes.h"

#include <string_view>

const char* const CLIRouter::kUsage =
    "brondel \u2014 native file manager\n"
    "Usage: brondel [command] [args...]\n"
    "  list <path>          List directory contents\n"
    "  info <path>          Show file metadata\n"
    "  search <path> <q>    Search by name\n"
    "  trash <path>         Move to Trash\n"
    "  volumes              Show mounted drives\n"
    "  peek-styles          List Cmd+4 Peek styles (* = saved)\n"
    "  infos [on|off <key>] List size info modules, or enable/disable one\n"
    "  cards                List cards (Downloads\u2026, Drives) + config files\n"
    "  card <key> menu      Print a card's \u22ef menu (\u2713 = current)\n"
    "  card <key> set <f> <v>  Change one card option (layout, group, sort, icon_size\u2026)\n"
    "  <path>...            Open GUI (no command)";

namespace {

using Handler = int (*)(const Args&, CliOut&);

int usage(const Args&, CliOut& out)
{
    out.line(CLIRouter::kUsage);
    return 0;
}
int volumes(const Args&, CliOut& out) { return CLIVolumes::run(out); }
int peekStyles(const Args&, CliOut& out) { return CLIPeekStyles::run(out); }

struct Command {
    std::string_view word;
    Handler handler;
};

// Compared in this order; the first equal word wins.
const Command kCommands[] = {
    {"list", CLIList::run},     {"info", CLIInfo::run},           {"search", CLISearch::run},
    {"trash", CLITrash::run},   {"volumes", volumes},             {"peek-styles", peekStyles},
    {"infos", CLIInfos::run},   {"cards", CLICards::runCards},    {"card", CLICards::runCard},
    {"--help", usage},          {"-h", usage},
};

} // namespace

std::optional<int> CLIRouter::run(const Args& args, CliOut& out)
{
    if (args.empty())
        return std::nullopt;
    for (const Command& command : kCommands)
        if (args[0] == command.word)
            return command.handler(Args(args.begin() + 1, args.end()), out);
    return std::nullopt;
}
