#include "config/config_text.h"

#include "fs/text_lines.h"
#include "fs/utf8.h"

#include <charconv>
#include <cmath>

std::vector<std::string_view> configSplitLines(std::string_view text)
{
    return textSplitLines(text);
}

namespace {

// Length of the horizontal white-space character at the start of `s`, or 0.
size_t spaceAtStart(std::string_view s)
{
    if (s.empty())
        return 0;
    unsigned char c = s[0];
    if (c == ' ' || c == '\t')
        return 1;
    // U+00A0
    if (c == 0xC2 && s.size() >= 2 && (unsigned char)s[1] == 0xA0)
        return 2;
    // U+1680
    if (c == 0xE1 && s.size() >= 3 && (unsigned char)s[1] == 0x9A && (unsigned char)s[2] == 0x80)
        return 3;
    if (c == 0xE2 && s.size() >= 3) {
        unsigned char b1 = s[1], b2 = s[2];
        if (b1 == 0x80 && ((b2 >= 0x80 && b2 <= 0x8A) || b2 == 0xAF)) // U+2000..U+200A, U+202F
            return 3;
        if (b1 == 0x81 && b2 == 0x9F) // U+205F
            return 3;
    }
    if (c == 0xE3 && s.size() >= 3 && (unsigned char)s[1] == 0x80 && (unsigned char)s[2] == 0x80)
        return 3; // U+3000
    return 0;
}

size_t spaceAtEnd(std::string_view s)
{
    for (size_t len : {size_t(1), size_t(2), size_t(3)}) {
        if (s.size() < len)
            break;
        std::string_view tail = s.substr(s.size() - len);
        if (spaceAtStart(tail) == len)
            return len;
    }
    return 0;
}

} // namespace

std::string_view configTrim(std::string_view text)
{
    while (size_t n = spaceAtStart(text))
        text.remove_prefix(n);
    while (size_t n = spaceAtEnd(text))
        text.remove_suffix(n);
    return text;
}

std::optional<std::pair<std::string, std::string>> configKeyValue(std::string_view line)
{
    std::string_view t = configTrim(line);
    if (t.starts_with('#'))
        return std::nullopt;
    size_t eq = t.find('=');
    if (eq == std::string_view::npos)
        return std::nullopt;
    std::string_view key = configTrim(t.substr(0, eq));
    std::string_view raw = configTrim(t.substr(eq + 1));
    if (raw.starts_with('"')) {
        size_t close = raw.find('"', 1);
        if (close != std::string_view::npos)
            return std::pair{std::string(key), std::string(raw.substr(1, close - 1))};
    }
    size_t hash = raw.find('#');
    if (hash != std::string_view::npos)
        raw = configTrim(raw.substr(0, hash));
    return std::pair{std::string(key), std::string(raw)};
}

std::optional<std::pair<std::string, std::string>> configCardKeyValue(std::string_view line)
{
    size_t hash = line.find('#');
    if (hash != std::string_view::npos)
        line = line.substr(0, hash);
    std::string_view t = configTrim(line);
    size_t eq = t.find('=');
    if (eq == std::string_view::npos)
        return std::nullopt;
    std::string_view key = configTrim(t.substr(0, eq));
    std::string_view value = configTrim(t.substr(eq + 1));
    while (value.starts_with('"'))
        value.remove_prefix(1);
    while (value.ends_with('"'))
        value.remove_suffix(1);
    return std::pair{std::string(key), std::string(value)};
}

std::vector<std::string> configQuotedStrings(std::string_view line)
{
    std::vector<std::string> out;
    std::string_view t = configTrim(line);
    size_t pos = 0;
    for (;;) {
        size_t open = t.find('"', pos);
        if (open == std::string_view::npos)
            return out;
        size_t close = t.find('"', open + 1);
        if (close == std::string_view::npos)
            return out;
        out.emplace_back(t.substr(open + 1, close - open - 1));
        pos = close + 1;
    }
}

namespace {

// The line without its quoted strings, spaces and commas; nothing when a quote is unpaired.
std::optional<std::string> outsideQuotes(std::string_view line)
{
    std::string rest;
    bool quoted = false;
    for (char c : line) {
        if (c == '"')
            quoted = !quoted;
        else if (!quoted && c != ' ' && c != '\t' && c != ',')
            rest += c;
    }
    if (quoted)
        return std::nullopt;
    return rest;
}

} // namespace

bool configPathLineLossy(std::string_view line)
{
    std::optional<std::string> rest = outsideQuotes(line);
    return !rest || !(rest->empty() || *rest == "paths=[" || *rest == "]" || *rest == "paths=[]" || *rest == "[");
}

bool configTitleLineLossy(std::string_view line)
{
    std::optional<std::string> rest = outsideQuotes(line);
    return !rest || *rest != "title=" || configQuotedStrings(line).size() != 1;
}

bool configBool(std::string_view value)
{
    return value == "true";
}

std::optional<int64_t> configParseInt(std::string_view value)
{
    bool negative = false;
    if (!value.empty() && (value[0] == '+' || value[0] == '-')) {
        negative = value[0] == '-';
        value.remove_prefix(1);
    }
    if (value.empty())
        return std::nullopt;
    for (char c : value)
        if (c < '0' || c > '9')
            return std::nullopt;
    // Parse with the sign attached so that INT64_MIN is accepted and overflow is caught.
    std::string withSign = (negative ? "-" : "") + std::string(value);
    int64_t result = 0;
    auto [ptr, ec] = std::from_chars(withSign.data(), withSign.data() + withSign.size(), result);
    if (ec != std::errc() || ptr != withSign.data() + withSign.size())
        return std::nullopt;
    return result;
}

std::optional<double> configParseDouble(std::string_view value)
{
    bool plus = value.starts_with('+');
    if (plus)
        value.remove_prefix(1);
    if (value.empty() || value[0] == '+' || (plus && value[0] == '-'))
        return std::nullopt;
    double result = 0;
    auto [ptr, ec] = std::from_chars(value.data(), value.data() + value.size(), result, std::chars_format::general);
    if (ec != std::errc() || ptr != value.data() + value.size() || !std::isfinite(result))
        return std::nullopt;
    return result;
}

std::string configFormatDouble(double value)
{
    char buf[400]; // room for the longest fixed form of a finite double
    auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed);
    return ec == std::errc() ? std::string(buf, ptr) : std::string("0");
}

bool configIsUtf8(std::string_view bytes)
{
    return utf8Valid(bytes);
}
