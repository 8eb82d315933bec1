// /proc/self/mountinfo: any bytes parse, and each line stands on its own (the table is
// the lines' records in order).

#include "fs/mount_table.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text = fuzzText(data, size);
    const std::vector<MountRecord> whole = mountTableParse(text);
    std::vector<MountRecord> byLine;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        for (MountRecord& record : mountTableParse(text.substr(start, end - start)))
            byLine.push_back(std::move(record));
        start = end + 1;
    }
    FUZZ_CHECK(whole == byLine);
    for (const MountRecord& record : whole)
        FUZZ_CHECK(!record.mountPoint.empty() && !record.fsType.empty());
    return 0;
}
