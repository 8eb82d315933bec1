#pragma once
// Human forms of sizes and dates.

#include <cstdint>
#include <string>

// "0 B", "1023 B", "1.0 KB", "1.5 KB", ... "1024.0 TB": binary steps, decimal names.
std::string fmtHuman(int64_t bytes);

// Medium date and short time in the user's locale and time zone (ICU), e.g.
// "Nov 21, 2026, 11:24 PM" in the C locale. One shared formatter for the process.
std::string dateFmt(int64_t secondsSince1970);

// Length in characters as the columns count them: UTF-16 code units of the decoded
// name (a malformed byte counts as one U+FFFD).
size_t fmtDisplayLength(std::string_view text);

// `text` followed by spaces up to `width` characters (nothing added when longer).
void fmtAppendPadded(std::string& out, std::string_view text, size_t width);
