#include "services/theme_icons.h"

#include "fs/paths.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QStandardPaths>

#include <vector>

namespace {

// Symbol name → theme names, best first (newer themes ship only "-symbolic" forms).
const std::vector<std::pair<const char*, std::vector<const char*>>>& symbolTable()
{
    static const std::vector<std::pair<const char*, std::vector<const char*>>> table = {
        // Adwaita draws its full-colour arrows pale grey, which reads as a disabled
        // button: its dark symbolic arrows come first.
        {"chevron.left", {"go-previous-symbolic", "go-previous"}},
        {"chevron.right", {"go-next-symbolic", "go-next"}},
        {"arrow.up", {"go-up-symbolic", "go-up"}},
        {"desktopcomputer", {"computer", "computer-symbolic"}},
        {"square.grid.2x2", {"view-grid", "view-grid-symbolic", "view-app-grid-symbolic"}},
        {"list.bullet", {"view-list", "view-list-symbolic"}},
        {"rectangle.split.3x1", {"view-column", "view-columns", "view-dual-symbolic"}},
        {"square.stack", {"view-paged", "view-paged-symbolic"}},
        {"rectangle.split.2x1", {"view-split-left-right", "view-dual-symbolic"}},
        {"rectangle.split.1x2", {"view-split-top-bottom", "view-continuous-symbolic"}},
        {"xmark.circle.fill", {"window-close", "window-close-symbolic"}},
        {"info.circle", {"dialog-information", "dialog-information-symbolic"}},
        {"trash", {"user-trash", "user-trash-symbolic"}},
        {"trash.slash", {"edit-delete", "edit-delete-symbolic"}},
        {"arrow.clockwise", {"view-refresh", "view-refresh-symbolic"}},
        {"macwindow.badge.plus", {"window-new", "window-new-symbolic"}},
        {"cable.connector", {"insert-link", "insert-link-symbolic", "emblem-shared-symbolic"}},
        {"folder", {"folder", "folder-symbolic"}},
        {"doc", {"text-x-generic", "text-x-generic-symbolic"}},
        {"externaldrive", {"drive-harddisk", "drive-harddisk-symbolic"}},
        {"exclamationmark.triangle", {"dialog-warning", "dialog-warning-symbolic"}},
        {"house", {"user-home", "user-home-symbolic"}},
        {"power", {"application-exit", "application-exit-symbolic"}},
        {"gearshape", {"preferences-system", "preferences-system-symbolic"}},
        {"star", {"starred", "starred-symbolic"}},
        {"eye", {"view-reveal-symbolic", "view-conceal-symbolic"}},
        {"arrow.up.arrow.down", {"view-sort-ascending", "view-sort-ascending-symbolic"}},
        {"minus.square", {"window-minimize", "window-minimize-symbolic"}},
        {"plus.square", {"window-maximize", "window-maximize-symbolic"}},
        {"doc.on.doc", {"edit-copy", "edit-copy-symbolic"}},
        {"checkmark.square", {"edit-select-all", "edit-select-all-symbolic"}},
        {"magnifyingglass", {"edit-find", "edit-find-symbolic"}},
        {"folder.badge.plus", {"folder-new", "folder-new-symbolic"}},
        {"arrow.up.forward.app", {"document-open", "document-open-symbolic"}},
        {"star.slash", {"non-starred", "non-starred-symbolic"}},
    };
    return table;
}

// A drawn stand-in: a rounded square with the symbol's first letter.
QIcon drawnIcon(const char* symbol)
{
    QIcon icon;
    for (int side : {16, 24, 32, 48}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(90, 90, 90), side / 12.0));
        painter.drawRoundedRect(QRectF(1.5, 1.5, side - 3, side - 3), side / 5.0, side / 5.0);
        QFont font = painter.font();
        font.setPixelSize(side * 6 / 10);
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(pixmap.rect(), Qt::AlignCenter, QString(QChar(symbol[0])).toUpper());
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

bool themeUsable(const QString& name)
{
    if (name.isEmpty() || name == QLatin1String("hicolor"))
        return false;
    QIcon::setThemeName(name);
    bool found = QIcon::hasThemeIcon(QStringLiteral("folder")) || QIcon::hasThemeIcon(QStringLiteral("folder-symbolic"));
    return found;
}

} // namespace

void iconsInstallTheme()
{
    QStringList paths = QIcon::themeSearchPaths();
    QStringList dataDirs = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    dataDirs << QStringLiteral("/usr/local/share") << QStringLiteral("/usr/share");
    for (const QString& dir : dataDirs) {
        QString icons = dir + QStringLiteral("/icons");
        if (!paths.contains(icons) && QFileInfo(icons).isDir())
            paths << icons;
    }
    QString home = QFile::decodeName(homeDir().c_str()) + QStringLiteral("/.icons");
    if (!paths.contains(home) && QFileInfo(home).isDir())
        paths.prepend(home);
    QIcon::setThemeSearchPaths(paths);

    const QString platformTheme = QIcon::themeName();
    if (themeUsable(platformTheme))
        return;
    for (const char* candidate : {"Adwaita", "breeze", "Papirus", "gnome", "oxygen", "Tango"})
        if (themeUsable(QString::fromLatin1(candidate)))
            return;
    QIcon::setThemeName(platformTheme);
}

QIcon iconSymbol(const char* symbol)
{
    static QHash<QByteArray, QIcon> cache;
    QByteArray key(symbol);
    auto it = cache.constFind(key);
    if (it != cache.constEnd())
        return *it;
    QIcon icon;
    for (const auto& [name, themeNames] : symbolTable()) {
        if (key != name)
            continue;
        for (const char* themeName : themeNames) {
            QIcon candidate = QIcon::fromTheme(QString::fromLatin1(themeName));
            if (!candidate.isNull() && !candidate.availableSizes().isEmpty()) {
                icon = candidate;
                break;
            }
            if (!candidate.isNull() && !candidate.pixmap(16, 16).isNull()) {
                icon = candidate;
                break;
            }
        }
    }
    if (icon.isNull())
        icon = drawnIcon(symbol);
    cache.insert(key, icon);
    return icon;
}

QIcon iconForNode(const DirNode& node)
{
    if (node.isSectionHeader)
        return {};
    if (!node.isDir)
        return iconSymbol("doc");
    if (node.path == homeDir())
        return iconSymbol("house");
    if (node.kind.empty() && !node.isPinned)
        return iconSymbol("externaldrive"); // drives of the Computer root carry no kind
    return iconSymbol("folder");
}
