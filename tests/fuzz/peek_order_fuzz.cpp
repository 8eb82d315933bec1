// peek-order.toml: any bytes parse, and the written order reads back the same.

#include "config/peek_order.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::vector<std::string> parsed = peekOrderParse(fuzzText(data, size));
    FUZZ_CHECK(peekOrderParse(peekOrderFormat(parsed)) == parsed);
    return 0;
}
