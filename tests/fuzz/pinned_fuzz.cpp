// pinned.toml: any bytes parse, and the written file reads back as the same sections
// under the same header.

#include "config/pinned_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const PinnedFile parsed = pinnedParse(fuzzText(data, size));
    FUZZ_CHECK(pinnedParse(pinnedFormat(parsed.header, parsed.secs)) == parsed);
    return 0;
}
