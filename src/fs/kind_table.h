#pragma once
// Kinds ("Folder", "Alias", "PDF file", "Document") interned once per process: a scanned
// entry keeps a small number instead of its own copy of the text. Kinds are few (one per
// file extension met); past 65,535 of them an entry's kind is worked out from its name
// again when asked (kKindFromName), so nothing is ever shown wrong.

#include <cstdint>
#include <string>
#include <string_view>

constexpr uint16_t kKindFromName = 0xFFFF;

// The number of `kind`, interning it on first sight (any thread).
uint16_t kindIntern(std::string_view kind);

// The text of an interned kind (any thread); "" for kKindFromName.
std::string_view kindText(uint16_t id);

// The kind of a scanned entry: "Alias" for a link, "Folder" for a folder, else the
// file kind of its name (nodeExtKind).
enum class EntryType { File, Folder, Link };
uint16_t kindOfEntry(std::string_view name, EntryType type);

// "PDF file" for report.pdf, "GZ file" for archive.tar.gz, "Document" without extension.
std::string nodeExtKind(std::string_view name);
