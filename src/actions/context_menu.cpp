#include "actions/context_menu.h"

#include "actions/context_actions.h"
#include "actions/file_actions.h"
#include "actions/workspace.h"
#include "views/content_view.h"
#include "actions/management_windows.h"
#include "actions/properties_window.h"
#include "config/palette.h"
#include "window/brondel_window.h"
#include "services/scan_service.h"
#include "window/sidebar_view.h"

#include <QFile>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace {

// The path of the Recent section's header node; favourites headers are "pinned:/<title>".
constexpr const char* kRecentHeaderPath = "pinned://Recent";
constexpr const char* kFavoritesHeaderPrefix = "pinned:/";
constexpr int kSwatchSize = 12;

QString decode(const std::string& text)
{
    return QFile::decodeName(QByteArray::fromStdString(text));
}

bool isFavoritesHeader(const DirNode& node)
{
    return node.isSectionHeader && node.path != kRecentHeaderPath && node.path.starts_with(kFavoritesHeaderPrefix);
}

// An item carrying `payload`, whose action runs on the pane as long as the pane exists.
template <typename Act>
QAction* item(QMenu& menu, const QString& title, BrondelWindow& pane, MenuPayload payload, Act act)
{
    QAction* action = menu.addAction(title);
    action->setData(QVariant::fromValue(payload));
    QPointer<BrondelWindow> where(&pane);
    QObject::connect(action, &QAction::triggered, action, [where, action, act] {
        if (where)
            act(*where, action->data().value<MenuPayload>());
    });
    return action;
}

MenuPayload pathPayload(const std::string& path)
{
    return MenuPayload{path, std::nullopt, 0, std::nullopt};
}

MenuPayload sectionPayload(const std::string& path, const std::string& section, int64_t delta = 0)
{
    return MenuPayload{path, section, delta, std::nullopt};
}

QIcon swatch(double hue)
{
    QPixmap pixmap(kSwatchSize, kSwatchSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    double wheel = std::fmod(hue, 1.0);
    if (!std::isfinite(wheel))
        wheel = 0;
    if (wheel < 0)
        wheel += 1.0;
    painter.setBrush(QColor::fromHsvF(float(wheel), 0.6f, 0.9f));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(pixmap.rect().adjusted(1, 1, -1, -1));
    return QIcon(pixmap);
}

// "Color": the palette's entries (read in the background; they appear when the read
// lands), "Custom…", "Edit Palette…" and "Automatic".
void colorMenuItem(QMenu& menu, BrondelWindow& pane, const std::string& section)
{
    QMenu* colors = menu.addMenu(QObject::tr("Color"));
    QAction* separator = colors->addSeparator();
    item(*colors, QObject::tr("Custom\u2026"), pane, sectionPayload({}, section),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionColorCustom(p, *m.section); });
    item(*colors, QObject::tr("Edit Palette\u2026"), pane, sectionPayload({}, section),
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::editPalette(p); });
    item(*colors, QObject::tr("Automatic"), pane, sectionPayload({}, section),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionColor(p, *m.section, std::nullopt); });
    QPointer<BrondelWindow> where(&pane);
    pane.context().editQueue().submit(colors, [colors, separator, where, section]() -> std::function<void()> {
        Palette palette = pinnedPalette();
        return [colors, separator, where, section, palette] {
            if (!where)
                return;
            QMenu entries;
            for (const PaletteEntry& entry : palette)
                item(entries, menuTitleEscape(decode(entry.name)), *where,
                    MenuPayload{{}, section, 0, entry.hue},
                    [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionColor(p, *m.section, m.hue); })
                    ->setIcon(swatch(entry.hue));
            for (QAction* action : entries.actions()) {
                action->setParent(colors);
                colors->insertAction(separator, action);
            }
        };
    });
}

} // namespace

QString menuTitleEscape(const QString& title)
{
    QString escaped = title;
    return escaped.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

std::vector<std::string> favoritesTitles(const std::vector<DirNodePtr>& headers)
{
    std::vector<std::string> titles;
    for (const DirNodePtr& header : headers)
        if (isFavoritesHeader(*header) && !header->name.empty())
            titles.push_back(header->name);
    if (std::find(titles.begin(), titles.end(), "Favorites") == titles.end())
        titles.insert(titles.begin(), "Favorites");
    return titles;
}

std::string favoritesSectionOf(const std::vector<DirNodePtr>& headers, const std::string& path)
{
    for (const DirNodePtr& header : headers) {
        if (!isFavoritesHeader(*header))
            continue;
        for (const DirNodePtr& entry : header->children)
            if (entry->path == path)
                return header->name;
    }
    return {};
}

void contextMenuFill(QMenu& menu, BrondelWindow& pane, const DirNodePtr& node)
{
    if (!node)
        contextBackgroundFill(menu, pane);
    else if (node->isSectionHeader)
        contextSectionFill(menu, pane, *node);
    else
        contextFill(menu, pane, *node);
}

void contextFill(QMenu& menu, BrondelWindow& pane, const DirNode& node, MenuForm form)
{
    menu.clear();
    const MenuPayload payload = pathPayload(node.path);
    const bool isDir = node.isDir;
    item(menu, QObject::tr("Open"), pane, payload, [isDir](BrondelWindow& p, const MenuPayload& m) {
        ContextActions::openPath(p, m.path, isDir ? PathKind::Folder : PathKind::File);
    });
    if (isDir)
        item(menu, QObject::tr("Open in New Window"), pane, payload,
            [](BrondelWindow& p, const MenuPayload& m) { ContextActions::openNewWindow(p, m.path); });
    if (!isDir && form != MenuForm::Compact) {
        // Filled when it opens: the applications are read in the background.
        auto* with = menu.addMenu(QObject::tr("Open With"));
        with->setObjectName(QStringLiteral("openWith"));
        QPointer<BrondelWindow> owner(&pane);
        const std::string path = node.path;
        QObject::connect(with, &QMenu::aboutToShow, with, [with, owner, path] {
            if (owner && with->isEmpty())
                FileActions::openWithFill(*with, *owner, path);
        });
    }
    menu.addSeparator();
    item(menu, ContextActions::revealTitle(), pane, payload,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::reveal(p, m.path); });
    item(menu, QObject::tr("Copy Path"), pane, payload,
        [](BrondelWindow&, const MenuPayload& m) { ContextActions::copyPath(m.path); });
    if (form == MenuForm::Compact)
        return;
    if (isDir) {
        menu.addSeparator();
        ctxFavoritesItems(menu, pane, node.path);
    }
    menu.addSeparator();
    item(menu, QObject::tr("Rename\u2026"), pane, payload,
        [](BrondelWindow& p, const MenuPayload& m) { contentViewRename(p.contentView(), m.path); });
    if (isDir && workspaceClipboardFiles())
        item(menu, QObject::tr("Paste Into Folder"), pane, payload,
            [](BrondelWindow& p, const MenuPayload& m) { FileActions::paste(p, m.path); });
    item(menu, QObject::tr("Move to Trash"), pane, payload,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::trash(p, {m.path}); });
    menu.addSeparator();
    item(menu, QObject::tr("Properties\u2026"), pane, payload, [](BrondelWindow& p, const MenuPayload& m) {
        propertiesShow({m.path}, p.context(), p.window());
    });
}

void ctxFavoritesItems(QMenu& menu, BrondelWindow& pane, const std::string& path)
{
    item(menu, QObject::tr("Add to Sidebar"), pane, pathPayload(path),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sidebarAddAction(p, m.path); });
    const std::string current = favoritesSectionOf(pane.headers(), path);
    auto* sections = new QMenu(current.empty() ? QObject::tr("Add to Favorites") : QObject::tr("Move to Section"), &menu);
    for (const std::string& title : favoritesTitles(pane.headers())) {
        if (title == current)
            continue;
        if (current.empty())
            item(*sections, menuTitleEscape(decode(title)), pane, sectionPayload(path, title),
                [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favAdd(p, m.path, m.section); });
        else
            item(*sections, menuTitleEscape(decode(title)), pane, sectionPayload(path, title),
                [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favMove(p, m.path, *m.section); });
    }
    sections->addSeparator();
    item(*sections, QObject::tr("New Section\u2026"), pane, pathPayload(path),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favNewSection(p, m.path); });
    menu.addMenu(sections);
    if (current.empty())
        return;
    item(menu, QObject::tr("Move Up in Favorites"), pane, sectionPayload(path, current, -1),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favShift(p, m.path, m.delta); });
    item(menu, QObject::tr("Move Down in Favorites"), pane, sectionPayload(path, current, +1),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favShift(p, m.path, m.delta); });
    item(menu, QObject::tr("Remove from Favorites"), pane, sectionPayload(path, current),
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::favRemove(p, m.path); });
}

void contextSectionFill(QMenu& menu, BrondelWindow& pane, const DirNode& header)
{
    menu.clear();
    if (header.path == kRecentHeaderPath) {
        item(menu, QObject::tr("Clear Recents"), pane, pathPayload({}),
            [](BrondelWindow& p, const MenuPayload&) { ContextActions::recentsClearAction(p); });
        return;
    }
    const std::string section = header.name;
    const auto onSection = [&](const QString& title, int64_t delta, auto act) {
        item(menu, title, pane, sectionPayload({}, section, delta), act);
    };
    onSection(QObject::tr("Add Folders\u2026"), 0,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionAddFolders(p, *m.section); });
    onSection(QObject::tr("Rename Section\u2026"), 0,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionRename(p, *m.section); });
    onSection(QObject::tr("Move Section Up"), -1,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionShift(p, *m.section, m.delta); });
    onSection(QObject::tr("Move Section Down"), +1,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionShift(p, *m.section, m.delta); });
    colorMenuItem(menu, pane, section);
    menu.addSeparator();
    onSection(QObject::tr("New Section\u2026"), 0,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::sectionNew(p); });
    onSection(QObject::tr("Remove Section"), 0,
        [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sectionDelete(p, *m.section); });
}

void contextBackgroundFill(QMenu& menu, BrondelWindow& pane)
{
    menu.clear();
    const bool folder = !pane.isComputerRoot();
    const MenuPayload none = pathPayload({});
    item(menu, QObject::tr("New Folder"), pane, none, [](BrondelWindow& p, const MenuPayload&) {
        ContextActions::newFolder(p);
    })->setEnabled(folder);
    if (folder && workspaceClipboardFiles())
        item(menu, QObject::tr("Paste"), pane, none,
            [](BrondelWindow& p, const MenuPayload&) { FileActions::paste(p, p.rootPath()); });
    item(menu, QObject::tr("New Favorites Section\u2026"), pane, none,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::sectionNew(p); });
    item(menu, QObject::tr("Add This Folder to Favorites"), pane, none,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::favAddCurrent(p); })
        ->setEnabled(folder);
    item(menu, QObject::tr("Manage Favorites\u2026"), pane, none,
        [](BrondelWindow& p, const MenuPayload&) { favoritesManagerShow(p.window(), p.context()); });
    item(menu, QObject::tr("Refresh"), pane, none,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::refreshView(p); });
}

void sidebarMenuFill(QMenu& menu, BrondelWindow& pane, const std::string& path, SidebarRowKind kind)
{
    menu.clear();
    const MenuPayload payload = pathPayload(path);
    if (kind == SidebarRowKind::Entry) {
        item(menu, QObject::tr("Open in New Window"), pane, payload,
            [](BrondelWindow& p, const MenuPayload& m) { ContextActions::openNewWindow(p, m.path); });
        menu.addSeparator();
        item(menu, QObject::tr("Remove from Sidebar"), pane, payload,
            [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sidebarRemoveAction(p, m.path); });
        item(menu, QObject::tr("Move Up"), pane, MenuPayload{path, std::nullopt, -1, std::nullopt},
            [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sidebarShiftAction(p, m.path, m.delta); });
        item(menu, QObject::tr("Move Down"), pane, MenuPayload{path, std::nullopt, +1, std::nullopt},
            [](BrondelWindow& p, const MenuPayload& m) { ContextActions::sidebarShiftAction(p, m.path, m.delta); });
        menu.addSeparator();
    }
    if (kind == SidebarRowKind::Other) {
        if (path != "/")
            item(menu, QObject::tr("Open in New Window"), pane, payload,
                [](BrondelWindow& p, const MenuPayload& m) { ContextActions::openNewWindow(p, m.path); });
        return;
    }
    item(menu, QObject::tr("Rename Section\u2026"), pane, payload,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::sidebarRenameAction(p); });
    item(menu, QObject::tr("Add Folder\u2026"), pane, payload,
        [](BrondelWindow& p, const MenuPayload&) { ContextActions::sidebarAddFolderAction(p); });
}
