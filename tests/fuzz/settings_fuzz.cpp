// settings.toml: any bytes parse, and what the writer makes of the result reads back
// as the same settings.

#include "config/settings_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const BrondelSettings parsed = settingsParse(fuzzText(data, size));
    FUZZ_CHECK(parsed.recentCount >= 0 && parsed.recentCount <= 50);
    FUZZ_CHECK(settingsParse(settingsFormat(parsed)) == parsed);
    return 0;
}
