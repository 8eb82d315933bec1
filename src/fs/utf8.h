#pragma once
// Decoding UTF-8 one character at a time, strictly (no overlong forms, no surrogates,
// nothing above U+10FFFF). Names on Linux are bytes: callers decide what a malformed
// byte means to them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The length in bytes of the well-formed character at `s[i]` (storing it in `cp`), or 0
// when the bytes there are not one.
size_t utf8Decode(std::string_view s, size_t i, uint32_t& cp);

// Whether all of `s` is well-formed UTF-8.
bool utf8Valid(std::string_view s);

// Whether every byte of `s` is ASCII.
bool asciiOnly(std::string_view s);

enum class CaseMap { Upper, Lower };

// Full Unicode case mapping (root locale) of valid UTF-8; anything else, or a text ICU
// cannot map, comes back unchanged.
std::string utf8CaseMapped(std::string_view s, CaseMap map);
