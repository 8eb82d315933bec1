// The kind classes. Drives and Other never match: Drives exists for its title and
// colour, Other is the fallback.

#include "cards/lab_group_kind.h"

namespace {

class GroupDrives : public LabGroupKind {
public:
    int64_t order() const override { return 0; }
    std::string title() const override { return "Drives"; }
    std::optional<double> hue() const override { return 0.08; }
};

class GroupFolders : public LabGroupKind {
public:
    int64_t order() const override { return 10; }
    std::string title() const override { return "Folders"; }
    std::optional<double> hue() const override { return 0.58; }
    bool matches(bool isDir, const std::optional<UniformType>& type) const override
    {
        return isDir && !(type && type->conformsTo(TypeClass::Application));
    }
};

class GroupApps : public LabGroupKind {
public:
    int64_t order() const override { return 20; }
    std::string title() const override { return "Apps"; }
    std::optional<double> hue() const override { return 0.75; }
    bool matches(bool, const std::optional<UniformType>& type) const override
    {
        return type && type->conformsTo(TypeClass::Application);
    }
};

// The file kinds: a file (never a folder) whose type conforms to one of `classes`.
template <TypeClass... classes>
bool fileOf(bool isDir, const std::optional<UniformType>& type)
{
    return !isDir && type && (type->conformsTo(classes) || ...);
}

class GroupImages : public LabGroupKind {
public:
    int64_t order() const override { return 30; }
    std::string title() const override { return "Images"; }
    std::optional<double> hue() const override { return 0.33; }
    bool matches(bool isDir, const std::optional<UniformType>& type) const override
    {
        return fileOf<TypeClass::Image>(isDir, type);
    }
};

class GroupMedia : public LabGroupKind {
public:
    int64_t order() const override { return 40; }
    std::string title() const override { return "Media"; }
    std::optional<double> hue() const override { return 0.92; }
    bool matches(bool isDir, const std::optional<UniformType>& type) const override
    {
        return fileOf<TypeClass::AudioVisual>(isDir, type);
    }
};

class GroupDocuments : public LabGroupKind {
public:
    int64_t order() const override { return 50; }
    std::string title() const override { return "Documents"; }
    std::optional<double> hue() const override { return 0.14; }
    bool matches(bool isDir, const std::optional<UniformType>& type) const override
    {
        return fileOf<TypeClass::Text, TypeClass::Pdf>(isDir, type);
    }
};

class GroupArchives : public LabGroupKind {
public:
    int64_t order() const override { return 60; }
    std::string title() const override { return "Archives"; }
    std::optional<double> hue() const override { return 0.03; }
    bool matches(bool isDir, const std::optional<UniformType>& type) const override
    {
        return fileOf<TypeClass::Archive>(isDir, type);
    }
};

class GroupOther : public LabGroupKind {
public:
    int64_t order() const override { return 999; }
    std::string title() const override { return "Other"; }
};

} // namespace

BRONDEL_REGISTER(LabGroupKind, GroupDrives)
BRONDEL_REGISTER(LabGroupKind, GroupFolders)
BRONDEL_REGISTER(LabGroupKind, GroupApps)
BRONDEL_REGISTER(LabGroupKind, GroupImages)
BRONDEL_REGISTER(LabGroupKind, GroupMedia)
BRONDEL_REGISTER(LabGroupKind, GroupDocuments)
BRONDEL_REGISTER(LabGroupKind, GroupArchives)
BRONDEL_REGISTER(LabGroupKind, GroupOther)

const std::vector<std::unique_ptr<LabGroupKind>>& labGroupKinds()
{
    return Registry<LabGroupKind>::all();
}

namespace {

const LabGroupKind* firstMatch(bool isDir, const std::optional<UniformType>& type)
{
    for (const auto& kind : labGroupKinds())
        if (kind->matches(isDir, type))
            return kind.get();
    return nullptr;
}

const LabGroupKind& otherKind()
{
    static const GroupOther other;
    for (const auto& kind : labGroupKinds())
        if (kind->title() == other.title())
            return *kind;
    return other;
}

} // namespace

std::string labGroup(bool isDir, const std::optional<UniformType>& type)
{
    const LabGroupKind* kind = firstMatch(isDir, type);
    return kind ? kind->title() : "Other";
}

const LabGroupKind& labGroupKindOf(bool isDir, const std::string& path)
{
    const LabGroupKind* kind = firstMatch(isDir, uniformTypeForExtension(uniformTypeExtension(path)));
    return kind ? *kind : otherKind();
}
