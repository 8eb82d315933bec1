#include "app/cli_volumes.h"

#include "fs/fmt.h"
#include "fs/volume_list.h"

#include <algorithm>
#include <cstdio>

int CLIVolumes::run(CliOut& out)
{
    print(VolumeList::mounted(), out);
    return 0;
}

void CLIVolumes::print(const std::vector<Volume>& volumes, CliOut& out)
{
    if (volumes.empty()) {
        out.line("No external volumes mounted.");
        return;
    }
    size_t nameWidth = 0;
    for (const Volume& volume : volumes)
        nameWidth = std::max(nameWidth, fmtDisplayLength(volume.name));

    std::string line;
    fmtAppendPadded(line, "Name", nameWidth + 2);
    fmtAppendPadded(line, "Used", 12);
    fmtAppendPadded(line, "Free", 12);
    line += "Total";
    out.line(line);

    line.clear();
    for (size_t i = 0; i < nameWidth + 38; ++i)
        line += "\u2500";
    out.line(line);

    for (const Volume& volume : volumes) {
        if (!volume.responding) {
            line.clear();
            fmtAppendPadded(line, volume.name, nameWidth + 2);
            line += kNotRespondingText;
            out.line(line);
            continue;
        }
        const int64_t used = volume.usedBytes();
        const double percent = volume.totalBytes < 1 ? 0.0 : double(used) / double(volume.totalBytes) * 100.0;
        char percentText[32];
        std::snprintf(percentText, sizeof percentText, "%.0f%%", percent);
        line.clear();
        fmtAppendPadded(line, volume.name, nameWidth + 2);
        fmtAppendPadded(line, fmtHuman(used), 12);
        fmtAppendPadded(line, fmtHuman(volume.freeBytes), 12);
        line += fmtHuman(volume.totalBytes);
        line += "  (";
        line += percentText;
        line += ")";
        out.line(line);
    }
}
