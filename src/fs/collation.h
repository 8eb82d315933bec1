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

    // The ICU locale id in use ("" is the root locale).
    static std::string localeId();

    ~NameCollator();
    NameCollator(const NameCollator&) = delete;
    NameCollator& operator=(const NameCollator&) = delete;

private:
    explicit NameCollator(UCollator* collator);
    UCollator* m_collator;
};
