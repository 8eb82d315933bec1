#include "cards/uniform_type.h"

#include <QMimeDatabase>
#include <QMimeType>
#include <QStringList>

#include <algorithm>
#include <map>
#include <mutex>

namespace {

// The programs of a Linux desktop.
const char* const kApplicationTypes[] = {
    "application/x-desktop",
    "application/vnd.appimage",
    "application/x-executable",
    "application/x-ms-dos-executable",
};

// Archives and disk images: the one list of them. Aliases are resolved to the
// database's canonical names when the set is built.
const char* const kArchiveTypes[] = {
    "application/zip",
    "application/x-tar",
    "application/gzip",
    "application/x-bzip",
    "application/x-bzip2",
    "application/x-xz",
    "application/zstd",
    "application/x-lzma",
    "application/x-lz4",
    "application/x-lzip",
    "application/x-compress",
    "application/x-7z-compressed",
    "application/vnd.rar",
    "application/x-compressed-tar",
    "application/x-bzip-compressed-tar",
    "application/x-bzip2-compressed-tar",
    "application/x-xz-compressed-tar",
    "application/x-zstd-compressed-tar",
    "application/x-lzma-compressed-tar",
    "application/x-lz4-compressed-tar",
    "application/x-lzip-compressed-tar",
    "application/x-tarz",
    "application/x-cpio",
    "application/x-cpio-compressed",
    "application/x-iso9660-image",
    "application/x-cd-image",
    "application/vnd.debian.binary-package",
    "application/x-rpm",
    "application/x-archive",
    "application/x-arj",
    "application/x-lha",
    "application/vnd.ms-cab-compressed",
    "application/x-apple-diskimage",
    "application/x-stuffit",
};

struct TypeSets {
    QStringList applications;
    QStringList archives;
};

QStringList canonical(const QMimeDatabase& db, const auto& names)
{
    QStringList out;
    for (const char* name : names) {
        out << QString::fromLatin1(name);
        QMimeType type = db.mimeTypeForName(QString::fromLatin1(name));
        if (type.isValid())
            out << type.name();
    }
    return out;
}

unsigned classesOf(const QMimeType& type, bool appExtension, const TypeSets& sets)
{
    QStringList lineage = type.allAncestors();
    lineage.prepend(type.name());
    auto any = [&](auto&& test) { return std::any_of(lineage.begin(), lineage.end(), test); };
    unsigned classes = 0;
    const bool text = type.inherits(QStringLiteral("text/plain"));
    if (text)
        classes |= unsigned(TypeClass::Text);
    // Scripts and JSON descend from application/x-executable in the database, but they
    // are documents to the user: a text type is an application only when it is one of
    // the application types itself (a .desktop entry).
    const bool appLineage = any([&](const QString& t) { return sets.applications.contains(t); });
    if (appExtension || sets.applications.contains(type.name()) || (appLineage && !text))
        classes |= unsigned(TypeClass::Application);
    if (any([](const QString& t) { return t.startsWith(QLatin1String("image/")); }))
        classes |= unsigned(TypeClass::Image);
    if (any([](const QString& t) {
            return t.startsWith(QLatin1String("audio/")) || t.startsWith(QLatin1String("video/"));
        }))
        classes |= unsigned(TypeClass::AudioVisual);
    if (type.inherits(QStringLiteral("application/pdf")))
        classes |= unsigned(TypeClass::Pdf);
    if (any([&](const QString& t) { return sets.archives.contains(t); }))
        classes |= unsigned(TypeClass::Archive);
    return classes;
}

std::optional<UniformType> lookUp(std::string_view ext)
{
    static const QMimeDatabase db;
    static const TypeSets sets{canonical(db, kApplicationTypes), canonical(db, kArchiveTypes)};
    const QString suffix = QString::fromUtf8(ext.data(), qsizetype(ext.size()));
    // Bundles named *.app are applications wherever they come from.
    const bool appExtension = suffix.compare(QLatin1String("app"), Qt::CaseInsensitive) == 0;
    QMimeType type = db.mimeTypeForFile(QStringLiteral("x.") + suffix, QMimeDatabase::MatchExtension);
    if (!appExtension && (!type.isValid() || type.isDefault()))
        return std::nullopt;
    return UniformType{type.name().toStdString(), classesOf(type, appExtension, sets)};
}

} // namespace

std::optional<UniformType> uniformTypeForExtension(std::string_view ext)
{
    if (ext.empty())
        return std::nullopt;
    static std::mutex lock;
    static std::map<std::string, std::optional<UniformType>, std::less<>> cache;
    {
        std::lock_guard guard(lock);
        if (auto it = cache.find(ext); it != cache.end())
            return it->second;
    }
    auto type = lookUp(ext);
    std::lock_guard guard(lock);
    if (cache.size() >= 4096) // a folder of made-up extensions must not grow it forever
        cache.clear();
    cache.emplace(std::string(ext), type);
    return type;
}

std::string_view uniformTypeExtension(std::string_view path)
{
    size_t slash = path.rfind('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return {};
    return name.substr(dot + 1);
}
