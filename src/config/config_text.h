#pragma once
// The line-reading schemes shared by the configuration files. Pure functions over text:
// no file is touched here (config_file.h does the I/O). Every reader is lenient and
// never reports an error; a line it cannot use yields nothing.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Splits at every "\n". A "\r" stays part of its line, deliberately.
std::vector<std::string_view> configSplitLines(std::string_view text);

// Trims horizontal white space (space, tab and the Unicode space separators) from both
// ends. Line breaks, "\r" included, are not white space here.
std::string_view configTrim(std::string_view text);

// Settings scheme: "key = value" with an optional quoted value and "#" comments.
// Comment lines and lines without "=" give nothing.
std::optional<std::pair<std::string, std::string>> configKeyValue(std::string_view line);

// Card-file scheme: cut at the first "#", trim, split at the first "=", strip every
// leading and trailing double quote of the value.
std::optional<std::pair<std::string, std::string>> configCardKeyValue(std::string_view line);

// Quoted-string scheme: the texts between the 1st and 2nd, 3rd and 4th, ... double quote.
std::vector<std::string> configQuotedStrings(std::string_view line);

// Whether a line of quoted paths (favourites, sidebar; already trimmed, not a title or
// comment line) holds something its reader drops: an unpaired quote, or text outside the
// quotes other than the "paths = [", "]" and comma punctuation the files are written with.
bool configPathLineLossy(std::string_view line);

// Whether a title line (`title = "..."`) is read whole: exactly one quoted string,
// nothing but "title =" outside it.
bool configTitleLineLossy(std::string_view line);

// Boolean rule: exactly "true" is true.
bool configBool(std::string_view value);

// Decimal integer with an optional single "+" or "-"; anything else (empty, junk,
// overflow of 64 bits) gives nothing.
std::optional<int64_t> configParseInt(std::string_view value);

// Decimal number with an optional single "+" or "-" ("0.58", ".5", "1e-3"); the whole
// text must be the number. Empty text, junk, infinities and NaN give nothing.
std::optional<double> configParseDouble(std::string_view value);

// The shortest plain decimal text that reads back to the same double ("0.58", "0.5", "1").
std::string configFormatDouble(double value);

// Whether the bytes are well-formed UTF-8.
bool configIsUtf8(std::string_view bytes);
