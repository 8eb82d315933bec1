#pragma once
// The localised standard comparison of names: ICU collation for the user's LC_COLLATE
// locale (the C/POSIX locale maps to the root locale), numeric runs compared by value,
// case-insensitive and accent-sensitive. Names are UTF-8 bytes; malformed sequences
// compare as U+FFFD.

#include <string>
#include <string_view>

struct UCollator;

class NameCollator {
public:
    // This thread's collator (each thread owns a clone of one process-wide template).
    static const NameCollator& forThread();

    // <0, 0 or >0 as a orders before, equal to or after b.
    int compare(std::string_view a, std::string_view b) const;

    // A byte string whose plain byte order is the collation order.
    std::string sortKey(std::string_view name) const;
    // The same appended to `key` (no allocation once `key` has room).
    void appendSortKey(std::string_view name, std::string& key) const;

    // The ICU locale id in use ("" is the root locale).
    static std::string localeId();

    // Whether names made only of ASCII bytes are compared by the fast table (true for
    // locales without tailoring: the root locale, English and others).
    bool hasAsciiFastPath() const { return m_asciiFast; }

    // The fast comparison of two ASCII names; the same answer ICU gives.
    int compareAscii(std::string_view a, std::string_view b) const;

    // A byte key of an ASCII name whose plain byte order is compareAscii's order: one
    // rank byte per character, and for each segment of a run of digits (as ICU splits
    // them: at most 254 digits, leading zeros skipped) the rank of "0", the segment's
    // length and its digits.
    std::string asciiKey(std::string_view name) const;
    void appendAsciiKey(std::string_view name, std::string& key) const;

    ~NameCollator();
    NameCollator(const NameCollator&) = delete;
    NameCollator& operator=(const NameCollator&) = delete;

private:
    NameCollator(UCollator* collator, const unsigned char* asciiRank, bool asciiFast);
    UCollator* m_collator;
    const unsigned char* m_rank; // primary rank per ASCII byte; 0 = ignorable
    bool m_asciiFast;
};
