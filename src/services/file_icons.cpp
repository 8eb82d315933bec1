#include "services/file_icons.h"

#include "services/theme_icons.h"

#include <QFile>
#include <QCoreApplication>
#include <QMimeDatabase>

namespace {

// The database's answer for a name it matches by no pattern.
const QString kUnknownMime = QStringLiteral("application/octet-stream");

// Long enough to gather the look-ups a newly shown folder starts.
constexpr int kAnnounceMs = 50;

} // namespace

FileIcons::FileIcons(QObject* parent)
    : QObject(parent)
    , m_work(1, WorkClass::UserInitiated)
{
    m_announce.setSingleShot(true);
    m_announce.setInterval(kAnnounceMs);
    connect(&m_announce, &QTimer::timeout, this, &FileIcons::changed);
}

FileIcons& FileIcons::shared()
{
    static FileIcons* icons = [] {
        auto* made = new FileIcons;
        // A look-up asks Qt's MIME database, which Qt destroys at exit: the application
        // waits for the look-ups on their way before it goes. They read only the local
        // MIME cache (never a user's drive), so the wait is short.
        qAddPostRoutine([] { FileIcons::shared().waitForDone(); });
        return made;
    }();
    return *icons;
}

QIcon FileIcons::fallback()
{
    return iconSymbol("doc");
}

QString FileIcons::endingKey(const QString& name)
{
    const qsizetype last = name.lastIndexOf(QLatin1Char('.'));
    if (last <= 0)
        return QStringLiteral("/") + name; // no ending: the name decides ("/" cannot be in a name)
    const qsizetype before = name.lastIndexOf(QLatin1Char('.'), last - 1);
    return name.mid(before > 0 ? before + 1 : last + 1);
}

QStringList FileIcons::typeIconNames(const QString& name)
{
    // QMimeDatabase is thread-safe; matching by extension never opens the file.
    const QMimeType type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    if (!type.isValid() || type.name() == kUnknownMime)
        return {};
    QStringList names{type.iconName()};
    if (!type.genericIconName().isEmpty() && type.genericIconName() != type.iconName())
        names << type.genericIconName();
    return names;
}

const FileIcons::Type* FileIcons::typeOf(const QString& key, const QString& name)
{
    if (auto it = m_types.constFind(key); it != m_types.constEnd())
        return &*it;
    if (m_pending.contains(key))
        return nullptr;
    m_pending.insert(key);
    m_work.submit(this, [this, key, name]() -> std::function<void()> {
        const QMimeType mime = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
        Type type{mime.name() == kUnknownMime ? QString() : mime.name(), typeIconNames(name)};
        return [this, key, type] {
            m_pending.remove(key);
            m_types.insert(key, type);
            // A big folder of new endings announces once, not once per ending.
            if (!m_announce.isActive())
                m_announce.start();
        };
    });
    return nullptr;
}

QIcon FileIcons::iconOfType(const Type& type)
{
    if (type.mime.isEmpty())
        return fallback();
    if (auto it = m_icons.constFind(type.mime); it != m_icons.constEnd())
        return *it;
    // The theme's index is in memory once the first icon was looked up; only the first
    // look-up of a name checks the theme's folders (local files under /usr/share).
    QIcon icon;
    QString chosen;
    for (const QString& themeName : type.iconNames)
        if (QIcon::hasThemeIcon(themeName)) {
            icon = QIcon::fromTheme(themeName);
            chosen = themeName;
            break;
        }
    if (icon.isNull())
        icon = fallback();
    m_icons.insert(type.mime, icon);
    m_names.insert(type.mime, chosen);
    return icon;
}

QIcon FileIcons::iconFor(const std::string& name)
{
    const QString decoded = QFile::decodeName(QByteArray::fromStdString(name));
    const Type* type = typeOf(endingKey(decoded), decoded);
    return type ? iconOfType(*type) : fallback();
}

QString FileIcons::themeNameFor(const std::string& name)
{
    const QString decoded = QFile::decodeName(QByteArray::fromStdString(name));
    const Type* type = typeOf(endingKey(decoded), decoded);
    if (!type || type->mime.isEmpty())
        return {};
    iconOfType(*type);
    return m_names.value(type->mime);
}

QIcon fileIconFor(const DirNode& node)
{
    if (node.isDir || node.isSectionHeader)
        return iconForNode(node);
    return FileIcons::shared().iconFor(node.name);
}
