#pragma once
// The uniform type of a file, derived from its name's extension through the
// shared-mime-info database, and its conformance to the six broad types the kind
// classes ask about. All platform-bound type knowledge of the cards lives here.

#include <optional>
#include <string>
#include <string_view>

enum class TypeClass : unsigned {
    Application = 1u << 0,
    Image = 1u << 1,
    AudioVisual = 1u << 2,
    Text = 1u << 3,
    Pdf = 1u << 4,
    Archive = 1u << 5,
};

struct UniformType {
    std::string mime;     // the database's type name, e.g. "image/png"
    unsigned classes = 0; // TypeClass bits it conforms to

    bool conformsTo(TypeClass c) const { return (classes & unsigned(c)) != 0; }
};

// The type for a filename extension (without the dot). Absent for "" and for extensions
// the database does not know; such a type conforms to nothing. Answers are cached per
// extension; safe from any thread.
std::optional<UniformType> uniformTypeForExtension(std::string_view ext);

// The extension of the last component of `path`: the text after its last "." (none for
// a leading or trailing dot).
std::string_view uniformTypeExtension(std::string_view path);
