#include "fs/collation.h"

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

namespace {

// The locale for collation from the environment, as the C library would choose it.
std::string envLocale(const char* category)
{
    for (const char* name : {"LC_ALL", category, "LANG"}) {
        const char* v = std::getenv(name);
        if (v && *v)
            return v;
    }
    return "C";
}

std::string icuLocaleFromPosix(std::string posix)
{
    size_t cut = posix.find_first_of(".@");
    if (cut != std::string::npos)
        posix.resize(cut);
    if (posix.empty() || posix == "C" || posix == "POSIX")
        return ""; // ICU's root locale
    return posix;
}

UCollator* openTemplate()
{
    UErrorCode status = U_ZERO_ERROR;
    std::string locale = NameCollator::localeId();
    UCollator* c = ucol_open(locale.c_str(), &status);
    if (U_FAILURE(status)) {
        status = U_ZERO_ERROR;
        c = ucol_open("", &status);
    }
    ucol_setAttribute(c, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    ucol_setAttribute(c, UCOL_STRENGTH, UCOL_SECONDARY, &status);
    return c;
}

// UTF-8 to UTF-16 with U+FFFD for malformed bytes, into a reusable buffer.
const UChar* toUtf16(std::string_view utf8, std::vector<UChar>& buf, int32_t& length)
{
    if (buf.size() < utf8.size() + 1)
        buf.resize(utf8.size() + 1);
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(buf.data(), int32_t(buf.size()), &length, utf8.data(), int32_t(utf8.size()), 0xFFFD,
                         nullptr, &status);
    if (U_FAILURE(status))
        length = 0;
    return buf.data();
}

} // namespace

std::string NameCollator::localeId()
{
    return icuLocaleFromPosix(envLocale("LC_COLLATE"));
}

NameCollator::NameCollator(UCollator* collator)
    : m_collator(collator)
{
}

NameCollator::~NameCollator() { ucol_close(m_collator); }

const NameCollator& NameCollator::forThread()
{
    static UCollator* const kTemplate = openTemplate();
    thread_local std::unique_ptr<NameCollator> mine;
    if (!mine) {
        UErrorCode status = U_ZERO_ERROR;
        mine.reset(new NameCollator(ucol_clone(kTemplate, &status)));
    }
    return *mine;
}

int NameCollator::compare(std::string_view a, std::string_view b) const
{
    UErrorCode status = U_ZERO_ERROR;
    UCollationResult r = ucol_strcollUTF8(m_collator, a.data(), int32_t(a.size()), b.data(), int32_t(b.size()), &status);
    return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
}

std::string NameCollator::sortKey(std::string_view name) const
{
    thread_local std::vector<UChar> buf;
    int32_t length = 0;
    const UChar* text = toUtf16(name, buf, length);
    std::string key(size_t(length) * 2 + 16, '\0');
    int32_t need = ucol_getSortKey(m_collator, text, length, reinterpret_cast<uint8_t*>(key.data()), int32_t(key.size()));
    if (need > int32_t(key.size())) {
        key.resize(size_t(need));
        need = ucol_getSortKey(m_collator, text, length, reinterpret_cast<uint8_t*>(key.data()), int32_t(key.size()));
    }
    key.resize(need > 0 ? size_t(need) - 1 : 0); // drop the terminating zero byte
    return key;
}
