#pragma once

#include "app/cli_output.h"

struct CLIPeekStyles {
    static int run(CliOut& out);
};
