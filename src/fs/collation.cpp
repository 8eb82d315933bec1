#include "fs/collation.h"

#include "fs/utf8.h"

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <cstdlib>
#include <algorithm>
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

bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// ICU compares a run of digits by value in segments of at most 254 significant digits
// (leading zeros skipped before each). Moves `at` past the segment that starts there
// and returns where its significant digits begin ("" for zeros alone, which compare as
// one value below every other, as ICU's "0" does).
constexpr size_t kDigitSegment = 254;

size_t digitSegment(std::string_view text, size_t& at)
{
    while (at < text.size() && text[at] == '0')
        ++at;
    const size_t start = at;
    while (at < text.size() && at - start < kDigitSegment && isDigit(text[at]))
        ++at;
    return start;
}

// Primary ranks of the ASCII characters under `collator`, learnt from the collator
// itself: characters it finds equal share a rank, ignorable ones get 0. Digits all get
// the rank of "0"; runs of them are compared by value (numeric collation).
struct AsciiTable {
    unsigned char rank[128] = {};
    bool usable = false;

    explicit AsciiTable(UCollator* c)
    {
        // Tailored locales may reorder or contract ASCII letters: keep ICU for those.
        int32_t rulesLength = 0;
        ucol_getRules(c, &rulesLength);
        if (rulesLength != 0)
            return;
        std::vector<UChar> chars;
        for (UChar ch = 1; ch < 128; ++ch)
            if (!isDigit(ch) || ch == '0')
                chars.push_back(ch);
        auto cmp = [&](UChar a, UChar b) { return ucol_strcoll(c, &a, 1, &b, 1); };
        std::stable_sort(chars.begin(), chars.end(), [&](UChar a, UChar b) { return cmp(a, b) == UCOL_LESS; });
        unsigned char next = 0;
        UChar previous = 0;
        for (UChar ch : chars) {
            UChar none = 0;
            if (ucol_strcoll(c, &ch, 1, &none, 0) == UCOL_EQUAL) {
                rank[ch] = 0; // completely ignorable
                continue;
            }
            if (previous == 0 || cmp(previous, ch) != UCOL_EQUAL)
                ++next;
            rank[ch] = next;
            previous = ch;
        }
        for (int d = '1'; d <= '9'; ++d)
            rank[d] = rank[int('0')];
        usable = next < 255 && ranksArePrimary(c, chars);
    }

    // One rank per character matches ICU's order only when characters of different
    // ranks differ in their primary weights (else ICU would let a later character decide
    // before an earlier accent-like difference).
    bool ranksArePrimary(UCollator* c, const std::vector<UChar>& sorted) const
    {
        UErrorCode status = U_ZERO_ERROR;
        UCollator* primary = ucol_clone(c, &status);
        if (U_FAILURE(status))
            return false;
        ucol_setAttribute(primary, UCOL_STRENGTH, UCOL_PRIMARY, &status);
        bool distinct = U_SUCCESS(status);
        UChar previous = 0;
        for (UChar ch : sorted) {
            if (rank[ch] == 0)
                continue;
            if (previous != 0 && rank[previous] != rank[ch] && ucol_strcoll(primary, &previous, 1, &ch, 1) == UCOL_EQUAL)
                distinct = false;
            previous = ch;
        }
        ucol_close(primary);
        return distinct;
    }
};

} // namespace

int NameCollator::compareAscii(std::string_view a, std::string_view b) const
{
    size_t i = 0, j = 0;
    const size_t n = a.size(), m = b.size();
    for (;;) {
        while (i < n && m_rank[(unsigned char)a[i]] == 0)
            ++i;
        while (j < m && m_rank[(unsigned char)b[j]] == 0)
            ++j;
        if (i == n || j == m)
            return (i == n) == (j == m) ? 0 : i == n ? -1 : 1;
        unsigned char ca = a[i], cb = b[j];
        if (isDigit(ca) && isDigit(cb)) {
            // Compare the two segments by value: skip leading zeros, then length, then
            // digits (a longer run goes on as a further segment).
            const size_t si = digitSegment(a, i), sj = digitSegment(b, j);
            size_t la = i - si, lb = j - sj;
            if (la != lb)
                return la < lb ? -1 : 1;
            int c = a.substr(si, la).compare(b.substr(sj, lb));
            if (c != 0)
                return c < 0 ? -1 : 1;
            continue;
        }
        unsigned char ra = m_rank[ca], rb = m_rank[cb];
        if (ra != rb)
            return ra < rb ? -1 : 1;
        ++i;
        ++j;
    }
}

std::string NameCollator::asciiKey(std::string_view name) const
{
    std::string key;
    appendAsciiKey(name, key);
    return key;
}

void NameCollator::appendAsciiKey(std::string_view name, std::string& key) const
{
    const size_t n = name.size();
    for (size_t i = 0; i < n;) {
        unsigned char c = name[i];
        if (isDigit(c)) {
            const size_t start = digitSegment(name, i);
            const size_t len = i - start;
            key.push_back(char(m_rank[int('0')]));
            key.push_back(char(len));
            key.append(name.substr(start, len));
            continue;
        }
        if (m_rank[c] != 0)
            key.push_back(char(m_rank[c]));
        ++i;
    }
}

std::string NameCollator::localeId()
{
    return icuLocaleFromPosix(envLocale("LC_COLLATE"));
}

NameCollator::NameCollator(UCollator* collator, const unsigned char* asciiRank, bool asciiFast)
    : m_collator(collator)
    , m_rank(asciiRank)
    , m_asciiFast(asciiFast)
{
}

NameCollator::~NameCollator() { ucol_close(m_collator); }

const NameCollator& NameCollator::forThread()
{
    static UCollator* const kTemplate = openTemplate();
    static const AsciiTable kTable(kTemplate);
    thread_local std::unique_ptr<NameCollator> mine;
    if (!mine) {
        UErrorCode status = U_ZERO_ERROR;
        mine.reset(new NameCollator(ucol_clone(kTemplate, &status), kTable.rank, kTable.usable));
    }
    return *mine;
}

int NameCollator::compare(std::string_view a, std::string_view b) const
{
    if (m_asciiFast && asciiOnly(a) && asciiOnly(b))
        return compareAscii(a, b);
    UErrorCode status = U_ZERO_ERROR;
    UCollationResult r = ucol_strcollUTF8(m_collator, a.data(), int32_t(a.size()), b.data(), int32_t(b.size()), &status);
    return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
}

std::string NameCollator::sortKey(std::string_view name) const
{
    std::string key;
    appendSortKey(name, key);
    return key;
}

void NameCollator::appendSortKey(std::string_view name, std::string& key) const
{
    thread_local std::vector<UChar> buf;
    int32_t length = 0;
    const UChar* text = toUtf16(name, buf, length);
    const size_t base = key.size();
    key.resize(base + size_t(length) * 2 + 16);
    auto* at = reinterpret_cast<uint8_t*>(key.data() + base);
    int32_t need = ucol_getSortKey(m_collator, text, length, at, int32_t(key.size() - base));
    if (need > int32_t(key.size() - base)) {
        key.resize(base + size_t(need));
        at = reinterpret_cast<uint8_t*>(key.data() + base);
        need = ucol_getSortKey(m_collator, text, length, at, int32_t(key.size() - base));
    }
    key.resize(base + (need > 0 ? size_t(need) - 1 : 0)); // drop the terminating zero byte
}
