#include "fs/utf8.h"

#include <unicode/ustring.h>

#include <vector>

size_t utf8Decode(std::string_view s, size_t i, uint32_t& cp)
{
    const auto c = static_cast<unsigned char>(s[i]);
    if (c < 0x80) {
        cp = c;
        return 1;
    }
    size_t len;
    if ((c & 0xE0) == 0xC0) {
        len = 2;
        cp = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3;
        cp = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4;
        cp = c & 0x07;
    } else {
        return 0;
    }
    if (i + len > s.size())
        return 0;
    for (size_t k = 1; k < len; ++k) {
        const auto b = static_cast<unsigned char>(s[i + k]);
        if ((b & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (b & 0x3F);
    }
    static constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kSmallest[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
        return 0;
    return len;
}

bool utf8Valid(std::string_view s)
{
    uint32_t cp;
    for (size_t i = 0; i < s.size();) {
        size_t len = utf8Decode(s, i, cp);
        if (len == 0)
            return false;
        i += len;
    }
    return true;
}

bool asciiOnly(std::string_view s)
{
    for (unsigned char c : s)
        if (c >= 0x80)
            return false;
    return true;
}

std::string utf8CaseMapped(std::string_view s, CaseMap map)
{
    // Names are short: the work is done in stack buffers, with the heap only for very
    // long texts.
    constexpr size_t kStack = 512;
    UChar inStack[kStack], outStack[kStack * 3];
    std::vector<UChar> inHeap, outHeap;
    UChar* in = inStack;
    UChar* out = outStack;
    size_t outCap = kStack * 3;
    if (s.size() + 1 > kStack) {
        inHeap.resize(s.size() + 1);
        outHeap.resize(s.size() * 3 + 8);
        in = inHeap.data();
        out = outHeap.data();
        outCap = outHeap.size();
    }
    int32_t inLen = 0, outLen = 0, len8 = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(in, int32_t(s.size() + 1), &inLen, s.data(), int32_t(s.size()), &status);
    if (U_FAILURE(status))
        return std::string(s);
    status = U_ZERO_ERROR;
    outLen = map == CaseMap::Upper ? u_strToUpper(out, int32_t(outCap), in, inLen, "", &status)
                                   : u_strToLower(out, int32_t(outCap), in, inLen, "", &status);
    if (U_FAILURE(status))
        return std::string(s);
    std::string result(size_t(outLen) * 3 + 1, '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8(result.data(), int32_t(result.size()), &len8, out, outLen, &status);
    if (U_FAILURE(status))
        return std::string(s);
    result.resize(size_t(len8));
    return result;
}
