#include "app/cli_trash.h"

#include "fs/trash_op.h"

int CLITrash::run(const Args& args, CliOut& out)
{
    if (args.empty()) {
        out.line("Usage: brondel trash <path>");
        return 0;
    }
    TrashOp::Outcome outcome = TrashOp::trash(args[0]); // as typed: no tilde expansion
    if (!outcome) {
        out.line("Error: " + TrashOp::describe(outcome.error));
        return 0;
    }
    out.line("Trashed: " + outcome.result->path);
    out.line("     \u2192 " + outcome.result->trashedTo);
    return 0;
}
