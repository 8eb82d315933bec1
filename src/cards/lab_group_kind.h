#pragma once
// Kind classes: the broad kinds (Folders, Apps, Images, ...) that the kind grouper and
// Peek mode sort items into. A kind joins by being defined:
// BRONDEL_REGISTER(LabGroupKind, MyKind) in its .cpp.

#include "cards/uniform_type.h"
#include "fs/registry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class LabGroupKind {
public:
    virtual ~LabGroupKind() = default;
    virtual int64_t order() const { return 50; }
    virtual std::string title() const { return ""; }
    virtual std::optional<double> hue() const { return std::nullopt; }
    virtual bool matches(bool isDir, const std::optional<UniformType>& type) const { return false; }
    // The registry's tie-break; titles are unique.
    std::string key() const { return title(); }
};

// Every kind in registry order (by order), built once.
const std::vector<std::unique_ptr<LabGroupKind>>& labGroupKinds();

// The title of the first kind that matches, else "Other".
std::string labGroup(bool isDir, const std::optional<UniformType>& type);

// The kind of an item from its path's extension; "Other" for an unknown type.
const LabGroupKind& labGroupKindOf(bool isDir, const std::string& path);
