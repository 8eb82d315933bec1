// sidebar.toml: any bytes parse, and the written file reads back the same.

#include "config/sidebar_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const SidebarFile parsed = sidebarParse(fuzzText(data, size));
    FUZZ_CHECK(sidebarParse(sidebarFormat(parsed.title, parsed.paths)) == parsed);
    return 0;
}
