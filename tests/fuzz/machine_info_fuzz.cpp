// /etc/machine-info: any bytes parse, and an assignment appended on its own line wins.

#include "fs/computer_root.h"
#include "fuzz_check.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text = fuzzText(data, size);
    (void)machineInfoValue(text, "PRETTY_HOSTNAME");
    const std::string appended = std::string(text) + "\nPRETTY_HOSTNAME=\"Last \\\"one\\\"\"\n";
    FUZZ_CHECK(machineInfoValue(appended, "PRETTY_HOSTNAME") == std::optional<std::string>("Last \"one\""));
    return 0;
}
