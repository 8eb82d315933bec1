#include "app/cli_info.h"

#include "fs/file_info.h"
#include "fs/fmt.h"

int CLIInfo::run(const Args& args, CliOut& out)
{
    if (args.empty()) {
        out.line("Usage: brondel info <path>");
        return 0;
    }
    const FileInfo info = FileInfo::gather(args[0]); // as typed: no tilde expansion
    out.line("  Name:     " + info.name);
    out.line("  Path:     " + info.path);
    out.line("  Kind:     " + info.kind);
    out.line("  Size:     " + fmtHuman(info.size));
    out.line("  Perms:    " + info.permissions);
    if (info.created)
        out.line("  Created:  " + dateFmt(*info.created));
    if (info.modified)
        out.line("  Modified: " + dateFmt(*info.modified));
    return 0;
}
