// cards/<key>.toml: any bytes parse into options within their ranges, and the written
// file reads back the same (sizes and widths are stored as whole points), for both
// card families.

#include "cards/card_config.h"
#include "fuzz_check.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    for (std::string_view family : {"drives", "files"}) {
        const CardConfig parsed = cardConfigParse(fuzzText(data, size), family);
        FUZZ_CHECK(parsed.iconSize >= 16 && parsed.iconSize <= 128);
        FUZZ_CHECK(parsed.legendRows >= 1 && parsed.legendRows <= 30);
        FUZZ_CHECK(parsed.tileWidth >= 140 && parsed.tileWidth <= 600);
        CardConfig whole = parsed;
        whole.iconSize = std::trunc(whole.iconSize);
        whole.tileWidth = std::trunc(whole.tileWidth);
        FUZZ_CHECK(cardConfigParse(cardConfigFormat("fuzz", parsed), family) == whole);
    }
    return 0;
}
