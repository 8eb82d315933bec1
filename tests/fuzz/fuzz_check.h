#pragma once
// Shared by the fuzz targets: the input as text, and a property check that stops the
// run with a message, so that libFuzzer keeps the input as a crash file.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

inline std::string_view fuzzText(const uint8_t* data, size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

#define FUZZ_CHECK(condition)                                                                   \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "property broken: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (0)
