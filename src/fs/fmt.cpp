#include "fs/fmt.h"

#include "fs/collation.h"
#include "fs/utf8.h"

#include <unicode/udat.h>
#include <unicode/ustring.h>

#include <cstdio>
#include <mutex>
#include <vector>

std::string fmtHuman(int64_t bytes)
{
    static const char* const kUnits[] = {"B", "KB", "MB", "GB", "TB"};
    if (bytes < 1024)
        return std::to_string(bytes) + " B";
    double value = double(bytes) / 1024.0;
    int step = 1;
    while (value >= 1024.0 && step < 4) {
        value /= 1024.0;
        ++step;
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.1f %s", value, kUnits[step]);
    return buf;
}

namespace {

struct DateFormatter {
    std::mutex lock;
    UDateFormat* format = nullptr;

    DateFormatter()
    {
        UErrorCode status = U_ZERO_ERROR;
        // The C locale reads as US English here (ICU's root locale has no month names).
        std::string locale = NameCollator::localeId();
        if (locale.empty())
            locale = "en_US";
        // Time zone: ICU's default, which follows TZ and the system zone.
        format = udat_open(UDAT_SHORT, UDAT_MEDIUM, locale.c_str(), nullptr, -1, nullptr, -1, &status);
        if (U_FAILURE(status))
            format = nullptr;
    }
};

} // namespace

std::string dateFmt(int64_t seconds)
{
    static DateFormatter formatter;
    if (!formatter.format)
        return std::to_string(seconds);
    UChar buf[256];
    UErrorCode status = U_ZERO_ERROR;
    int32_t len;
    {
        std::lock_guard guard(formatter.lock);
        len = udat_format(formatter.format, double(seconds) * 1000.0, buf, 256, nullptr, &status);
    }
    if (U_FAILURE(status))
        return std::to_string(seconds);
    char out[1024];
    int32_t outLen = 0;
    status = U_ZERO_ERROR;
    u_strToUTF8(out, sizeof out, &outLen, buf, len, &status);
    return U_FAILURE(status) ? std::to_string(seconds) : std::string(out, size_t(outLen));
}

size_t fmtDisplayLength(std::string_view text)
{
    size_t ascii = 0;
    while (ascii < text.size() && static_cast<unsigned char>(text[ascii]) < 0x80)
        ++ascii;
    if (ascii == text.size())
        return ascii; // the common case: one unit per byte
    size_t units = 0;
    uint32_t cp;
    for (size_t i = 0; i < text.size();) {
        size_t len = utf8Decode(text, i, cp);
        if (len == 0) {
            ++units; // one replacement character for the offending byte
            ++i;
            continue;
        }
        units += cp >= 0x10000 ? 2 : 1;
        i += len;
    }
    return units;
}

void fmtAppendPadded(std::string& out, std::string_view text, size_t width)
{
    out.append(text);
    size_t len = fmtDisplayLength(text);
    if (len < width)
        out.append(width - len, ' ');
}
