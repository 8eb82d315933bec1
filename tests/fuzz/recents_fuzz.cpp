// recents.txt: any bytes parse, and the written list reads back the same.

#include "config/recents.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::vector<std::string> parsed = recentsParse(fuzzText(data, size));
    FUZZ_CHECK(recentsParse(recentsFormat(parsed)) == parsed);
    return 0;
}
